#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "SearchIndex.h"
#include "SearchResultsTableViewController.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbListTableViewController.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>

#include <new>

using namespace norvella;

// The search index is built on a worker thread and handed back to the search
// screen, which publishes it for the alphabetical list. The queue it was built
// for can be replaced, and the screen can go, while the build runs or while
// its hand-back waits in the event queue.
namespace {

// Where the old build stands when its queue or its screen goes.
enum class OldBuild { Running, FinishedNotHandedBack, HandedBack };

// Queues made one after another in the same storage: the heap is free to put
// a new queue where a freed one lived, and this makes it do so every time.
// The control block is allocated apart, as with any shared_ptr made from a
// pointer, so weak references to a freed queue outlive its storage.
std::shared_ptr<DatabaseQueue> queueInTheOneSlot(const QString &path)
{
    alignas(DatabaseQueue) static std::byte slot[sizeof(DatabaseQueue)];
    return std::shared_ptr<DatabaseQueue>(new (slot) DatabaseQueue(path),
                                          [](DatabaseQueue *queue) { queue->~DatabaseQueue(); });
}

// Runs the builds still going to their end and delivers whatever they posted,
// including deferred deletes (a model lets go of its queue through one).
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
                        + model.data(model.index(row), VerbTableModel::IsFavouriteRole).toString();
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
    // running when its queue or its screen goes; and the five verbs of the
    // shared fixture, which every search here tells apart from those.
    QString m_larger;
    QString m_smaller;
    std::unique_ptr<Settings> m_settings;

    void addOldBuildRows()
    {
        QTest::addColumn<OldBuild>("oldBuild");
        QTest::newRow("running") << OldBuild::Running;
        QTest::newRow("finished, not handed back") << OldBuild::FinishedNotHandedBack;
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

    // A queue replaced by one at the freed queue's address gets an index of
    // its own, in the search and in the list that reads the published index,
    // wherever the old queue's build stood.
    void aNewQueueAtAFreedAddressGetsItsOwnIndex_data() { addOldBuildRows(); }
    void aNewQueueAtAFreedAddressGetsItsOwnIndex()
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

        auto old = queueInTheOneSlot(m_larger);
        for (VerbTableModel *model : models)
            model->setQueue(old);
        search.prepareIndex();
        if (oldBuild != OldBuild::Running)
            QThreadPool::globalInstance()->waitForDone();
        if (oldBuild == OldBuild::HandedBack) {
            QCoreApplication::sendPostedEvents();
            QVERIFY(SearchIndex::readyFor(old));
        }

        const DatabaseQueue *address = old.get();
        std::weak_ptr<DatabaseQueue> oldQueue = old;
        for (VerbTableModel *model : models)
            model->setQueue(nullptr);
        old.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY2(oldQueue.expired(), "the old queue's storage is still in use");
        auto current = queueInTheOneSlot(m_smaller);
        QCOMPARE(current.get(), address);
        for (VerbTableModel *model : models)
            model->setQueue(current);
        // Whatever the old build had left to hand back arrives now.
        settleBuilds();
        QVERIFY(!SearchIndex::readyFor(current));

        QVERIFY(search.waitForIndex());
        QVERIFY(SearchIndex::readyFor(current));
        for (const QString &text : {"a", "", "verbo1", "forma", "to", "mangi"}) {
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
    }

    // The search screen goes while its build runs or while the hand-back
    // waits: nothing runs on the screen afterwards (the sanitizer build
    // reports any use of it), nothing is published for the queue, and the
    // abandoned build is not logged as a failure.
    void aBuildOutlivingItsScreenHandsNothingBack_data()
    {
        QTest::addColumn<OldBuild>("oldBuild");
        QTest::newRow("running") << OldBuild::Running;
        QTest::newRow("finished, not handed back") << OldBuild::FinishedNotHandedBack;
    }
    void aBuildOutlivingItsScreenHandsNothingBack()
    {
        QFETCH(OldBuild, oldBuild);
        const QString log = logOf(m_dir);
        auto queue = std::make_shared<DatabaseQueue>(m_larger);
        auto search = std::make_unique<SearchResultsTableViewController>();
        search->setSettings(m_settings.get());
        search->setQueue(queue);
        search->prepareIndex();
        if (oldBuild == OldBuild::FinishedNotHandedBack)
            QThreadPool::globalInstance()->waitForDone();
        search.reset();
        settleBuilds();
        QVERIFY(!SearchIndex::readyFor(queue));
        QCOMPARE(logOf(m_dir), log);

        // The queue itself is fine: the next screen builds and publishes.
        SearchResultsTableViewController next;
        next.setSettings(m_settings.get());
        next.setQueue(queue);
        QVERIFY(next.waitForIndex());
        QVERIFY(SearchIndex::readyFor(queue));
    }
};

QTEST_GUILESS_MAIN(IndexHandBackTest)
#include "tst_indexhandback.moc"
