#include "ProductList.h"

#include "CrashLog.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace norvella {

ProductList::ProductList(const QString &resourcePath)
{
    QFile file(resourcePath);
    const QJsonDocument doc = file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()) : QJsonDocument();
    if (!doc.isArray()) {
        CrashLog::log(QStringLiteral("Unable to read the product catalogue %1").arg(resourcePath));
        return;
    }
    for (const QJsonValue &entry : doc.array()) {
        Product product;
        const QJsonObject object = entry.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            product.insert(it.key(), it.value().toString());
        m_apps << product;
    }
}

QString ProductList::storeAddress(const Product &product, const QString &countryCode, const QString &baseAddress,
                                  const QString &affiliateToken)
{
    const QString appId = product.value(QStringLiteral("appid"));
    const QString storeDesc = product.value(QStringLiteral("storedesc"));
    if (appId.isEmpty() || storeDesc.isEmpty())
        return {};
    return baseAddress + countryCode.toLower() + QStringLiteral("/app/") + storeDesc + QStringLiteral("/id") + appId
            + QStringLiteral("?mt=8&uo=4&at=") + affiliateToken;
}

} // namespace norvella
