#include "NavigationDrawerTableTableViewController.h"

#include "CrashLog.h"
#include "Strings.h"

namespace norvella {

namespace {
struct Row
{
    const char *icon;
    const char *titleKey;
};
constexpr Row rows[] = {
    {"settings", "options.button"},
    {"more-apps", "moreapps"},
    {"contact", "contact"},
    {"privacy", "privacy"},
};
} // namespace

NavigationDrawerTableTableViewController::NavigationDrawerTableTableViewController(QObject *parent)
    : QAbstractListModel(parent)
{
}

int NavigationDrawerTableTableViewController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : numberOfRowsInSection(1);
}

QVariant NavigationDrawerTableTableViewController::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row &row = rows[index.row()];
    switch (role) {
    case IconRole:
        return QStringLiteral("qrc:/norvella/icons/%1.svg").arg(QLatin1String(row.icon));
    case TitleRole:
    case Qt::DisplayRole:
        return Strings::text(QLatin1String(row.titleKey));
    case TitleKeyRole:
        return QLatin1String(row.titleKey);
    default:
        return {};
    }
}

QHash<int, QByteArray> NavigationDrawerTableTableViewController::roleNames() const
{
    return {{IconRole, "iconSource"}, {TitleRole, "title"}, {TitleKeyRole, "titleKey"}};
}

QUrl NavigationDrawerTableTableViewController::privacyAddress()
{
    return QUrl(QStringLiteral(NORVELLA_PRIVACY_URL));
}

void NavigationDrawerTableTableViewController::setPresented(bool presented)
{
    if (m_presented == presented)
        return;
    m_presented = presented;
    emit presentedChanged();
}

void NavigationDrawerTableTableViewController::selectRow(int section, int row)
{
    if (!m_presented) {
        CrashLog::log(QStringLiteral("Unable to get navigation controller"));
        return;
    }
    if (section != 1 || row < 0 || row >= numberOfRowsInSection(1)) {
        CrashLog::log(QStringLiteral("Navigation option not available"));
        return;
    }
    m_pending = row;
    emit closeRequested();
}

void NavigationDrawerTableTableViewController::drawerDidClose()
{
    const int row = m_pending;
    m_pending = -1;
    switch (row) {
    case Settings:
        emit openSettings();
        break;
    case MoreApps:
        emit openMoreApps();
        break;
    case Contact:
        emit composeSupportMail();
        break;
    case Privacy:
        emit openPrivacyPage();
        break;
    default:
        break;
    }
}

} // namespace norvella
