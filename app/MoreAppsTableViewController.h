#pragma once

#include "ProductList.h"

#include <QAbstractListModel>
#include <QQmlEngine>

#include <functional>

class QUrl;

namespace norvella {

// A modal list of the maker's other apps; a row opens its store page.
class MoreAppsTableViewController : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT

public:
    enum Role { NameRole = Qt::UserRole + 1, IconRole, StoreDescRole };
    using UrlOpener = std::function<void(const QUrl &)>;

    explicit MoreAppsTableViewController(QObject *parent = nullptr);

    void setOtherApps(const QList<Product> &apps);
    const QList<Product> &otherApps() const { return m_otherApps; }
    // Tests replace the system's open-URL call.
    void setUrlOpener(UrlOpener opener) { m_opener = std::move(opener); }
    void setCountryCode(const QString &code) { m_countryCode = code; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    Q_INVOKABLE void selectRow(int row);
    Q_INVOKABLE void viewDidAppear();
    Q_INVOKABLE void close();

    static QString storeBaseAddress();
    static QString affiliateToken();

signals:
    void closeRequested();

private:
    QList<Product> m_otherApps;
    UrlOpener m_opener;
    QString m_countryCode;
};

} // namespace norvella
