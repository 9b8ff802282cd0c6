#include "BuildInfo.h"

#include <QCoreApplication>

namespace norvella::BuildInfo {

QString shortVersion()
{
    const QString fromApp = QCoreApplication::applicationVersion();
    return fromApp.isEmpty() ? QStringLiteral(NORVELLA_VERSION) : fromApp;
}

QString buildNumber()
{
    return QStringLiteral(NORVELLA_BUILD_NUMBER);
}

QString webUrl()
{
    return QStringLiteral(NORVELLA_WEB_URL);
}

QString contactUrl()
{
    return QStringLiteral(NORVELLA_CONTACT_URL);
}

} // namespace norvella::BuildInfo
