#include "RemoteConfig.h"

#include "CrashLog.h"
#include "PropertyList.h"

namespace norvella {

bool RemoteConfig::loadDefaults(const QString &resourcePath)
{
    QString error;
    const auto value = PropertyList::fromFile(resourcePath, &error);
    if (!value || value->metaType().id() != QMetaType::QVariantMap) {
        CrashLog::log(QStringLiteral("Unable to load remote config defaults from %1: %2")
                              .arg(resourcePath, error.isEmpty() ? QStringLiteral("not a dictionary") : error));
        return false;
    }
    m_defaults = value->toMap();
    return true;
}

bool RemoteConfig::fetch(int expirationSeconds)
{
    Q_UNUSED(expirationSeconds)
    m_fetched = true;
    return true;
}

bool RemoteConfig::activate()
{
    if (!m_fetched)
        return false;
    m_active = m_defaults;
    return true;
}

QString RemoteConfig::stringValue(const QString &key) const
{
    const QVariant value = m_active.contains(key) ? m_active.value(key) : m_defaults.value(key);
    if (value.metaType().id() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return value.toString();
}

} // namespace norvella
