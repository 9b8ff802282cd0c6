#include "HistoryTableViewController.h"

#include "CrashLog.h"
#include "Database.h"

namespace norvella {

HistoryTableViewController::HistoryTableViewController(QObject *parent) : SingleSectionListController(parent) {}

void HistoryTableViewController::viewDidLoad()
{
    // Any of these reloads, whoever posted it, this list's own changes included.
    for (const QString &name :
         {Notifications::VerbFavouriteToggled, Notifications::VerbViewed, Notifications::RefreshHistory})
        m_observers.add(name, [this](const Notification &) { reload(); });
    reload();
}

QString HistoryTableViewController::query()
{
    return QStringLiteral("SELECT distinct verb._id, english, italian, portuguese, german, spanish, french, dutch, "
                          "favourite._id as favourite_available\n"
                          "FROM history INNER JOIN verb ON history.verbid = verb._id LEFT OUTER JOIN favourite ON "
                          "history.verbid = favourite.verbid\n"
                          "ORDER BY timestamp DESC");
}

QString HistoryTableViewController::removalTitleKey() const
{
    return QStringLiteral("action.remove");
}

bool HistoryTableViewController::removeStored(const VerbPtr &verb)
{
    return repository() && repository()->removeFromHistory(*verb);
}

} // namespace norvella
