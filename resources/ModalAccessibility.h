#pragma once

#include <QAccessibleObject>
#include <QList>
#include <QPointer>

class QQuickItem;
class QQuickWindow;

namespace norvella {

// A window as assistive technology sees it. Qt Quick lists every accessible
// item of the window, so while a sheet or the drawer is open a screen reader
// would still walk the screen behind it. This one lists only the topmost modal
// popup and what was opened above it while one is open, and the whole window
// otherwise. Windows opt in through Access.hidesBehindModals.
class ModalAccessibleWindow : public QAccessibleObject
{
public:
    explicit ModalAccessibleWindow(QQuickWindow *window);

    // Makes every window marked with markWindow() answer through this class.
    static void install();
    static void markWindow(QQuickWindow *window);

    // The items the window offers as its children, in paint order.
    static QList<QQuickItem *> exposedItems(QQuickWindow *window);

    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int index) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;
    QAccessible::State state() const override;
    QAccessible::Role role() const override;
    QString text(QAccessible::Text type) const override;
    QRect rect() const override;

private:
    QWindow *window() const override;
    QQuickWindow *quickWindow() const;
    QList<QQuickItem *> items() const;
};

} // namespace norvella
