#include "SingleSectionListController.h"

#include "CrashLog.h"
#include "Database.h"

#include <QPointer>

namespace norvella {

SingleSectionListController::SingleSectionListController(QObject *parent) : InterstitialTableViewController(parent)
{
    connect(this, &QAbstractItemModel::modelReset, this, &SingleSectionListController::updateEmptyState);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &SingleSectionListController::updateEmptyState);
}

void SingleSectionListController::updateEmptyState()
{
    const bool empty = m_verbs.isEmpty();
    if (empty == m_showsEmptyState)
        return;
    m_showsEmptyState = empty;
    emit showsEmptyStateChanged();
}

void SingleSectionListController::reload()
{
    if (m_isReloading)
        return;
    m_isReloading = true;
    const QString statement = listQuery();
    m_verbs.clear();
    // Without a queue the flag stays set, so no later reload runs either.
    if (!queue())
        return;
    queue()->inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(statement)) {
            while (rows->next()) {
                VerbPtr verb = readListVerb(*rows);
                verb->voice_available = true;
                m_verbs.append(verb);
            }
            rows->close();
        } else {
            reportDatabaseError(DatabaseErrors::ReadingVerbList, db);
        }
        reloadData(rowsFor(m_verbs));
        m_isReloading = false;
    });
}

SwipeAction *SingleSectionListController::trailingSwipeAction(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (!verb)
        return nullptr;
    // Out of the data at once, before any tap: the row deletion that follows
    // a tap has to find the list already shorter.
    m_verbs.removeOne(verb);
    verbWillBeRemoved(*verb);
    QPointer<SingleSectionListController> self(this);
    return SwipeAction::forQml(new SwipeAction(SwipeAction::Style::Destructive, removal().titleKey,
                                               QStringLiteral("remove"), SwipeAction::destructiveColor(), verb,
                                               [self](const VerbPtr &verb) { return self ? self->remove(verb) : false; }));
}

bool SingleSectionListController::remove(const VerbPtr &verb)
{
    // The action reports completion first, which makes the view drop the row.
    deleteRow(verb.get());
    const Removal what = removal();
    if (queue()) {
        queue()->inDatabase([&](Database &db) {
            if (db.executeUpdate(what.deleteStatement, {verb->id}))
                db.close();
            else
                reportDatabaseError(what.errorMessage, db);
        });
    }
    verbWasRemoved(verb);
    if (m_verbs.isEmpty())
        reloadData(rowsFor(m_verbs));
    return true;
}

} // namespace norvella
