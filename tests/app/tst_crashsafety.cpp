// The real app, killed and starved during an update of its database: every
// favourite, history and practice row survives, whatever instant the kill lands on.
// NORVELLA_RANDOM_KILLS=N runs N sampled kills instead of the default.
#include "AppSandbox.h"
#include "PracticeTables.h"
#include "Settings.h"
#include "TestSupport.h"
#include "UserRows.h"
#include "WorkingCopy.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

using namespace norvella;

namespace {
constexpr int Favourites = 500;
constexpr int HistoryRows = 51;
constexpr int DefaultRandomKills = 44;
constexpr int Cards = 2000;
constexpr int Reviews = 3000;
const QString OldVersion = QStringLiteral("0.9.0");
} // namespace

class CrashSafetyTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_app.reset(new test::AppSandbox(QStringLiteral(NORVELLA_BINARY)));
        QVERIFY(m_app->isReady());
        m_docs = m_app->docs();
        m_practised = false;
        makeOldInstall();
    }

    // Every step of an update, one kill each, then a normal launch: a copy that never
    // practised, and one whose practice rows the update carries over too.
    void killAtEveryStepOfAnUpdate_data()
    {
        QTest::addColumn<bool>("practised");
        QTest::newRow("favourites and history") << false;
        QTest::newRow("and practice rows") << true;
    }
    void killAtEveryStepOfAnUpdate()
    {
        QFETCH(bool, practised);
        m_practised = practised;
        int step = 1;
        for (;; ++step) {
            QVERIFY(step < 50);
            makeOldInstall();
            const Run run = m_app->launchKilledAtStep(step);
            if (!run.killed) {
                QCOMPARE(run.exitCode, 0);
                break;
            }
            QVERIFY2(run.err.contains("killed at step"), run.err.constData());
            relaunchAndCheckEverythingKept(QStringLiteral("step %1").arg(step));
            if (QTest::currentTestFailed())
                return;
        }
        // The update has steps to kill at: the hook is not silently off.
        QVERIFY(step > 5);
    }

    // Kills at sampled instants of the update, inside SQLite's own writes too.
    void killAtRandomMoments()
    {
        const int samples = qEnvironmentVariableIntValue("NORVELLA_RANDOM_KILLS") > 0
                ? qEnvironmentVariableIntValue("NORVELLA_RANDOM_KILLS")
                : DefaultRandomKills;
        makeOldInstall();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(m_app->launch().exitCode, 0);
        const qint64 updateMs = timer.elapsed();
        QRandomGenerator random(20261124);
        int killedBeforeTheEnd = 0;
        for (int i = 0; i < samples; ++i) {
            makeOldInstall();
            const Run run = m_app->launch({}, int(random.bounded(updateMs + 1)));
            killedBeforeTheEnd += run.killed ? 1 : 0;
            relaunchAndCheckEverythingKept(QStringLiteral("sample %1").arg(i));
            if (QTest::currentTestFailed())
                return;
        }
        qInfo("%d of %d sampled kills landed before the update finished (update %lld ms)", killedBeforeTheEnd,
              samples, updateMs);
        QVERIFY(killedBeforeTheEnd > samples / 2);
    }

    void twoInstancesUpdatingAtOnce()
    {
        QProcess first, second;
        for (QProcess *process : {&first, &second}) {
            process->setProcessEnvironment(m_app->environment());
            process->start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
        }
        for (QProcess *process : {&first, &second}) {
            QVERIFY(process->waitForFinished(60000));
            QCOMPARE(process->exitCode(), 0);
        }
        checkEverythingKept(QStringLiteral("two instances"));
    }

    // A disk with no room for the new copy: the old one stays as it was, no
    // half copy is left, and with room again the update goes through.
    void diskFullDuringUpdate()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("unshare")).isEmpty())
            QSKIP("unshare is not available");
        const QString seed = m_app->filePath(QStringLiteral("seed"));
        QVERIFY(QDir().rename(m_docs, seed));
        QVERIFY(QDir().mkpath(m_docs));
        const qint64 room = QFileInfo(seed + QStringLiteral("/verbs.db")).size() + 4 * 1024 * 1024;
        const QString after = m_app->filePath(QStringLiteral("after"));
        const QString script = QStringLiteral(
                "mount -t tmpfs -o size=%1 tmpfs \"$DOCS\" || exit 77; cp -a \"$SEED\"/. \"$DOCS\"/ || exit 78; "
                "\"$APP\" --first-frame; status=$?; mkdir -p \"$AFTER\" && cp -a \"$DOCS\"/. \"$AFTER\"/; exit $status")
                                       .arg(room);
        const Run run = m_app->inMountNamespace(
                script, {{"DOCS", m_docs}, {"SEED", seed}, {"AFTER", after}, {"APP", m_app->binary()}}, 60000);
        const QByteArray &err = run.err;
        if (run.exitCode == 77)
            QSKIP("no tmpfs can be mounted here");
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(err.contains("Unable to initialise database"), err.constData());
        QCOMPARE(test::readFile(after + QStringLiteral("/verbs.db")), test::readFile(seed + QStringLiteral("/verbs.db")));
        QCOMPARE(QDir(after).entryList({QStringLiteral("verbs.db.new*")}), QStringList());
        QCOMPARE(Settings(settingsPath()).stringForKey(SettingsKeys::InstalledVersion), OldVersion);

        QVERIFY(QDir(m_docs).removeRecursively());
        QVERIFY(QDir().rename(after, m_docs));
        relaunchAndCheckEverythingKept(QStringLiteral("after the disk had room again"));
    }

    void damagedCopyIsRepairedAndTheUserTold()
    {
        QFile file(working());
        QVERIFY(file.open(QIODevice::ReadWrite));
        // The first page of the forms: the file still opens, reading it fails.
        const int page = test::querySingleColumn(working(), "SELECT pageno FROM dbstat WHERE name = 'conjugation' "
                                                            "AND pagetype = 'leaf' LIMIT 1").value(0).toInt();
        QVERIFY(page > 1);
        file.seek(qint64(page - 1) * 8192);
        file.write(QByteArray(8192, '\x5A'));
        file.close();
        QVERIFY(test::runSql(working(), QStringLiteral("PRAGMA user_version = %1")
                                               .arg(WorkingCopy::encodeVersion(QStringLiteral(NORVELLA_APP_VERSION)))));
        Settings(settingsPath()).setString(SettingsKeys::InstalledVersion, QStringLiteral(NORVELLA_APP_VERSION));
        // A launch does not read every page; the check that runs after it
        // finds the damage while the app is in use.
        QProcess session;
        session.setProcessEnvironment(m_app->environment());
        session.start(QStringLiteral(NORVELLA_BINARY), {});
        QVERIFY(session.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(working() + QStringLiteral(".damaged")), 20000);
        session.kill();
        session.waitForFinished(10000);
        QVERIFY(session.readAllStandardError().contains("it will be repaired at the next start"));

        const Run run = m_app->launch();
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.err.contains("repaired: kept 500 favourites and 51 history entries"), run.err.constData());
        checkEverythingKept(QStringLiteral("repair"));
        QCOMPARE(QDir(m_docs).entryList({QStringLiteral("verbs.db.corrupt-*")}).size(), 1);
    }

    // Settings that cannot be kept (a config folder that is a file, or one
    // moved aside) do not make every launch replace the database.
    void lostSettingsDoNotReplaceTheDatabase()
    {
        relaunchAndCheckEverythingKept(QStringLiteral("update"));
        const QDateTime replaced = QFileInfo(working()).lastModified();
        QVERIFY(QFile::remove(settingsPath()));
        QProcessEnvironment env = m_app->environment();
        const QString blocked = m_app->filePath(QStringLiteral("not-a-folder"));
        QVERIFY(QFile(blocked).open(QIODevice::WriteOnly));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), blocked);
        for (int launchNumber = 0; launchNumber < 2; ++launchNumber) {
            QProcess process;
            process.setProcessEnvironment(env);
            process.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
            QVERIFY(process.waitForFinished(30000));
            QCOMPARE(process.exitCode(), 0);
        }
        QCOMPARE(QFileInfo(working()).lastModified(), replaced);
        QCOMPARE(test::querySingleColumn(working(), "SELECT count(*) FROM favourite"), QStringList{"500"});
    }

    // No place for the data: one clear message, nothing written anywhere.
    void noHomeOrAPathTooLong()
    {
        QProcessEnvironment env = m_app->environment();
        for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            env.remove(QString::fromLatin1(name));
        const bool rootDataExisted = QFileInfo::exists(QStringLiteral("/.local/share/Norvella"));
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("HOME is not set"));
        QCOMPARE(QFileInfo::exists(QStringLiteral("/.local/share/Norvella")), rootDataExisted);

        QString deep = m_app->filePath(QStringLiteral("deep"));
        while (deep.size() < 600)
            deep += QLatin1Char('/') + QString(60, QLatin1Char('x'));
        env = m_app->environment();
        env.insert(QStringLiteral("XDG_DATA_HOME"), deep);
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.readAllStandardError().contains("too long for SQLite"));
        QCOMPARE(QDir(deep + QStringLiteral("/Norvella/norvella")).entryList({QStringLiteral("verbs.db*")}),
                 QStringList());
    }

private:
    using Run = test::AppSandbox::Run;

    void relaunchAndCheckEverythingKept(const QString &when)
    {
        const Run run = m_app->launch();
        QVERIFY2(!run.killed && run.exitCode == 0, qPrintable(when + QLatin1String(": ") + QString::fromUtf8(run.err)));
        checkEverythingKept(when);
    }

    void checkEverythingKept(const QString &when)
    {
        const QString context = when + QStringLiteral(": ");
        QCOMPARE(test::querySingleColumn(working(), test::UserRows::Favourites), QStringList{m_expectedFavourites});
        QCOMPARE(test::querySingleColumn(working(), test::UserRows::History), QStringList{m_expectedHistory});
        if (m_practised) {
            QCOMPARE(test::querySingleColumn(working(), test::UserRows::PracticeCards), QStringList{m_expectedCards});
            QCOMPARE(test::querySingleColumn(working(), test::UserRows::PracticeReviews), QStringList{m_expectedReviews});
        }
        QVERIFY2(Settings(settingsPath()).stringForKey(SettingsKeys::InstalledVersion)
                         == QLatin1String(NORVELLA_APP_VERSION),
                 qPrintable(context + QStringLiteral("version not stored")));
        QCOMPARE(test::querySingleColumn(working(), "PRAGMA user_version"),
                 QStringList{QString::number(WorkingCopy::encodeVersion(QStringLiteral(NORVELLA_APP_VERSION)))});
        QVERIFY2(QDir(m_docs).entryList({QStringLiteral("verbs.db.new*")}).isEmpty(),
                 qPrintable(context + QStringLiteral("a half-built copy was left behind")));
    }

    // The state an older version leaves: its copy with the user's rows, its
    // version in the settings and in the file.
    void makeOldInstall()
    {
        m_app->removeWorkingFiles();
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER), working()));
        QFile::setPermissions(working(), QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(test::runSql(working(), QStringLiteral(
                "PRAGMA user_version = %1;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) "
                "INSERT INTO favourite(verbid) SELECT (i * 37) % 6000 + 1 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %3) "
                "INSERT INTO history(verbid, timestamp) SELECT i * 11, 780000000 + i * 60 FROM n;")
                                                .arg(WorkingCopy::encodeVersion(OldVersion))
                                                .arg(Favourites)
                                                .arg(HistoryRows)));
        if (m_practised) {
            QVERIFY(test::runSql(working(), PracticeTables::createStatements().join(QStringLiteral(";\n"))));
            QVERIFY(test::runSql(working(), QStringLiteral(
                    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                    "INSERT INTO practice_card(verbid, tense, person, repetitions, interval, easiness, due, lapses) "
                    "SELECT i / 6 + 1, 6 + i % 3, i % 6 + 1, i % 5, i % 40, 1.3 + i % 13 * 0.1, 2461000 + i % 17, i % 3 FROM n;"
                    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) "
                    "INSERT INTO practice_review(cardid, time, quality, result) "
                    "SELECT i % %1 + 1, 1790000000 + i * 97, i % 6, i % 3 FROM n;")
                                                    .arg(Cards)
                                                    .arg(Reviews)));
            m_expectedCards = test::querySingleColumn(working(), test::UserRows::PracticeCards).value(0);
            m_expectedReviews = test::querySingleColumn(working(), test::UserRows::PracticeReviews).value(0);
            QCOMPARE(m_expectedCards.count(QLatin1Char(';')), Cards - 1);
        }
        Settings settings(settingsPath());
        settings.clear();
        settings.setString(SettingsKeys::InstalledVersion, OldVersion);
        settings.setBool(SettingsKeys::IncludeEnglish, true);
        if (m_expectedFavourites.isEmpty()) {
            m_expectedFavourites = test::querySingleColumn(working(), test::UserRows::Favourites).value(0);
            m_expectedHistory = test::querySingleColumn(working(), test::UserRows::History).value(0);
            QCOMPARE(m_expectedFavourites.count(QLatin1Char(',')), Favourites - 1);
        }
    }

    QString working() const { return m_app->working(); }
    QString settingsPath() const { return m_app->settingsPath(); }

    std::unique_ptr<test::AppSandbox> m_app;
    QString m_docs, m_expectedFavourites, m_expectedHistory, m_expectedCards, m_expectedReviews;
    bool m_practised = false;
};

QTEST_GUILESS_MAIN(CrashSafetyTest)
#include "tst_crashsafety.moc"
