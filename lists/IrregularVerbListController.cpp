#include "IrregularVerbListController.h"

#include "CrashLog.h"
#include "Database.h"

namespace norvella {

IrregularVerbListController::IrregularVerbListController(QObject *parent) : InterstitialTableViewController(parent)
{
}

QString IrregularVerbListController::query()
{
    // Unranked verbs are the rare ones: after every ranked verb, alphabetically.
    return QStringLiteral("SELECT verb._id, voice_available, english, portuguese, simplified_portuguese, german, "
                          "simplified_german, french, simplified_french, dutch, simplified_dutch, spanish, "
                          "simplified_spanish, turkish, simplified_turkish, italian, simplified_italian, "
                          "(SELECT favourite._id FROM favourite WHERE favourite.verbid = verb._id LIMIT 1) "
                          "AS favourite_available FROM verb WHERE verb.pattern = 'irregular' "
                          "ORDER BY verb.frequency_rank IS NULL, verb.frequency_rank, simplified_italian COLLATE NOCASE, italian");
}

void IrregularVerbListController::viewDidLoad()
{
    m_observers.add(Notifications::VerbFavouriteToggled, [this](const Notification &notification) {
        if (notification.sender() != this)
            reload();
    });
    checkAvailable();
}

void IrregularVerbListController::checkAvailable()
{
    if (!queue())
        return;
    bool available = false;
    queue()->inDatabase([&](Database &db) {
        // Preparing is enough to learn whether the columns exist.
        if (auto probe = db.executeQuery(QStringLiteral("SELECT pattern, frequency_rank FROM verb LIMIT 0"))) {
            available = true;
            probe->close();
        } else {
            reportDatabaseError("The irregular verb list is unavailable in this copy: %@ (%d)", db);
        }
    });
    setAvailable(available);
}

void IrregularVerbListController::setAvailable(bool available)
{
    if (available == m_available)
        return;
    m_available = available;
    emit availableChanged();
}

void IrregularVerbListController::load()
{
    m_loaded = true;
    reload();
}

void IrregularVerbListController::reload()
{
    // A copy without patterns said so once when it was checked; no list to read.
    if (!m_loaded || !m_available || !queue())
        return;
    m_verbs.clear();
    const bool read = repository()->readVerbs(query(), {}, VerbRowFields::Full, DatabaseErrors::ReadingVerbList,
                                              [this](const VerbPtr &verb, const ResultSet &) { m_verbs.append(verb); },
                                              [this](bool) { reloadData(rowsFor(m_verbs)); });
    if (!read)
        setAvailable(false);
}

SwipeAction *IrregularVerbListController::trailingSwipeAction(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (!verb)
        return nullptr;
    return favouriteSwipeAction(verb);
}

} // namespace norvella
