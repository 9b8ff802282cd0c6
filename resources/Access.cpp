#include "Access.h"

#include "Appearance.h"
#include "CrashLog.h"
#include "ModalAccessibility.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMetaProperty>
#include <QPainter>
#include <QQuickItem>
#include <QQuickWindow>

namespace norvella {

FocusRing::FocusRing(QQuickItem *control) : QQuickPaintedItem(control), m_control(control)
{
    setZ(1000);
    setVisible(false);
    setFlag(ItemHasContents, false);
    setAntialiasing(true);
    connect(control, &QQuickItem::widthChanged, this, &FocusRing::follow);
    connect(control, &QQuickItem::heightChanged, this, &FocusRing::follow);
    follow();
}

// The software renderer draws a painted item into an image of its own, with a
// painter kept beside it, whether the item shows or not; every pressable
// control has a ring, so only a ring on screen may have contents.
void FocusRing::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemVisibleHasChanged) {
        setFlag(ItemHasContents, value.boolValue);
        if (value.boolValue)
            update();
    }
    QQuickPaintedItem::itemChange(change, value);
}

void FocusRing::follow()
{
    setSize(m_control->size());
}

void FocusRing::paint(QPainter *painter)
{
    // The theme colour outside and white inside, so the ring shows on the
    // coloured bars as well as on the white page.
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF outer = boundingRect().adjusted(1.5, 1.5, -1.5, -1.5);
    painter->setPen(QPen(Appearance::shared().focusRing(), 3));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(outer, 6, 6);
    painter->setPen(QPen(Qt::white, 1));
    painter->drawRoundedRect(outer.adjusted(2, 2, -2, -2), 4, 4);
}

Access::Access(QObject *target) : QObject(target), m_target(target) {}

Access *Access::qmlAttachedProperties(QObject *object)
{
    return new Access(object);
}

QQuickItem *Access::item() const
{
    return qobject_cast<QQuickItem *>(m_target);
}

void Access::setPressable(bool pressable)
{
    if (m_pressable == pressable)
        return;
    m_pressable = pressable;
    QQuickItem *target = item();
    if (pressable && target) {
        connectAccessible();
        target->installEventFilter(this);
        if (!m_ring)
            m_ring = new FocusRing(target);
    } else if (target) {
        target->removeEventFilter(this);
    }
    emit pressableChanged();
}

void Access::setHidesBehindModals(bool hides)
{
    if (m_hidesBehindModals == hides)
        return;
    m_hidesBehindModals = hides;
    if (auto *window = qobject_cast<QQuickWindow *>(m_target); window && hides)
        ModalAccessibleWindow::markWindow(window);
    emit hidesBehindModalsChanged();
}

void Access::setHeading(bool heading)
{
    QQuickItem *label = item();
    if (heading == this->heading() || !label)
        return;
    if (heading) {
        m_heading = new QQuickItem(label);
        const auto follow = [label, stand = m_heading.data()] { stand->setSize(label->size()); };
        connect(label, &QQuickItem::widthChanged, m_heading.data(), follow);
        connect(label, &QQuickItem::heightChanged, m_heading.data(), follow);
        follow();
        QObject *own = accessibleOf(label, true);
        QObject *stand = accessibleOf(m_heading, true);
        if (own && stand) {
            own->setProperty("ignored", true);
            stand->setProperty("role", int(QAccessible::Heading));
            const QMetaProperty text = label->metaObject()->property(label->metaObject()->indexOfProperty("text"));
            if (text.hasNotifySignal())
                connect(label, text.notifySignal(), this,
                        metaObject()->method(metaObject()->indexOfSlot("updateHeading()")));
            updateHeading();
        } else {
            CrashLog::log(QStringLiteral("Access: no Accessible object for a heading; it stays plain text"));
        }
    } else {
        if (QObject *own = accessibleOf(label, false))
            own->setProperty("ignored", false);
        delete m_heading;
    }
    emit headingChanged();
}

void Access::updateHeading()
{
    if (QQuickItem *label = item(); label && m_heading) {
        if (QObject *stand = accessibleOf(m_heading, false))
            stand->setProperty("name", label->property("text"));
    }
}

QObject *Access::accessibleOf(QObject *object, bool create) const
{
    for (QObject *child : object->children()) {
        if (qstrcmp(child->metaObject()->className(), "QQuickAccessibleAttached") == 0)
            return child;
    }
    if (!create)
        return nullptr;
    const QMetaObject *type = QMetaType::fromName("QQuickAccessibleAttached*").metaObject();
    return type ? qmlAttachedPropertiesObject(object, qmlAttachedPropertiesFunction(object, type), true) : nullptr;
}

// The screen reader's actions arrive as signals of the item's Accessible
// attached object; a connected signal is also what makes the action listed.
void Access::connectAccessible()
{
    QObject *attached = accessibleOf(m_target, true);
    if (!attached) {
        CrashLog::log(QStringLiteral("Access: no Accessible object for %1; its screen reader action stays off")
                              .arg(QString::fromLatin1(m_target->metaObject()->className())));
        return;
    }
    connect(attached, SIGNAL(pressAction()), this, SLOT(press()), Qt::UniqueConnection);
    if (m_target->property("checkable").toBool())
        connect(attached, SIGNAL(toggleAction()), this, SLOT(toggle()), Qt::UniqueConnection);
}

void Access::press()
{
    QQuickItem *target = item();
    if (target && (!target->isEnabled() || !target->isVisible()))
        return;
    if (!m_target->inherits("QQuickAbstractButton")) {
        emit activated();
        return;
    }
    if (m_target->property("checkable").toBool()) {
        const bool checked = m_target->property("checked").toBool();
        // A checked exclusive button (a tab, a segment) stays checked, as on a tap.
        if (!(checked && m_target->property("autoExclusive").toBool())) {
            m_target->setProperty("checked", !checked);
            QMetaObject::invokeMethod(m_target, "toggled");
        }
    }
    QMetaObject::invokeMethod(m_target, "clicked");
}

void Access::toggle()
{
    press();
}

bool Access::eventFilter(QObject *watched, QEvent *event)
{
    QQuickItem *target = item();
    if (watched != m_target || !target)
        return false;
    switch (event->type()) {
    case QEvent::FocusIn: {
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        m_keyboardFocus = reason != Qt::MouseFocusReason;
        if (m_ring)
            m_ring->setVisible(m_keyboardFocus);
        if (m_keyboardFocus)
            scrollIntoView();
        break;
    }
    case QEvent::FocusOut:
        if (m_ring)
            m_ring->setVisible(false);
        break;
    case QEvent::KeyPress: {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        // Buttons answer Space themselves, with the pressed look.
        const bool space = key->key() == Qt::Key_Space && !m_target->inherits("QQuickAbstractButton");
        if ((enter || space) && !key->isAutoRepeat()
            && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
            press();
            return true;
        }
        break;
    }
    default:
        break;
    }
    return false;
}

// Within the nearest scrolling view, the least movement that shows the whole
// control (or its top, when it is taller than the view).
void Access::scrollIntoView()
{
    QQuickItem *target = item();
    for (QQuickItem *view = target ? target->parentItem() : nullptr; view; view = view->parentItem()) {
        if (!view->inherits("QQuickFlickable"))
            continue;
        auto *content = view->property("contentItem").value<QQuickItem *>();
        if (!content)
            return;
        const QRectF rect = target->mapRectToItem(content, QRectF(0, 0, target->width(), target->height()));
        const qreal top = view->property("contentY").toReal();
        const qreal height = view->height();
        qreal wanted = top;
        if (rect.bottom() > top + height)
            wanted = rect.bottom() - height;
        if (rect.top() < wanted)
            wanted = rect.top();
        const qreal origin = view->property("originY").toReal();
        const qreal lowest = origin - view->property("topMargin").toReal();
        const qreal highest = origin + view->property("contentHeight").toReal()
                + view->property("bottomMargin").toReal() - height;
        wanted = std::max(lowest, std::min(wanted, std::max(lowest, highest)));
        if (!qFuzzyCompare(wanted + 1, top + 1))
            view->setProperty("contentY", wanted);
        return;
    }
}

} // namespace norvella
