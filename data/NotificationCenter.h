#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <map>
#include <vector>

namespace norvella {

struct Notification
{
    QString name;
    // The posting screen (as a QObject pointer) or, for a few notifications, a value.
    QVariant object;
    QVariantMap userInfo;

    QObject *sender() const { return object.value<QObject *>(); }
};

namespace Notifications {
inline const QString TabOpenEvent = QStringLiteral("TabOpenEvent");
inline const QString HistoryFeatureToggled = QStringLiteral("HistoryFeatureToggled");
inline const QString RefreshHistory = QStringLiteral("RefreshHistory");
inline const QString RefreshConjugations = QStringLiteral("RefreshConjugations");
inline const QString VerbFavouriteToggled = QStringLiteral("VerbFavouriteToggled");
inline const QString VerbViewed = QStringLiteral("VerbViewed");
// The object is the new "Appearance" setting as a string.
inline const QString AppearanceChanged = QStringLiteral("AppearanceChanged");
}

// Synchronous, main-thread broadcast between screens that do not know each other.
class NotificationCenter
{
public:
    using Handler = std::function<void(const Notification &)>;
    using Token = quint64;

    static NotificationCenter &defaultCenter();

    Token addObserver(const QString &name, Handler handler);
    void removeObserver(Token token);
    void post(const QString &name, const QVariant &object = {}, const QVariantMap &userInfo = {});
    void post(const QString &name, QObject *sender, const QVariantMap &userInfo = {});
    int observerCount(const QString &name) const;

private:
    struct Observer
    {
        QString name;
        Handler handler;
    };
    std::map<Token, Observer> m_observers;
    Token m_nextToken = 1;
};

// Removes its observers when the owning screen goes away.
class ObserverSet
{
public:
    ObserverSet() = default;
    ObserverSet(const ObserverSet &) = delete;
    ObserverSet &operator=(const ObserverSet &) = delete;
    ~ObserverSet();
    void add(const QString &name, NotificationCenter::Handler handler);

private:
    std::vector<NotificationCenter::Token> m_tokens;
};

} // namespace norvella
