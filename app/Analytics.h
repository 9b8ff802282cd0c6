#pragma once

#include <QString>
#include <QVariantMap>

namespace norvella {

// Usage events stay on this machine: while collection is on they are written
// to the local log, otherwise they are dropped.
class Analytics
{
public:
    static Analytics &shared();

    void start();
    bool isStarted() const { return m_started; }
    void setCollectionEnabled(bool enabled);
    bool collectionEnabled() const { return m_enabled; }
    void logEvent(const QString &name, const QVariantMap &parameters = {});
    void setUserProperty(const QString &name, const QString &value);
    QString userProperty(const QString &name) const { return m_userProperties.value(name).toString(); }
    // The most recent event, for tests and the benchmark.
    const QString &lastEvent() const { return m_lastEvent; }
    const QVariantMap &lastParameters() const { return m_lastParameters; }

private:
    bool m_started = false;
    bool m_enabled = true;
    QVariantMap m_userProperties;
    QString m_lastEvent;
    QVariantMap m_lastParameters;
};

} // namespace norvella
