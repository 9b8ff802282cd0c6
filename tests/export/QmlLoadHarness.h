#pragma once

// Loads a screen of the app in a window of a given size, collects every
// warning Qt prints meanwhile, and saves the window as PNG when
// NORVELLA_SCREENSHOT_DIR is set, so the screens can be looked at.

#include <QDir>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtTest>

#include <memory>

namespace norvella::test {

class WarningCollector
{
public:
    WarningCollector()
    {
        warnings().clear();
        m_previous = qInstallMessageHandler(&WarningCollector::handle);
    }
    ~WarningCollector() { qInstallMessageHandler(m_previous); }
    static QStringList &warnings()
    {
        static QStringList list;
        return list;
    }

private:
    static void handle(QtMsgType type, const QMessageLogContext &, const QString &message)
    {
        if (type != QtDebugMsg && type != QtInfoMsg)
            warnings() << message;
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

// Creates the window described by `qml` (an ApplicationWindow), lets it draw a
// few frames and returns it; null when it could not be created.
inline std::unique_ptr<QQuickWindow> showWindow(QQmlEngine &engine, const QByteArray &qml, const QSize &size,
                                                const QVariantMap &properties = {})
{
    QQmlComponent component(&engine);
    component.setData(qml, QUrl(QStringLiteral("file:///harness/Harness.qml")));
    QVariantMap initial = properties;
    initial.insert(QStringLiteral("width"), size.width());
    initial.insert(QStringLiteral("height"), size.height());
    std::unique_ptr<QObject> object(component.createWithInitialProperties(initial));
    if (!object) {
        qWarning().noquote() << component.errorString();
        return nullptr;
    }
    auto *window = qobject_cast<QQuickWindow *>(object.get());
    if (!window)
        return nullptr;
    object.release();
    std::unique_ptr<QQuickWindow> owned(window);
    if (!QTest::qWaitForWindowExposed(window))
        return owned;
    return owned;
}

// Waits until the scene has settled (popups finish their enter transitions).
inline void settle(QQuickWindow *window)
{
    for (int i = 0; i < 4; ++i) {
        QSignalSpy swapped(window, &QQuickWindow::frameSwapped);
        window->update();
        swapped.wait(2000);
    }
    QTest::qWait(350);
}

inline QImage grab(QQuickWindow *window, const QString &name)
{
    const QImage image = window->grabWindow();
    const QString folder = qEnvironmentVariable("NORVELLA_SCREENSHOT_DIR");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        image.save(QDir(folder).filePath(name + QStringLiteral(".png")));
    }
    return image;
}

} // namespace norvella::test
