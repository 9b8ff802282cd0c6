#pragma once

// Shows screens of the app in an offscreen window: collects every warning Qt
// prints meanwhile, lets the scene settle, and saves the window as PNG when
// NORVELLA_SCREENSHOT_DIR is set, so the screens can be looked at.
// Header only: the tests that include it link Qt Quick, the others need not.

#include <QDir>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtTest>

#include <functional>
#include <memory>

namespace norvella::test {

class WarningCollector
{
public:
    WarningCollector()
    {
        warnings().clear();
        m_previous = qInstallMessageHandler(&WarningCollector::handle);
        if (m_previous != &WarningCollector::handle)
            chained() = m_previous;
    }
    ~WarningCollector() { qInstallMessageHandler(m_previous); }
    static QStringList &warnings()
    {
        static QStringList list;
        return list;
    }
    static QByteArray report() { return warnings().join(u'\n').toLocal8Bit(); }

private:
    static QtMessageHandler &chained()
    {
        static QtMessageHandler handler = nullptr;
        return handler;
    }
    // Passed on too, so a failing run shows each warning where it happened.
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (type != QtDebugMsg && type != QtInfoMsg)
            warnings() << message;
        if (chained())
            chained()(type, context, message);
    }
    QtMessageHandler m_previous = nullptr;
};

inline void prepareQmlEngine(QQmlEngine &engine)
{
    // The style can be chosen once per process, before any control is loaded.
    static const bool styled = [] {
        QQuickStyle::setStyle(QStringLiteral("Basic"));
        return true;
    }();
    Q_UNUSED(styled);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
}

// Creates the window the component describes (an ApplicationWindow) and waits
// until it is exposed; null, with the reason printed, when that fails.
inline std::unique_ptr<QQuickWindow> showWindow(QQmlComponent &component, const QSize &size,
                                                const QVariantMap &properties = {})
{
    QVariantMap initial = properties;
    initial.insert(QStringLiteral("width"), size.width());
    initial.insert(QStringLiteral("height"), size.height());
    std::unique_ptr<QObject> object(component.createWithInitialProperties(initial));
    auto *window = qobject_cast<QQuickWindow *>(object.get());
    if (!window) {
        qWarning().noquote() << "No window:" << component.errorString();
        return nullptr;
    }
    object.release();
    std::unique_ptr<QQuickWindow> owned(window);
    if (!QTest::qWaitForWindowExposed(window)) {
        qWarning("The window was never exposed");
        return nullptr;
    }
    return owned;
}

inline std::unique_ptr<QQuickWindow> showWindow(QQmlEngine &engine, const QByteArray &qml, const QSize &size,
                                                const QVariantMap &properties = {})
{
    QQmlComponent component(&engine);
    component.setData(qml, QUrl(QStringLiteral("file:///harness/Harness.qml")));
    return showWindow(component, size, properties);
}

inline std::unique_ptr<QQuickWindow> showWindow(QQmlEngine &engine, const QUrl &url, const QSize &size,
                                                const QVariantMap &properties = {})
{
    QQmlComponent component(&engine, url);
    return showWindow(component, size, properties);
}

// Waits for a few drawn frames (false if one never comes), then for
// `pauseMs` so popups finish their enter transitions.
inline bool settle(QQuickWindow *window, int pauseMs = 350)
{
    bool drawn = true;
    for (int i = 0; i < 4; ++i) {
        QSignalSpy swapped(window, &QQuickWindow::frameSwapped);
        window->update();
        drawn = swapped.wait(5000) && drawn;
    }
    if (pauseMs > 0)
        QTest::qWait(pauseMs);
    return drawn;
}

// A synchronous frame: it also polishes the items and creates visible delegates.
inline QImage grab(QQuickWindow *window, const QString &name)
{
    const QImage image = window->grabWindow();
    const QString folder = qEnvironmentVariable("NORVELLA_SCREENSHOT_DIR");
    if (!folder.isEmpty() && !name.isEmpty()) {
        QDir().mkpath(folder);
        image.save(QDir(folder).filePath(name + QStringLiteral(".png")));
    }
    return image;
}

// The name a control gives assistive technology, as a user of it would find it.
inline QString accessibleName(const QObject *item)
{
    for (QObject *child : item->children()) {
        if (qstrcmp(child->metaObject()->className(), "QQuickAccessibleAttached") == 0)
            return child->property("name").toString();
    }
    return {};
}

// Whether the item is in the window and not scrolled out of a clipping view.
inline bool onScreen(const QQuickItem *item)
{
    const QRectF rect = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    for (const QQuickItem *p = item->parentItem(); p; p = p->parentItem()) {
        if (p->clip() && !p->mapRectToScene(QRectF(0, 0, p->width(), p->height())).intersects(rect))
            return false;
    }
    return rect.intersects(QRectF(QPointF(0, 0), item->window()->size()));
}

// The engine and the one window a test shows, with the warnings collected from
// before the engine exists until after the window is gone. Make it once the
// tests run (in a test function or initTestCase): Qt Test installs its own
// message handler when it starts, and that would hide the warnings from this one.
class QmlScreen
{
public:
    QmlScreen() { prepareQmlEngine(engine); }

    template<typename Source>
    bool show(const Source &source, const QSize &size, const QVariantMap &properties = {})
    {
        window = showWindow(engine, source, size, properties);
        return window != nullptr;
    }
    QImage grab(const QString &name = {}) const { return test::grab(window.get(), name); }
    bool settle(int pauseMs = 0) const { return test::settle(window.get(), pauseMs); }
    bool clean() const { return WarningCollector::warnings().isEmpty(); }
    template<typename T = QObject>
    T *find(const QString &objectName = {}) const
    {
        return window ? window->findChild<T *>(objectName) : nullptr;
    }

    // The visual tree, where delegates and popups live (they are not in the
    // object tree); without the hidden branches when `visibleOnly`.
    QList<QQuickItem *> items(bool visibleOnly = true) const
    {
        QList<QQuickItem *> out;
        const std::function<void(QQuickItem *)> walk = [&](QQuickItem *item) {
            if (visibleOnly && !item->isVisible())
                return;
            out << item;
            for (QQuickItem *child : item->childItems())
                walk(child);
        };
        walk(window->contentItem()); // the page, and the overlay with any dialog
        return out;
    }
    // A control on screen, by the name it gives assistive technology.
    QQuickItem *button(const QString &name) const
    {
        for (QQuickItem *item : items()) {
            if (item->inherits("QQuickAbstractButton") && onScreen(item) && accessibleName(item) == name)
                return item;
        }
        return nullptr;
    }
    bool click(QQuickItem *item) const
    {
        if (!item)
            return false;
        QTest::mouseClick(window.get(), Qt::LeftButton, {}, item->mapToScene(item->boundingRect().center()).toPoint());
        return settle();
    }

    WarningCollector collector;
    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;
};

} // namespace norvella::test
