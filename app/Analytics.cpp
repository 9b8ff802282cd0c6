#include "Analytics.h"

#include "CrashLog.h"
#include "Settings.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace norvella {

Analytics &Analytics::shared()
{
    static Analytics analytics;
    return analytics;
}

void Analytics::start()
{
    m_started = true;
    m_enabled = Preferences::analyticsCollectionEnabled(Settings::standard());
}

void Analytics::setCollectionEnabled(bool enabled)
{
    m_enabled = enabled;
}

void Analytics::logEvent(const QString &name, const QVariantMap &parameters)
{
    m_lastEvent = name;
    m_lastParameters = parameters;
    if (!m_started || !m_enabled)
        return;
    const QByteArray params = QJsonDocument(QJsonObject::fromVariantMap(parameters)).toJson(QJsonDocument::Compact);
    CrashLog::log(QStringLiteral("analytics: %1 %2").arg(name, QString::fromUtf8(params)));
}

void Analytics::setUserProperty(const QString &name, const QString &value)
{
    m_userProperties.insert(name, value);
    if (m_started && m_enabled)
        CrashLog::log(QStringLiteral("analytics: user property %1 = %2").arg(name, value));
}

} // namespace norvella
