#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "SearchIndex.h"
#include "SearchResultsTableViewController.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbListTableViewController.h"
#include "VerbRepository.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <new>

using namespace norvella;

// The search index is read on a worker thread and handed back to the verb
// repository, which the search and the alphabetical list both read it from.
// The repository, with its queue, can be replaced or destroyed while the build
// runs or while its hand-back waits in the event queue.
namespace {

// Where the old build stands when its repository goes.
enum class OldBuild { Running, FinishedNotHandedBack, HandedBack };

// Objects made one after another in the same storage: the heap is free to put
// a new queue or repository where a freed one lived, and this makes it do so
// every time. The queue's control block is allocated apart, as with any
// shared_ptr made from a pointer, so weak references to it outlive its storage.
std::shared_ptr<DatabaseQueue> queueInTheOneSlot(const QString &path)
{
    alignas(DatabaseQueue) static std::byte slot[sizeof(DatabaseQueue)];
    return std::shared_ptr<DatabaseQueue>(new (slot) DatabaseQueue(path),
                                          [](DatabaseQueue *queue) { queue->~DatabaseQueue(); });
}

struct RepositoryInTheOneSlot
{
    void operator()(VerbRepository *repository) const { repository->~VerbRepository(); }
};
using SlotRepository = std::unique_ptr<VerbRepository, RepositoryInTheOneSlot>;

SlotRepository repositoryInTheOneSlot(std::shared_ptr<DatabaseQueue> queue)
{
    alignas(VerbRepository) static std::byte slot[sizeof(VerbRepository)];
    return SlotRepository(new (slot) VerbRepository(std::move(queue), &SearchIndex::build));
}

// Runs the builds still going to their end and delivers whatever they posted,
// including deferred deletes.
void settleBuilds()
{
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList shown(const VerbTableModel &model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows << model.data(model.index(row), VerbTableModel::ItalianRole).toString() + '|'
                        + model.data(model.index(row), VerbTableModel::IsFavouriteRole).toString() + '|'
                        + model.data(model.index(row), VerbTableModel::SectionRole).toString();
    return rows;
}

QString logOf(const QTemporaryDir &dir)
{
    QFile file(dir.filePath("norvella.log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

Q_DECLARE_METATYPE(OldBuild)

class IndexHandBackTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    // Some 500 verbs with forms, so a build started just before is still
    // running when its repository goes; and the five verbs of the shared
    // fixture, which every search here tells apart from those.
    QString m_larger;
    QString m_smaller;
    std::unique_ptr<Settings> m_settings;

    void addOldBuildRows(bool withHandedBack)
    {
        QTest::addColumn<OldBuild>("oldBuild");
        QTest::newRow("running") << OldBuild::Running;
        QTest::newRow("finished, not handed back") << OldBuild::FinishedNotHandedBack;
        if (withHandedBack)
            QTest::newRow("handed back") << OldBuild::HandedBack;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        CrashLog::setLogFilePath(m_dir.filePath("norvella.log"));
        PreferredLanguages::setOverride({"en-GB"});
        m_settings = std::make_unique<Settings>(m_dir.filePath("settings.json"));
        // Forms and translations on, matched anywhere: every part of the index counts.
        m_settings->setBool(SettingsKeys::IncludeEnglish, true);
        m_settings->setString(SettingsKeys::SearchFrom, "W");
        m_settings->setBool(SettingsKeys::IncludeConjugations, true);
        m_larger = m_dir.filePath("larger.db");
        m_smaller = m_dir.filePath("smaller.db");
        QVERIFY(test::createFixtureDatabase(m_larger, R"(
            WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i + 1 FROM n WHERE i < 1499)
            INSERT INTO verb(_id, italian, simplified_italian, english)
                SELECT i, 'verbo' || i, 'verbo' || i, 'to verb ' || i FROM n;
            WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i + 1 FROM n WHERE i < 1499),
                           k(j) AS (SELECT 1 UNION ALL SELECT j + 1 FROM k WHERE j < 20)
            INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order)
                SELECT i, 1, 'forma' || i || '-' || j, 6, j FROM n, k;
            INSERT INTO favourite(verbid) VALUES (1), (1200);
        )"));
        QVERIFY(test::createFixtureDatabase(m_smaller, "INSERT INTO favourite(verbid) VALUES (3);"));
    }

    void cleanupTestCase() { PreferredLanguages::clearOverride(); }

    // A repository replaced by one at the freed repository's address, over a
    // queue at the freed queue's address, gets an index of its own, in the
    // search and in the list, wherever the old build stood and whatever the
    // screens still showed from the old index.
    void aNewRepositoryAtAFreedAddressGetsItsOwnIndex_data() { addOldBuildRows(true); }
    void aNewRepositoryAtAFreedAddressGetsItsOwnIndex()
    {
        QFETCH(OldBuild, oldBuild);
        SearchResultsTableViewController search;
        SearchResultsTableViewController statement;
        statement.setStrategy(SearchResultsTableViewController::Strategy::Statement);
        VerbListTableViewController list;
        VerbListTableViewController listStatement;
        listStatement.setReadsFromIndex(false);
        const QList<VerbTableModel *> models{&search, &statement, &list, &listStatement};
        for (VerbTableModel *model : models)
            model->setSettings(m_settings.get());

        auto oldQueue = queueInTheOneSlot(m_larger);
        const DatabaseQueue *queueAddress = oldQueue.get();
        std::weak_ptr<DatabaseQueue> oldQueueAlive = oldQueue;
        SlotRepository old = repositoryInTheOneSlot(std::move(oldQueue));
        const VerbRepository *repositoryAddress = old.get();
        for (VerbTableModel *model : models)
            model->setRepository(old.get());
        old->buildSearchIndex();
        if (oldBuild != OldBuild::Running)
            QThreadPool::globalInstance()->waitForDone();
        if (oldBuild == OldBuild::HandedBack) {
            QCoreApplication::sendPostedEvents();
            QVERIFY(old->searchIndex());
            // The screens show rows of the old index when it goes.
            search.search("verbo12");
            statement.search("verbo12");
            list.reload();
            QCOMPARE(shown(search), shown(statement));
            QCOMPARE(search.rowCount(), 100);
            QCOMPARE(list.rowCount(), 505);
        }

        old.reset();
        QVERIFY2(oldQueueAlive.expired(), "the old queue's storage is still in use");
        for (VerbTableModel *model : models)
            QVERIFY(!model->queue());
        auto currentQueue = queueInTheOneSlot(m_smaller);
        QCOMPARE(currentQueue.get(), queueAddress);
        SlotRepository current = repositoryInTheOneSlot(currentQueue);
        QCOMPARE(current.get(), repositoryAddress);
        for (VerbTableModel *model : models)
            model->setRepository(current.get());
        // Whatever the old build had left to hand back arrives now.
        settleBuilds();
        QVERIFY(!current->searchIndex());
        QVERIFY(!current->isBuildingSearchIndex());

        QVERIFY(current->waitForSearchIndex());
        for (const char *text : {"a", "", "verbo1", "forma", "to", "mangi"}) {
            statement.search(text);
            search.search(text);
            QCOMPARE(shown(search), shown(statement));
        }
        search.search("");
        QCOMPARE(search.rowCount(), 5);
        list.reload();
        listStatement.reload();
        QCOMPARE(shown(list), shown(listStatement));
        QCOMPARE(list.rowCount(), 5);
        for (VerbTableModel *model : models)
            model->setRepository(nullptr);
    }

    // The repository goes while its build runs or while the hand-back waits:
    // nothing runs on it afterwards (the sanitizer build reports any use of
    // it), the screens that read it are left without a queue, and the
    // abandoned build is not logged as a failure.
    void aBuildOutlivingItsRepositoryHandsNothingBack_data() { addOldBuildRows(false); }
    void aBuildOutlivingItsRepositoryHandsNothingBack()
    {
        QFETCH(OldBuild, oldBuild);
        const QString log = logOf(m_dir);
        auto queue = std::make_shared<DatabaseQueue>(m_larger);
        auto repository = std::make_unique<VerbRepository>(queue, &SearchIndex::build);
        SearchResultsTableViewController search;
        search.setSettings(m_settings.get());
        search.setRepository(repository.get());
        repository->buildSearchIndex();
        QVERIFY(repository->isBuildingSearchIndex());
        if (oldBuild == OldBuild::FinishedNotHandedBack)
            QThreadPool::globalInstance()->waitForDone();
        repository.reset();
        settleBuilds();
        QVERIFY(!search.queue());
        search.search("verbo");
        QCOMPARE(search.rowCount(), 0);
        QCOMPARE(logOf(m_dir), log);

        // The queue itself is fine: the next repository builds its own.
        VerbRepository next(queue, &SearchIndex::build);
        search.setRepository(&next);
        QVERIFY(next.waitForSearchIndex());
        search.search("verbo1");
        QCOMPARE(search.rowCount(), 500);
    }

    // The list takes the repository's index at its next reload, with no
    // search screen anywhere: once the index is read, the list shows every
    // verb even when its statement can no longer run.
    void theListReadsTheIndexAsSoonAsTheRepositoryHasIt()
    {
        const QString path = m_dir.filePath("list-only.db");
        QVERIFY(test::createFixtureDatabase(path));
        auto queue = std::make_shared<DatabaseQueue>(path);
        VerbRepository repository(queue, &SearchIndex::build);
        VerbListTableViewController list;
        list.setSettings(m_settings.get());
        list.setRepository(&repository);
        list.reload();
        const QStringList fromStatement = shown(list);
        QCOMPARE(fromStatement.size(), 5);

        QSignalSpy ready(&repository, &VerbRepository::searchIndexReady);
        repository.buildSearchIndex();
        QVERIFY(ready.wait());
        // A statement on the verb table would fail from now on.
        queue->inDatabase([](Database &db) {
            QVERIFY(db.executeUpdate("ALTER TABLE verb RENAME TO gone"));
            db.close();
        });
        list.reload();
        QCOMPARE(shown(list), fromStatement);

        VerbListTableViewController statementOnly;
        statementOnly.setSettings(m_settings.get());
        statementOnly.setReadsFromIndex(false);
        statementOnly.setRepository(&repository);
        statementOnly.reload();
        QCOMPARE(statementOnly.rowCount(), 0);
    }
};

QTEST_GUILESS_MAIN(IndexHandBackTest)
#include "tst_indexhandback.moc"
