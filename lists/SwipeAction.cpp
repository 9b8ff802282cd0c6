#include "SwipeAction.h"

#include "Strings.h"

namespace norvella {

SwipeAction::SwipeAction(Style style, const QString &titleKey, const QString &iconName, QColor background,
                         VerbPtr verb, Handler handler)
    : m_style(style),
      m_titleKey(titleKey),
      m_title(Strings::text(titleKey)),
      m_iconName(iconName),
      m_background(background),
      m_verb(std::move(verb)),
      m_handler(std::move(handler))
{
}

QUrl SwipeAction::iconSource() const
{
    return QUrl(QStringLiteral("qrc:/norvella/icons/%1.svg").arg(m_iconName));
}

QColor SwipeAction::foregroundColor() const
{
    return m_background.lightnessF() > 0.6 ? QColor(0x1C, 0x1C, 0x1E) : QColor(Qt::white);
}

bool SwipeAction::trigger()
{
    if (!m_handler)
        return false;
    const Handler handler = std::exchange(m_handler, nullptr);
    const bool completed = handler(m_verb);
    emit performed(completed);
    return completed;
}

SwipeAction *SwipeAction::forQml(SwipeAction *action)
{
    if (action)
        QQmlEngine::setObjectOwnership(action, QQmlEngine::JavaScriptOwnership);
    return action;
}

} // namespace norvella
