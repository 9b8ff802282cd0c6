#include "FavouritesTableViewController.h"

#include "CrashLog.h"
#include "Database.h"
#include "VerbListTableViewController.h"

namespace norvella {

FavouritesTableViewController::FavouritesTableViewController(QObject *parent) : SingleSectionListController(parent) {}

void FavouritesTableViewController::viewDidLoad()
{
    m_observers.add(Notifications::VerbFavouriteToggled,
                    [this](const Notification &notification) { verbFavouriteToggled(notification); });
    reload();
}

void FavouritesTableViewController::viewDidAppear()
{
    emit analyticsEvent(QStringLiteral("favourites_list"));
    setVisible(true);
}

void FavouritesTableViewController::viewDidDisappear()
{
    setVisible(false);
}

QString FavouritesTableViewController::query(const QString &sortColumn)
{
    return QStringLiteral("SELECT distinct verb._id, english, italian, portuguese, german, spanish, french, dutch, "
                          "favourite._id as favourite_available\n"
                          "FROM favourite INNER JOIN verb ON favourite.verbid = verb._id\n"
                          "ORDER BY ")
            + sortColumn + QStringLiteral(" ASC");
}

QString FavouritesTableViewController::listQuery() const
{
    return query(VerbListTableViewController::sortColumn(settings(), PreferredLanguages::get()));
}

QString FavouritesTableViewController::removalTitleKey() const
{
    return QStringLiteral("action.favourite.remove");
}

// The same write as the star of the other screens, so the verb's flag is the
// table's afterwards, whatever happened.
bool FavouritesTableViewController::removeStored(const VerbPtr &verb)
{
    return VerbRepository::setFavourite(repository(), verb, false, this, DatabaseErrors::RemovingFavourite);
}

void FavouritesTableViewController::verbFavouriteToggled(const Notification &notification)
{
    if (qobject_cast<FavouritesTableViewController *>(notification.sender()))
        return;
    reload();
}

} // namespace norvella
