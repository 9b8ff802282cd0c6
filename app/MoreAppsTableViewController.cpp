#include "MoreAppsTableViewController.h"

#include "Analytics.h"
#include "LinkOpener.h"

#include <QLocale>
#include <QUrl>

namespace norvella {

MoreAppsTableViewController::MoreAppsTableViewController(QObject *parent)
    : QAbstractListModel(parent),
      m_opener([](const QUrl &url) { LinkOpener::openOrReport(url, LinkOpener::linkFailedText()); }),
      m_countryCode(QLocale::territoryToCode(QLocale::system().territory()))
{
    // The catalogue comes with the app; the screen that opens the list may replace it.
    m_otherApps = ProductList().apps();
}

void MoreAppsTableViewController::setOtherApps(const QList<Product> &apps)
{
    beginResetModel();
    m_otherApps = apps;
    endResetModel();
}

int MoreAppsTableViewController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_otherApps.size());
}

QVariant MoreAppsTableViewController::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Product &product = m_otherApps.at(index.row());
    switch (role) {
    case NameRole:
    case Qt::DisplayRole:
        return product.value(QStringLiteral("name"));
    case IconRole:
        return QStringLiteral("qrc:/norvella/icons/%1.svg").arg(product.value(QStringLiteral("icon")));
    case StoreDescRole:
        return product.value(QStringLiteral("storedesc"));
    default:
        return {};
    }
}

QHash<int, QByteArray> MoreAppsTableViewController::roleNames() const
{
    return {{NameRole, "name"}, {IconRole, "iconSource"}, {StoreDescRole, "storedesc"}};
}

void MoreAppsTableViewController::selectRow(int row)
{
    if (row < 0 || row >= m_otherApps.size())
        return;
    const Product &product = m_otherApps.at(row);
    Analytics::shared().logEvent(QStringLiteral("more_apps"),
                                 {{QStringLiteral("select"), product.value(QStringLiteral("storedesc"))}});
    const QString address = ProductList::storeAddress(product, m_countryCode, storeBaseAddress(), affiliateToken());
    if (!address.isEmpty())
        m_opener(QUrl(address));
}

void MoreAppsTableViewController::viewDidAppear()
{
    Analytics::shared().logEvent(QStringLiteral("more_apps"));
}

void MoreAppsTableViewController::close()
{
    emit closeRequested();
}

QString MoreAppsTableViewController::storeBaseAddress()
{
    return QStringLiteral(NORVELLA_STORE_BASE_URL);
}

QString MoreAppsTableViewController::affiliateToken()
{
    return QStringLiteral(NORVELLA_AFFILIATE_TOKEN);
}

} // namespace norvella
