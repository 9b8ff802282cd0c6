#pragma once

#include <QString>
#include <QVariantMap>

namespace norvella {

// Remote configuration without the remote: it answers the defaults bundled
// as a property-list resource, through the same fetch/activate steps.
class RemoteConfig
{
public:
    bool loadDefaults(const QString &resourcePath);
    // Reports success, as a fetch that found nothing newer would.
    bool fetch(int expirationSeconds);
    bool activate();
    QString stringValue(const QString &key) const;

private:
    QVariantMap m_defaults;
    QVariantMap m_active;
    bool m_fetched = false;
};

} // namespace norvella
