#pragma once

#include <QList>
#include <QMap>
#include <QString>

namespace norvella {

using Product = QMap<QString, QString>;

// The maker's other apps, read from the bundled catalogue resource.
class ProductList
{
public:
    explicit ProductList(const QString &resourcePath = QStringLiteral(":/norvella/products.json"));
    const QList<Product> &apps() const { return m_apps; }

    // The store page of a product, or empty when "appid" or "storedesc" is missing.
    static QString storeAddress(const Product &product, const QString &countryCode,
                                const QString &baseAddress, const QString &affiliateToken);

private:
    QList<Product> m_apps;
};

} // namespace norvella
