#include "VerbRepository.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "CrashLog.h"
#include "NotificationCenter.h"
#include "UserMessages.h"

#include <QtConcurrent/QtConcurrentRun>

namespace norvella {

namespace {
bool cancelled(const std::shared_ptr<std::atomic_bool> &cancel)
{
    return cancel->load(std::memory_order_relaxed);
}

// Runs on a pool thread. Every phase looks at `cancel` first: a quit or a
// replaced repository must not wait for a build nobody will read.
std::shared_ptr<const SearchIndex> readIndex(const VerbRepository::IndexBuilder &builder, const QString &path,
                                             const std::shared_ptr<std::atomic_bool> &cancel)
{
    if (cancelled(cancel))
        return nullptr;
    Database db(path);
    if (!db.open()) {
        if (!cancelled(cancel))
            CrashLog::log(QStringLiteral("The search index could not be built, searching with the statement: ")
                          + db.lastErrorMessage());
        return nullptr;
    }
    if (cancelled(cancel))
        return nullptr;
    QString error;
    auto index = builder(db, &error, cancel.get());
    if (cancelled(cancel))
        return nullptr;
    if (!index)
        CrashLog::log(QStringLiteral("The search index could not be built, searching with the statement: ") + error);
    return index;
}

QVariantMap verbUserInfo(const VerbPtr &verb)
{
    return {{QStringLiteral("verb"), QVariant::fromValue<VerbPtr>(verb)}};
}
} // namespace

VerbRepository::VerbRepository(std::shared_ptr<DatabaseQueue> queue, IndexBuilder indexBuilder, QObject *parent)
    : QObject(parent), m_queue(std::move(queue)), m_indexBuilder(std::move(indexBuilder))
{
}

VerbRepository::~VerbRepository()
{
    if (m_cancelBuild)
        *m_cancelBuild = true;
    // Its hand-back, if already queued, goes with it.
    delete m_indexBuild;
}

void VerbRepository::buildSearchIndex()
{
    if (!m_queue || !m_indexBuilder || m_index || m_indexFailed || m_indexBuild)
        return;
    m_cancelBuild = std::make_shared<std::atomic_bool>(false);
    auto *build = new IndexBuild(this);
    connect(build, &IndexBuild::finished, this, [this, build] { takeIndex(build); });
    build->setFuture(QtConcurrent::run(readIndex, m_indexBuilder, m_queue->path(), m_cancelBuild));
    m_indexBuild = build;
}

void VerbRepository::takeIndex(IndexBuild *build)
{
    if (build != m_indexBuild)
        return;
    m_index = build->future().result();
    m_indexFailed = !m_index;
#ifdef __GLIBC__
    // The build's worker thread has its own malloc arena, and glibc keeps the
    // freed scratch of the build (its n-gram tables, the rows it read) there
    // for good: some 20 MB of a phone's memory nothing will reuse.
    malloc_trim(0);
#endif
    m_indexBuild = nullptr;
    build->deleteLater();
    m_cancelBuild.reset();
    if (m_index)
        emit searchIndexReady();
}

std::shared_ptr<const SearchIndex> VerbRepository::searchIndex()
{
    if (!m_index && m_indexBuild && m_indexBuild->future().isFinished())
        takeIndex(m_indexBuild);
    return m_index;
}

bool VerbRepository::waitForSearchIndex()
{
    buildSearchIndex();
    if (m_indexBuild) {
        m_indexBuild->waitForFinished();
        takeIndex(m_indexBuild);
    }
    return m_index != nullptr;
}

bool VerbRepository::readVerbs(const QString &sql, const QVariantList &arguments, VerbRowFields fields,
                               const char *failureReport, const RowHandler &eachRow,
                               const std::function<void(bool)> &done)
{
    if (!m_queue)
        return false;
    bool read = false;
    m_queue->inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(sql, arguments)) {
            while (rows->next())
                eachRow(verbFromRow(*rows, fields), *rows);
            // A step can fail too, for one a pattern over SQLite's length limit.
            read = !rows->failed();
            rows->close();
        }
        if (!read)
            reportDatabaseError(failureReport, db);
        if (done)
            done(read);
    });
    return read;
}

bool VerbRepository::setFavourite(const VerbPtr &verb, bool favourite, QObject *origin, const char *failureReport)
{
    return setFavourite(this, verb, favourite, origin, failureReport);
}

bool VerbRepository::setFavourite(VerbRepository *repository, const VerbPtr &verb, bool favourite, QObject *origin,
                                  const char *failureReport)
{
    bool written = false;
    bool stored = !favourite;
    int code = 0;
    QString message = QStringLiteral("no database is open");
    if (const auto queue = repository ? repository->m_queue : nullptr) {
        queue->inDatabase([&](Database &db) {
            written = writeFavourite(db, verb->id, favourite, stored);
            if (!written) {
                code = db.lastErrorCode();
                message = db.lastErrorMessage();
            }
            db.close();
        });
    }
    verb->isFavourite = stored;
    if (!written) {
        CrashLog::log(errorReport(failureReport, message, code));
        UserMessages::postSaveFailure(code);
        return false;
    }
    NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, origin, verbUserInfo(verb));
    emit repository->favouriteChanged(verb, origin);
    return true;
}

bool VerbRepository::removeFromHistory(const Verb &verb)
{
    if (!m_queue)
        return false;
    bool removed = false;
    int code = 0;
    m_queue->inDatabase([&](Database &db) {
        removed = db.inTransaction([&] {
            return db.executeUpdate(QStringLiteral("DELETE FROM history WHERE history.verbid = ?"), {verb.id});
        });
        if (removed) {
            db.close();
        } else {
            reportDatabaseError(DatabaseErrors::RemovingHistory, db);
            code = db.lastErrorCode();
        }
    });
    if (!removed) {
        UserMessages::postSaveFailure(code);
        return false;
    }
    emit historyChanged();
    return true;
}

bool VerbRepository::clearHistory()
{
    bool cleared = false;
    int code = 0;
    QString message = QStringLiteral("no database is open");
    if (m_queue) {
        m_queue->inDatabase([&](Database &db) {
            cleared = db.executeUpdate(QStringLiteral("DELETE FROM history"));
            if (!cleared) {
                code = db.lastErrorCode();
                message = db.lastErrorMessage();
            }
            db.close();
        });
    }
    if (!cleared) {
        CrashLog::log(QStringLiteral("Unable to delete favourites %1 (%2)").arg(message).arg(code));
        // The history is still there: the user must not think it is gone.
        UserMessages::postSaveFailure(code);
    } else {
        emit historyChanged();
    }
    NotificationCenter::defaultCenter().post(Notifications::RefreshHistory);
    return cleared;
}

void VerbRepository::recordView(const VerbPtr &verb, const std::function<void(Database &)> &turn)
{
    if (m_queue)
        m_queue->inDatabase(turn);
    NotificationCenter::defaultCenter().post(Notifications::VerbViewed, QVariant(), verbUserInfo(verb));
    emit verbViewed(verb);
}

} // namespace norvella
