#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickPaintedItem>

class QQuickItem;

namespace norvella {

// The ring drawn around the control that has keyboard focus.
class FocusRing : public QQuickPaintedItem
{
    Q_OBJECT
public:
    explicit FocusRing(QQuickItem *control);
    void paint(QPainter *painter) override;

protected:
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    void follow();
    QQuickItem *m_control;
};

// What every control a user can press needs besides its looks, attached in one
// line (`Access.pressable: true`): the screen reader's press (and, for
// switches and other checkable buttons, toggle) action does what a tap does,
// Enter and Return press it too, focus from the keyboard shows a ring in the
// theme colour, and a control that takes focus is scrolled into view.
//
// On a button a press is a click: checkable ones change state first, then the
// button's own toggled() and clicked() follow, as after a tap. On any other
// item the press is the `activated` signal.
class Access : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Access is only used as an attached property")
    // Spelled with its namespace so the registered attached type matches the class name for
    // the QML tooling.
    QML_ATTACHED(norvella::Access)
    Q_PROPERTY(bool pressable READ pressable WRITE setPressable NOTIFY pressableChanged)
    Q_PROPERTY(bool heading READ heading WRITE setHeading NOTIFY headingChanged)
    Q_PROPERTY(bool hidesBehindModals READ hidesBehindModals WRITE setHidesBehindModals NOTIFY
                       hidesBehindModalsChanged)

public:
    explicit Access(QObject *target);
    static Access *qmlAttachedProperties(QObject *object);

    bool pressable() const { return m_pressable; }
    void setPressable(bool pressable);

    // On a Label: Qt Quick reports every text item as static text whatever its
    // role, so the label steps aside for a stand-in of its size that screen
    // readers hear as a heading with the label's text.
    bool heading() const { return m_heading != nullptr; }
    void setHeading(bool heading);

    // On a window: while a modal popup or drawer is open, assistive technology
    // sees only it and what opened above it, as a sighted user does behind the dim.
    bool hidesBehindModals() const { return m_hidesBehindModals; }
    void setHidesBehindModals(bool hides);

public slots:
    // Does what a tap does; also what the screen reader's press runs.
    void press();

signals:
    void pressableChanged();
    void headingChanged();
    void hidesBehindModalsChanged();
    void activated();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void toggle();
    void updateHeading();

private:
    QObject *accessibleOf(QObject *object, bool create) const;
    void connectAccessible();
    void scrollIntoView();
    QQuickItem *item() const;

    QObject *m_target;
    bool m_pressable = false;
    bool m_hidesBehindModals = false;
    bool m_keyboardFocus = false;
    QPointer<FocusRing> m_ring;
    QPointer<QQuickItem> m_heading;
};

} // namespace norvella
