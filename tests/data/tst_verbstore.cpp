#include "CrashLog.h"
#include "DatabaseCheck.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbStore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace norvella;

// The working copy's life cycle: first install, updates that keep every one
// of the user's rows or change nothing, and recovery from damage that keeps
// every row SQLite can still reach.
class VerbStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        m_master = m_dir->filePath(QStringLiteral("master.db"));
        m_docs = m_dir->filePath(QStringLiteral("docs"));
        QVERIFY(test::createFixtureDatabase(m_master));
        m_settings.reset(new Settings(m_dir->filePath(QStringLiteral("settings.json"))));
        CrashLog::setLogFilePath(m_dir->filePath(QStringLiteral("norvella.log")));
    }

    void firstInstallSameVersionAndMissingCopy()
    {
        const auto result = prepare(QStringLiteral("1.0"));
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(result.copied);
        QCOMPARE(column("SELECT italian FROM verb WHERE _id = 1"), QStringList{"andare"});
        QCOMPARE(Settings(m_settings->filePath()).stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.0"));
        QCOMPARE(column("PRAGMA user_version"), QStringList{"1000000"});

        // Same version, copy present: nothing is copied again; a favourite
        // stored twice by an old fault is stored once.
        addUserRows(3, 2);
        QVERIFY(test::runSql(working(), QStringLiteral("INSERT INTO favourite(verbid) VALUES (2)")));
        QVERIFY(!prepare(QStringLiteral("1.0")).copied);
        QCOMPARE(favourites(), (QStringList{"1", "2", "3"}));

        // The settings file lost: the copy itself knows its version.
        m_settings->clear();
        QVERIFY(!prepare(QStringLiteral("1.0")).copied);
        QCOMPARE(favourites(), (QStringList{"1", "2", "3"}));
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.0"));

        // Same version, copy gone: a fresh copy, with nothing to carry over.
        QVERIFY(QFile::remove(working()));
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        QCOMPARE(column("SELECT count(*) FROM favourite"), QStringList{"0"});
    }

    void updateCarriesOverEveryRowOnce()
    {
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        QVERIFY(test::runSql(working(), QStringLiteral(
                "INSERT INTO favourite(verbid) VALUES (3), (NULL), (1), (3);"
                "INSERT INTO history(verbid, timestamp) VALUES (1, 1700000000.75), (3, 1700000100.5);"
                "INSERT INTO verb(_id, italian, simplified_italian) VALUES (99, 'old only', 'old only');")));

        const auto result = prepare(QStringLiteral("1.1"));
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(result.copied);
        QVERIFY(!result.repaired);
        QCOMPARE(column("SELECT count(*) FROM verb WHERE _id = 99"), QStringList{"0"});
        // A verb stored twice by an old fault comes over once.
        QCOMPARE(column("SELECT verbid FROM favourite ORDER BY _id"), (QStringList{"3", "1"}));
        QCOMPARE(column("SELECT verbid || ':' || timestamp FROM history ORDER BY _id"),
                 (QStringList{"1:1700000000.0", "3:1700000100.0"}));
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.1"));
        QCOMPARE(column("PRAGMA user_version"), QStringList{"1001000"});
        QCOMPARE(QDir(m_docs).entryList({QStringLiteral("verbs.db.*")}, QDir::Files), QStringList());
    }

    // Whatever stops an update, the old copy stays as it was, with every row,
    // and the version is not stored, so the next launch tries again.
    void failedUpdatesChangeNothing_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("master is not a database") << "garbage master";
        QTest::newRow("master refuses the rows") << "refusing master";
        QTest::newRow("old copy cannot be replaced") << "blocked";
        QTest::newRow("master missing") << "missing master";
    }
    void failedUpdatesChangeNothing()
    {
        QFETCH(QString, how);
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        addUserRows(40, 5);
        const QByteArray before = test::readFile(working());
        QString master = m_master;
        if (how == QLatin1String("garbage master")) {
            master = m_dir->filePath(QStringLiteral("garbage.db"));
            QFile file(master);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(40000, 'x'));
        } else if (how == QLatin1String("refusing master")) {
            QVERIFY(test::runSql(m_master, QStringLiteral(
                    "CREATE TRIGGER refuse BEFORE INSERT ON favourite WHEN NEW.verbid = 20 "
                    "BEGIN SELECT RAISE(ABORT, 'refused'); END;")));
        } else if (how == QLatin1String("blocked")) {
            // A folder in the way of the rename: as good as a full disk.
            QVERIFY(QDir().mkpath(m_docs + QStringLiteral("/verbs.db.new/blocker")));
        } else {
            master = m_dir->filePath(QStringLiteral("nope.db"));
        }
        const auto result = prepare(QStringLiteral("2.0"), master);
        QVERIFY(result.outcome != VerbStore::Outcome::Ready);
        QVERIFY(!result.error.isEmpty());
        QCOMPARE(test::readFile(working()), before);
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.0"));
        QVERIFY(!QFile::exists(working() + QStringLiteral(".new-journal")));
    }

    void pathsSqliteCannotOpenAreRefusedUpFront()
    {
        const QString deep = m_dir->filePath(QString(120, QLatin1Char('d')) + QLatin1Char('/')
                                             + QString(120, QLatin1Char('e')) + QLatin1Char('/')
                                             + QString(120, QLatin1Char('f')) + QLatin1Char('/')
                                             + QString(120, QLatin1Char('g')));
        const auto result = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), deep, m_master);
        QCOMPARE(result.outcome, VerbStore::Outcome::Failed);
        QVERIFY2(result.error.contains(QStringLiteral("too long")), qPrintable(result.error));
        QVERIFY(!QFile::exists(deep));
        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), QString(), m_master).error.contains("HOME"));
    }

    void hotJournalIsRolledBackNotTakenForDamage()
    {
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        addUserRows(30, 10);
        // A writer killed mid-commit: its changes reached the file, the
        // journal that undoes them is left behind.
        const pid_t child = fork();
        if (child == 0) {
            sqlite3 *db = nullptr;
            sqlite3_open(working().toUtf8().constData(), &db);
            sqlite3_exec(db,
                         "PRAGMA cache_size=2; BEGIN; DELETE FROM favourite;"
                         "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
                         "INSERT INTO history(verbid, timestamp) SELECT i, i FROM n;",
                         nullptr, nullptr, nullptr);
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        QVERIFY(QFileInfo(working() + QStringLiteral("-journal")).size() > 0);

        const auto result = prepare(QStringLiteral("1.0"));
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(!result.copied);
        QVERIFY(QDir(m_docs).entryList({QStringLiteral("verbs.db.corrupt-*")}).isEmpty());
        QCOMPARE(favourites().size(), 30);
        QCOMPARE(column("SELECT count(*) FROM history"), QStringList{"10"});
    }

    // Damage of several kinds: the copy is replaced, the user's rows that
    // SQLite can still reach come over, at most one damaged copy is kept.
    void damagedCopiesKeepEveryReachableRow_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("garbage") << "garbage";
        QTest::newRow("verb table gone") << "no verb table";
        QTest::newRow("one page short, index pages last") << "truncated";
        QTest::newRow("a page of forms overwritten") << "page";
    }
    void damagedCopiesKeepEveryReachableRow()
    {
        QFETCH(QString, damage);
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        addUserRows(500, 51);
        for (int i = 0; i < 3; ++i)
            QVERIFY(test::writeFile(working() + QStringLiteral(".corrupt-2020010%1-000000").arg(i), "old"));
        const QStringList before = favourites();
        bool rowsReachable = true;

        if (damage == QLatin1String("garbage")) {
            QVERIFY(test::writeFile(working(), QByteArray(8192, 'x')));
            rowsReachable = false;
        } else if (damage == QLatin1String("no verb table")) {
            QVERIFY(test::runSql(working(), QStringLiteral("DROP TABLE verb")));
        } else if (damage == QLatin1String("truncated")) {
            // The index over the favourites is rebuilt into the last pages, so
            // a read through it fails while the rows themselves are intact.
            QVERIFY(test::runSql(working(), QStringLiteral(
                    "DROP INDEX favourite_verbid; VACUUM; CREATE INDEX favourite_verbid ON favourite(verbid);")));
            QVERIFY(QFile::resize(working(), QFileInfo(working()).size() - pageSize()));
        } else {
            const int page = column("SELECT pageno FROM dbstat WHERE name = 'conjugation' LIMIT 1").value(0).toInt();
            QVERIFY(page > 1);
            QFile file(working());
            QVERIFY(file.open(QIODevice::ReadWrite));
            file.seek(qint64(page - 1) * pageSize());
            file.write(QByteArray(pageSize(), '\xA5'));
            file.close();
            // A launch does not read every page: the check after it finds the
            // damage, and the next launch repairs it.
            QVERIFY(!prepare(QStringLiteral("1.0")).copied);
            DatabaseCheck check(working());
            check.start();
            QVERIFY(!check.wait().isEmpty());
        }

        const auto result = prepare(QStringLiteral("1.0"));
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(result.copied);
        QVERIFY(result.repaired);
        QVERIFY(VerbStore::isHealthy(working()));
        const QStringList aside = QDir(m_docs).entryList({QStringLiteral("verbs.db.corrupt-*")});
        QCOMPARE(aside.size(), 1);
        QVERIFY(!aside.constFirst().startsWith(QStringLiteral("verbs.db.corrupt-2020")));
        if (rowsReachable) {
            QCOMPARE(favourites(), before);
            QCOMPARE(column("SELECT count(*) FROM history"), QStringList{"51"});
            QCOMPARE(result.keptFavourites, 500);
            QCOMPARE(result.keptHistory, 51);
        }
        QVERIFY(logText().contains(QStringLiteral("The working database was repaired: kept %1 favourites")
                                           .arg(result.keptFavourites)));
    }

    // An index whose entries disagree with the rows passes the quick check;
    // the favourites it hides are found and the index is rebuilt in place.
    void inconsistentIndexIsRebuiltInPlace()
    {
        QVERIFY(prepare(QStringLiteral("1.0")).copied);
        addUserRows(20, 0);
        const int page = column("SELECT pageno FROM dbstat WHERE name = 'favourite_verbid'").value(0).toInt();
        QVERIFY(page > 1);
        QFile file(working());
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(qint64(page - 1) * pageSize());
        QByteArray bytes = file.read(pageSize());
        QCOMPARE(quint8(bytes.at(0)), quint8(0x0A)); // an index leaf
        // The last entry, (20, 20): its key becomes 100, still in order.
        const int cells = (quint8(bytes.at(3)) << 8) | quint8(bytes.at(4));
        const int cell = (quint8(bytes.at(8 + 2 * (cells - 1))) << 8) | quint8(bytes.at(9 + 2 * (cells - 1)));
        // Payload size, header size, two 8-bit integer types, the key, the rowid.
        QCOMPARE(bytes.mid(cell, 6), QByteArray::fromHex("050301011414"));
        bytes[cell + 4] = char(100);
        file.seek(qint64(page - 1) * pageSize());
        file.write(bytes);
        file.close();
        QCOMPARE(column("PRAGMA quick_check"), QStringList{"ok"});
        QCOMPARE(column("SELECT count(*) FROM favourite WHERE verbid = 20"), QStringList{"0"});

        const auto result = prepare(QStringLiteral("1.0"));
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QCOMPARE(column("SELECT count(*) FROM favourite WHERE verbid = 20"), QStringList{"1"});
        QCOMPARE(column("PRAGMA integrity_check"), QStringList{"ok"});
        QCOMPARE(favourites().size(), 20);
    }

private:
    VerbStore::Result prepare(const QString &version, const QString &master = {})
    {
        return VerbStore::prepare(*m_settings, version, m_docs, master.isEmpty() ? m_master : master);
    }
    void addUserRows(int favourites, int history)
    {
        QVERIFY(test::runSql(working(), QStringLiteral(
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                "INSERT INTO favourite(verbid) SELECT i FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) "
                "INSERT INTO history(verbid, timestamp) SELECT i, 700000000 + i FROM n WHERE %2 > 0;")
                                                    .arg(favourites)
                                                    .arg(history)));
    }
    QString logText() const { return QString::fromUtf8(test::readFile(CrashLog::logFilePath())); }
    int pageSize() const { return column("PRAGMA page_size").value(0).toInt(); }
    QString working() const { return VerbStore::workingCopyPath(m_docs); }
    QStringList column(const QString &sql) const { return test::querySingleColumn(working(), sql); }
    QStringList favourites() const { return column("SELECT verbid FROM favourite NOT INDEXED ORDER BY _id"); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
    QString m_master, m_docs;
};

QTEST_GUILESS_MAIN(VerbStoreTest)
#include "tst_verbstore.moc"
