#include "FavouritesTableViewController.h"

#include "CrashLog.h"
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

SingleSectionListController::Removal FavouritesTableViewController::removal() const
{
    return {QStringLiteral("action.favourite.remove"), QStringLiteral("DELETE FROM favourite WHERE favourite.verbid = ?"),
            DatabaseErrors::RemovingFavourite};
}

void FavouritesTableViewController::verbWillBeRemoved(Verb &verb)
{
    verb.isFavourite = !verb.isFavourite;
}

void FavouritesTableViewController::verbWasRemoved(const VerbPtr &verb)
{
    NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, this, verbUserInfo(verb));
}

void FavouritesTableViewController::verbFavouriteToggled(const Notification &notification)
{
    if (qobject_cast<FavouritesTableViewController *>(notification.sender()))
        return;
    reload();
}

} // namespace norvella
