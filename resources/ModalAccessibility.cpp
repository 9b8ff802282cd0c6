#include "ModalAccessibility.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>

namespace norvella {

namespace {

const char *const kMarker = "norvellaHidesBehindModals";

// What Qt Quick counts as an accessible item: one with an Accessible attached
// object that is not ignored. The children of the others are lifted up.
bool isAccessibleItem(const QQuickItem *item)
{
    for (const QObject *child : item->children()) {
        if (qstrcmp(child->metaObject()->className(), "QQuickAccessibleAttached") == 0)
            return !child->property("ignored").toBool();
    }
    return false;
}

QList<QQuickItem *> paintOrder(const QQuickItem *item)
{
    QList<QQuickItem *> children = item->childItems();
    std::stable_sort(children.begin(), children.end(),
                     [](const QQuickItem *a, const QQuickItem *b) { return a->z() < b->z(); });
    return children;
}

void collect(const QQuickItem *item, QList<QQuickItem *> &out)
{
    for (QQuickItem *child : paintOrder(item)) {
        if (isAccessibleItem(child))
            out << child;
        else
            collect(child, out);
    }
}

// The item a popup or drawer shows in the overlay.
QQuickItem *popupItem(const QObject *popup, const QQuickItem *overlay)
{
    auto *item = popup->property("contentItem").value<QQuickItem *>();
    if (!item)
        item = popup->property("background").value<QQuickItem *>();
    while (item && item->parentItem() != overlay)
        item = item->parentItem();
    return item;
}

QAccessibleInterface *factory(const QString &, QObject *object)
{
    auto *window = qobject_cast<QQuickWindow *>(object);
    if (window && window->property(kMarker).toBool())
        return new ModalAccessibleWindow(window);
    return nullptr;
}

} // namespace

ModalAccessibleWindow::ModalAccessibleWindow(QQuickWindow *window) : QAccessibleObject(window) {}

void ModalAccessibleWindow::install()
{
    static const bool installed = [] {
        QAccessible::installFactory(&factory);
        return true;
    }();
    Q_UNUSED(installed);
}

void ModalAccessibleWindow::markWindow(QQuickWindow *window)
{
    install();
    window->setProperty(kMarker, true);
}

QList<QQuickItem *> ModalAccessibleWindow::exposedItems(QQuickWindow *window)
{
    QList<QQuickItem *> out;
    QQuickItem *root = window ? window->contentItem() : nullptr;
    if (!root)
        return out;
    const QList<QQuickItem *> layers = paintOrder(root);
    const auto overlay = std::find_if(layers.begin(), layers.end(),
                                      [](const QQuickItem *item) { return item->inherits("QQuickOverlay"); });
    QList<QQuickItem *> modalItems;
    if (overlay != layers.end()) {
        for (QObject *popup : window->findChildren<QObject *>()) {
            if (popup->inherits("QQuickPopup") && popup->property("modal").toBool()
                && popup->property("visible").toBool()) {
                if (QQuickItem *item = popupItem(popup, *overlay))
                    modalItems << item;
            }
        }
    }
    if (modalItems.isEmpty()) {
        collect(root, out);
        return out;
    }
    // The topmost modal popup and anything stacked above it, such as a sheet
    // the settings open or a notice.
    const QList<QQuickItem *> popups = paintOrder(*overlay);
    qsizetype first = popups.size();
    for (qsizetype i = popups.size() - 1; i >= 0; --i) {
        if (modalItems.contains(popups[i])) {
            first = i;
            break;
        }
    }
    for (qsizetype i = first; i < popups.size(); ++i) {
        if (!popups[i]->isVisible())
            continue;
        if (isAccessibleItem(popups[i]))
            out << popups[i];
        else
            collect(popups[i], out);
    }
    return out;
}

QQuickWindow *ModalAccessibleWindow::quickWindow() const
{
    return static_cast<QQuickWindow *>(object());
}

QWindow *ModalAccessibleWindow::window() const
{
    return quickWindow();
}

QList<QQuickItem *> ModalAccessibleWindow::items() const
{
    return exposedItems(quickWindow());
}

QAccessibleInterface *ModalAccessibleWindow::parent() const
{
    return QAccessible::queryAccessibleInterface(qApp);
}

QAccessibleInterface *ModalAccessibleWindow::child(int index) const
{
    const QList<QQuickItem *> children = items();
    if (index < 0 || index >= children.size())
        return nullptr;
    return QAccessible::queryAccessibleInterface(children.at(index));
}

int ModalAccessibleWindow::childCount() const
{
    return int(items().size());
}

int ModalAccessibleWindow::indexOfChild(const QAccessibleInterface *child) const
{
    if (!child)
        return -1;
    return int(items().indexOf(qobject_cast<QQuickItem *>(child->object())));
}

QAccessibleInterface *ModalAccessibleWindow::childAt(int x, int y) const
{
    const QList<QQuickItem *> children = items();
    for (qsizetype i = children.size() - 1; i >= 0; --i) {
        QAccessibleInterface *child = QAccessible::queryAccessibleInterface(children.at(i));
        if (child && child->rect().contains(x, y))
            return child;
    }
    return nullptr;
}

QAccessibleInterface *ModalAccessibleWindow::focusChild() const
{
    QObject *focus = quickWindow()->focusObject();
    if (!focus || focus == quickWindow())
        return nullptr;
    QAccessibleInterface *iface = QAccessible::queryAccessibleInterface(focus);
    if (!iface || iface == this)
        return iface;
    QAccessibleInterface *deeper = iface->focusChild();
    return deeper ? deeper : iface;
}

QAccessible::State ModalAccessibleWindow::state() const
{
    QAccessible::State st;
    if (window()->isActive())
        st.active = true;
    if (!window()->isVisible())
        st.invisible = true;
    return st;
}

QAccessible::Role ModalAccessibleWindow::role() const
{
    return QAccessible::Window;
}

QString ModalAccessibleWindow::text(QAccessible::Text type) const
{
    return type == QAccessible::Name ? window()->title() : QString();
}

QRect ModalAccessibleWindow::rect() const
{
    return QRect(window()->mapToGlobal(QPoint(0, 0)), window()->size());
}

} // namespace norvella
