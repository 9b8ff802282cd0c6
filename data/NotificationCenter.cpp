#include "NotificationCenter.h"

namespace norvella {

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const QString &name, Handler handler)
{
    const Token token = m_nextToken++;
    m_observers.emplace(token, Observer{name, std::move(handler)});
    return token;
}

void NotificationCenter::removeObserver(Token token)
{
    m_observers.erase(token);
}

void NotificationCenter::post(const QString &name, const QVariant &object, const QVariantMap &userInfo)
{
    const Notification notification{name, object, userInfo};
    // Observers may add or remove observers while handling; deliver to the
    // set registered at posting time, skipping any removed meanwhile.
    std::vector<Token> targets;
    for (const auto &[token, observer] : m_observers) {
        if (observer.name == name)
            targets.push_back(token);
    }
    for (Token token : targets) {
        auto it = m_observers.find(token);
        if (it != m_observers.end()) {
            Handler handler = it->second.handler;
            handler(notification);
        }
    }
}

void NotificationCenter::post(const QString &name, QObject *sender, const QVariantMap &userInfo)
{
    post(name, sender ? QVariant::fromValue(sender) : QVariant(), userInfo);
}

int NotificationCenter::observerCount(const QString &name) const
{
    int count = 0;
    for (const auto &entry : m_observers)
        count += entry.second.name == name ? 1 : 0;
    return count;
}

ObserverSet::~ObserverSet()
{
    for (auto token : m_tokens)
        NotificationCenter::defaultCenter().removeObserver(token);
}

void ObserverSet::add(const QString &name, NotificationCenter::Handler handler)
{
    m_tokens.push_back(NotificationCenter::defaultCenter().addObserver(name, std::move(handler)));
}

} // namespace norvella
