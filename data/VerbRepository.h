#pragma once

#include "Database.h"
#include "DatabaseQueue.h"
#include "Verb.h"

#include <QFutureWatcher>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <functional>
#include <memory>

namespace norvella {

class SearchIndex;

// The one owner of the verb data and the user's data while the app runs: the
// database queue, the in-memory search index built from it, and every write
// the screens make to favourites and history. Screens receive it in their
// `queue` property and keep no shared state of their own; what changes is
// announced here, by the notifications the screens observe and by typed
// signals.
//
// The index belongs to the queue it was read from, and a repository never
// changes its queue: a new queue comes with a new repository, so no index can
// outlive the data it describes.
class VerbRepository : public QObject
{
    Q_OBJECT

public:
    // How an index is read from a connection (the lists provide it); null,
    // with the reason in `error`, when a read fails, and null once `cancel`
    // is set.
    using IndexBuilder = std::function<std::shared_ptr<const SearchIndex>(Database &db, QString *error,
                                                                          const std::atomic_bool *cancel)>;

    // Without a queue nothing is read or written; without a builder there is
    // never an index and the screens run their statements.
    explicit VerbRepository(std::shared_ptr<DatabaseQueue> queue, IndexBuilder indexBuilder = {},
                            QObject *parent = nullptr);
    ~VerbRepository() override;

    // The repository behind a QML value, or null.
    static VerbRepository *from(QObject *object) { return qobject_cast<VerbRepository *>(object); }

    std::shared_ptr<DatabaseQueue> queue() const { return m_queue; }

    // Starts reading the index in the background, on a connection of its
    // own, unless it is read, being read, or could not be read.
    void buildSearchIndex();
    // The index once it is read, else null (the statements answer). A build
    // that finished while the event loop was busy is taken here.
    std::shared_ptr<const SearchIndex> searchIndex();
    // Starts the build if needed and blocks until it ends; false when there
    // is no index.
    bool waitForSearchIndex();
    bool isBuildingSearchIndex() const { return m_indexBuild != nullptr; }

    // A statement of a screen, each row made into a Verb by the one builder
    // and handed to `eachRow`; `done` runs still inside the turn, with false
    // when the statement failed (logged under `failureReport`). Nothing runs
    // without a queue.
    using RowHandler = std::function<void(const VerbPtr &verb, const ResultSet &row)>;
    bool readVerbs(const QString &sql, const QVariantList &arguments, VerbRowFields fields, const char *failureReport,
                   const RowHandler &eachRow, const std::function<void(bool read)> &done = {});

    // Marks or unmarks a favourite. The verb's flag ends as the table holds
    // it. On success "VerbFavouriteToggled" is posted with `origin` as its
    // sender and favouriteChanged follows; a failure is logged under
    // `failureReport` and shown to the user. False when nothing was written.
    bool setFavourite(const VerbPtr &verb, bool favourite, QObject *origin,
                      const char *failureReport = UnableToUpdateFavourite);
    // The same for a screen that may have no repository: nothing is written
    // then, and that is logged and shown like any failed write.
    static bool setFavourite(VerbRepository *repository, const VerbPtr &verb, bool favourite, QObject *origin,
                             const char *failureReport = UnableToUpdateFavourite);
    // Every history row of the verb; a failure is logged and shown.
    bool removeFromHistory(const Verb &verb);
    // The whole history, then "RefreshHistory" (also after a failure, which
    // is logged and shown: the list then shows what is still there).
    bool clearHistory();
    // A showing of a verb: `turn` reads its forms and writes its history in
    // one turn (it closes the connection), then "VerbViewed" is posted.
    void recordView(const VerbPtr &verb, const std::function<void(Database &)> &turn);

signals:
    void searchIndexReady();
    void favouriteChanged(const norvella::VerbPtr &verb, QObject *origin);
    void historyChanged();
    void verbViewed(const norvella::VerbPtr &verb);

private:
    using IndexBuild = QFutureWatcher<std::shared_ptr<const SearchIndex>>;
    void takeIndex(IndexBuild *build);

    std::shared_ptr<DatabaseQueue> m_queue;
    IndexBuilder m_indexBuilder;
    std::shared_ptr<const SearchIndex> m_index;
    bool m_indexFailed = false;
    // A child, so a hand-back still queued dies with this object.
    QPointer<IndexBuild> m_indexBuild;
    std::shared_ptr<std::atomic_bool> m_cancelBuild;
};

} // namespace norvella
