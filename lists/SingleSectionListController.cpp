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
    repository()->readVerbs(
            statement, {}, VerbRowFields::Shown, DatabaseErrors::ReadingVerbList,
            [this](const VerbPtr &verb, const ResultSet &) { m_verbs.append(verb); },
            [this](bool) {
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
    // a tap has to find the list already shorter. The verb's own flags stay
    // as they are: the swipe may still be closed without a tap.
    m_verbs.removeOne(verb);
    QPointer<SingleSectionListController> self(this);
    return SwipeAction::forQml(new SwipeAction(SwipeAction::Style::Destructive, removalTitleKey(),
                                               QStringLiteral("remove"), SwipeAction::destructiveColor(), verb,
                                               [self](const VerbPtr &verb) { return self ? self->remove(verb) : false; }));
}

bool SingleSectionListController::remove(const VerbPtr &verb)
{
    // The action reports completion first, which makes the view drop the row.
    deleteRow(verb.get());
    if (!removeStored(verb)) {
        // The database still holds the verb, so its row comes back.
        reload();
        return true;
    }
    // Read again rather than shown from the data: a swipe closed without a tap
    // has taken its verb out of the data too, and that verb is still listed.
    if (m_verbs.isEmpty())
        reload();
    return true;
}

} // namespace norvella
