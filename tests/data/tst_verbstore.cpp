#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbStore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

// The working copy's life cycle: first install, updates that keep the
// user's rows, and recovery from a missing or damaged copy.
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

    void firstInstallCopiesMasterAndStoresVersion()
    {
        const auto result = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master);
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(result.copied);
        QCOMPARE(column("SELECT italian FROM verb WHERE _id = 1"), QStringList{"andare"});
        QCOMPARE(column("SELECT count(*) FROM favourite"), QStringList{"0"});
        QCOMPARE(Settings(m_settings->filePath()).stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.0"));

        // Same version, copy present: nothing is copied again.
        QVERIFY(test::runSql(working(), QStringLiteral("INSERT INTO favourite(verbid) VALUES (2)")));
        const auto again = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master);
        QVERIFY(!again.copied);
        QCOMPARE(column("SELECT verbid FROM favourite"), QStringList{"2"});

        // Same version, copy gone: a fresh copy, with nothing to carry over.
        QVERIFY(QFile::remove(working()));
        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master).copied);
        QCOMPARE(column("SELECT count(*) FROM favourite"), QStringList{"0"});
    }

    void updateCarriesOverFavouritesAndWholeSecondHistory()
    {
        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master).copied);
        QVERIFY(test::runSql(working(), QStringLiteral(
                "INSERT INTO favourite(verbid) VALUES (3), (NULL), (1);"
                "INSERT INTO history(verbid, timestamp) VALUES (1, 1700000000.75), (3, 1700000100.5);"
                "INSERT INTO verb(_id, italian, simplified_italian) VALUES (99, 'old only', 'old only');")));

        const auto result = VerbStore::prepare(*m_settings, QStringLiteral("1.1"), m_docs, m_master);
        QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
        QVERIFY(result.copied);
        // The row that only the old copy had is gone: the master replaced it.
        QCOMPARE(column("SELECT count(*) FROM verb WHERE _id = 99"), QStringList{"0"});
        QCOMPARE(column("SELECT verbid FROM favourite ORDER BY verbid"), (QStringList{"1", "3"}));
        QCOMPARE(column("SELECT verbid || ':' || timestamp FROM history ORDER BY _id"),
                 (QStringList{"1:1700000000.0", "3:1700000100.0"}));
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("1.1"));
    }

    void failuresKeepTheStoredVersionSoTheNextLaunchRetries()
    {
        // Nothing can be created under /proc, not even by root.
        auto result = VerbStore::prepare(*m_settings, QStringLiteral("2.0"), QStringLiteral("/proc/norvella-test"), m_master);
        QCOMPARE(result.outcome, VerbStore::Outcome::Failed);
        QVERIFY(!result.error.isEmpty());
        QVERIFY(m_settings->stringForKey(SettingsKeys::InstalledVersion).isEmpty());

        // An old copy that cannot be deleted stops the update.
        QVERIFY(QDir().mkpath(working() + QStringLiteral("/blocker")));
        m_settings->setString(SettingsKeys::InstalledVersion, QStringLiteral("0.9"));
        result = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master);
        QCOMPARE(result.outcome, VerbStore::Outcome::Failed);
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("0.9"));

        result = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_dir->filePath(QStringLiteral("nope.db")));
        QCOMPARE(result.outcome, VerbStore::Outcome::MasterMissing);
        QVERIFY(result.error.contains(QStringLiteral("verbs.db")));
    }

    void garbageWorkingCopyIsMovedAsideAndReplaced()
    {
        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master).copied);
        // Twice in a row, within the same second: each damaged copy is kept.
        for (int round = 1; round <= 2; ++round) {
            QFile file(working());
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(QByteArray(8192, 'x'));
            file.close();

            const auto result = VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master);
            QCOMPARE(result.outcome, VerbStore::Outcome::Ready);
            QVERIFY(result.copied);
            QVERIFY(VerbStore::isHealthy(working()));
            QCOMPARE(QDir(m_docs).entryList({QStringLiteral("verbs.db.corrupt-*")}).size(), round);
        }
    }

    void damagedCopyStillGivesUpTheRowsItCanRead()
    {
        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master).copied);
        // Readable favourites and history, but the verb data is gone.
        QVERIFY(test::runSql(working(), QStringLiteral(
                "INSERT INTO favourite(verbid) VALUES (5); INSERT INTO history(verbid, timestamp) VALUES (2, 10.9);"
                "DROP TABLE verb;")));
        QVERIFY(!VerbStore::isHealthy(working()));

        QVERIFY(VerbStore::prepare(*m_settings, QStringLiteral("1.0"), m_docs, m_master).copied);
        QCOMPARE(column("SELECT verbid FROM favourite"), QStringList{"5"});
        QCOMPARE(column("SELECT timestamp FROM history"), QStringList{"10.0"});
    }

    void carryOverFailures()
    {
        const QString old = m_dir->filePath(QStringLiteral("old.db"));
        QVERIFY(test::createFixtureDatabase(old, QStringLiteral("INSERT INTO favourite(verbid) VALUES (1), (2); DROP TABLE history;")));
        const CarryOver carryOver = VerbStore::readCarryOver(old);
        QCOMPARE(carryOver.favourites, (QList<int>{1, 2}));
        QVERIFY(carryOver.history.isEmpty());
        QFile log(CrashLog::logFilePath());
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("An error occurred when reading migration settings: no such table: history (1)"));

        // The first failed insert ends the carry-over.
        const QString target = m_dir->filePath(QStringLiteral("target.db"));
        QVERIFY(test::createFixtureDatabase(target, QStringLiteral(
                "CREATE TRIGGER refuse BEFORE INSERT ON favourite WHEN NEW.verbid = 2 "
                "BEGIN SELECT RAISE(ABORT, 'refused'); END;")));
        DatabaseQueue queue(target);
        CarryOver refused;
        refused.favourites = {1, 2, 3};
        refused.history = {{1, 100}};
        VerbStore::insertCarryOver(queue, refused);
        QCOMPARE(test::querySingleColumn(target, "SELECT verbid FROM favourite"), QStringList{"1"});
        QCOMPARE(test::querySingleColumn(target, "SELECT count(*) FROM history"), QStringList{"0"});
    }

private:
    QString working() const { return VerbStore::workingCopyPath(m_docs); }
    QStringList column(const QString &sql) const { return test::querySingleColumn(working(), sql); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
    QString m_master, m_docs;
};

QTEST_GUILESS_MAIN(VerbStoreTest)
#include "tst_verbstore.moc"
