// The user's changes when the working database cannot be written: a read-only file system
// and a full disk, both real, on a tmpfs of this test's own (a user and mount namespace made
// with `unshare -rm`). No screen then shows a change that was not stored, the user is told
// why, the log keeps SQLite's own reason, and the next write after the disk is fixed works.
#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "ListTestSupport.h"
#include "Strings.h"
#include "TestSupport.h"
#include "UserMessages.h"
#include "VerbDetailTableViewController.h"
#include "VerbListTableViewController.h"

#include <QProcess>
#include <QtTest>

using namespace norvella;

namespace {
const char InsideVariable[] = "NORVELLA_TEST_TMPFS";

bool runMount(const QStringList &arguments)
{
    QProcess mount;
    mount.start(QStringLiteral("mount"), arguments);
    if (mount.waitForFinished(10000) && mount.exitStatus() == QProcess::NormalExit && mount.exitCode() == 0)
        return true;
    qWarning().noquote() << "mount" << arguments.join(u' ') << "failed:" << mount.readAllStandardError();
    return false;
}

// Writes until the file system refuses a single byte more.
bool fill(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    const QByteArray block(4096, 'x');
    while (file.write(block) == block.size()) {
    }
    while (file.write("x", 1) == 1) {
    }
    return true;
}
} // namespace

class FailedWritesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir; // settings and log, which stay writable
    std::unique_ptr<Settings> m_settings;
    QString m_databasePath;
    QStringList m_messages;

    QString log() const { return QString::fromUtf8(test::readFile(m_dir.filePath(QStringLiteral("norvella.log")))); }
    QStringList rows(const char *sql) const { return test::querySingleColumn(m_databasePath, QString::fromUtf8(sql)); }

    template<typename List> std::unique_ptr<List> makeList(const std::shared_ptr<DatabaseQueue> &queue)
    {
        auto list = std::make_unique<List>();
        list->setSettings(m_settings.get());
        list->setQueue(queue);
        list->viewDidLoad();
        return list;
    }

    // This very test function again, in a namespace of its own where it may mount.
    void runInsideNamespace()
    {
        QTemporaryDir mountPoint;
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(InsideVariable), mountPoint.path());
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        const QString function = QStringLiteral("%1:%2").arg(QString::fromLatin1(QTest::currentTestFunction()),
                                                                QString::fromLatin1(QTest::currentDataTag()));
        child.start(QStringLiteral("unshare"),
                    {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"),
                     QStringLiteral("mount -t tmpfs -o size=1m tmpfs \"$1\" || exit 77; exec \"$0\" \"$2\""),
                     QCoreApplication::applicationFilePath(), mountPoint.path(), function});
        if (!child.waitForStarted())
            QSKIP("unshare cannot be started: no private tmpfs for this test");
        QVERIFY(child.waitForFinished(120000));
        const QString output = QString::fromLocal8Bit(child.readAll());
        if (child.exitCode() == 77 || !output.contains(QLatin1String("Start testing")))
            QSKIP(qPrintable(QStringLiteral("no private tmpfs (unshare -rm, then mount): ") + output.trimmed()));
        QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, qPrintable(output));
    }

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_settings = std::make_unique<Settings>(m_dir.filePath(QStringLiteral("settings.json")));
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        PreferredLanguages::setOverride({QStringLiteral("en-GB")});
        m_messages.clear();
        UserMessages::setListener([this](const QString &text) { m_messages << text; });
    }

    void cleanup()
    {
        UserMessages::setListener({});
        PreferredLanguages::clearOverride();
    }

    void nothingUnsavedIsShown_data()
    {
        QTest::addColumn<bool>("full");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("reason");
        QTest::newRow("read-only") << false << QStringLiteral("common.save_failed.readonly")
                                   << QStringLiteral("attempt to write a readonly database (8)");
        QTest::newRow("full") << true << QStringLiteral("common.save_failed.full")
                              << QStringLiteral("database or disk is full (13)");
    }

    void nothingUnsavedIsShown()
    {
        const QString mountPoint = qEnvironmentVariable(InsideVariable);
        if (mountPoint.isEmpty()) {
            runInsideNamespace();
            return;
        }
        QFETCH(bool, full);
        QFETCH(QString, message);
        QFETCH(QString, reason);
        m_databasePath = mountPoint + QStringLiteral("/verbs.db");
        QVERIFY(test::createFixtureDatabase(m_databasePath, test::listFixtureSql()
                                                    + QStringLiteral("INSERT INTO favourite(verbid) VALUES (1);"
                                                                     "INSERT INTO history(verbid, timestamp) "
                                                                     "VALUES (1, 100), (3, 200);")));
        const QString filler = mountPoint + QStringLiteral("/filler");
        QVERIFY(full ? fill(filler) : runMount({QStringLiteral("-o"), QStringLiteral("remount,ro"), mountPoint}));

        auto queue = std::make_shared<DatabaseQueue>(m_databasePath);
        auto list = makeList<VerbListTableViewController>(queue);
        auto favourites = makeList<FavouritesTableViewController>(queue);
        auto history = makeList<HistoryTableViewController>(queue);
        QCOMPARE(test::italianColumn(*favourites), QStringList{"andare"});
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "andare"}));

        // The alphabetical list's swipe: the star goes back.
        const int row = int(test::italianColumn(*list).indexOf("essere"));
        std::unique_ptr<SwipeAction>(list->trailingSwipeAction(row))->trigger();
        QVERIFY(!list->verbAtRow(row)->isFavourite);

        // The conjugation screen, opened from the favourites: the forms show though the visit
        // cannot be recorded, and its star stays filled.
        const VerbPtr andare = favourites->verbAtRow(0);
        VerbDetailTableViewController screen;
        screen.setSettings(*m_settings);
        screen.setQueue(queue);
        screen.setSelectedVerb(andare);
        screen.viewDidLoad();
        QVERIFY(!andare->indicativoPresente.isEmpty());
        screen.toggleFavourite();
        QVERIFY(screen.isFavourite());

        // The favourites and the history swipes: their rows come back.
        std::unique_ptr<SwipeAction>(favourites->trailingSwipeAction(0))->trigger();
        QCOMPARE(test::italianColumn(*favourites), QStringList{"andare"});
        QVERIFY(favourites->verbAtRow(0)->isFavourite && andare->isFavourite);
        std::unique_ptr<SwipeAction>(history->trailingSwipeAction(1))->trigger();
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "andare"}));

        QCOMPARE(m_messages, QStringList(5, Strings::text(message)));
        QCOMPARE(rows("SELECT verbid FROM favourite"), QStringList{"1"});
        QCOMPARE(rows("SELECT verbid || ':' || timestamp FROM history ORDER BY verbid"),
                 (QStringList{"1:100.0", "3:200.0"}));
        const QString text = log();
        QCOMPARE(text.count(QStringLiteral("Unable to update favourite ") + reason), 2);
        QVERIFY2(text.contains(QStringLiteral("An error occurred when reading verb conjugation: ") + reason), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("An error occurred when removing the favourite: ") + reason), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("An error occurred when removing the item from history: ") + reason),
                 qPrintable(text));
        QVERIFY(!text.contains(QStringLiteral("cannot rollback")));

        // Room again: the same connection writes, with nothing left over from the failures.
        if (full)
            QVERIFY(QFile::remove(filler));
        else
            QVERIFY(runMount({QStringLiteral("-o"), QStringLiteral("remount,rw"), mountPoint}));
        screen.toggleFavourite();
        QVERIFY(!screen.isFavourite());
        std::unique_ptr<SwipeAction>(list->trailingSwipeAction(row))->trigger();
        QVERIFY(list->verbAtRow(row)->isFavourite);
        QCOMPARE(rows("SELECT verbid FROM favourite"), QStringList{"2"});
        QCOMPARE(m_messages.size(), 5);
    }
};

QTEST_MAIN(FailedWritesTest)
#include "tst_failedwrites.moc"
