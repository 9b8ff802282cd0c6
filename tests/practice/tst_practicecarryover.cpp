// The learner's practice rows go through an update of the working copy like
// favourites and history: killed at any step of it, they are all there after
// the next launch; a damaged practice table costs only its unreadable rows.
#include "PracticeTables.h"
#include "Settings.h"
#include "TestSupport.h"
#include "WorkingCopy.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {
constexpr int Cards = 2000;
constexpr int Reviews = 3000;
const QString OldVersion = QStringLiteral("0.9.0");

const char *const CardRows = "SELECT group_concat(row, ';') FROM (SELECT _id || ',' || verbid || ',' || tense || ',' || "
                             "person || ',' || repetitions || ',' || interval || ',' || easiness || ',' || due || ',' "
                             "|| lapses AS row FROM practice_card NOT INDEXED ORDER BY _id)";
const char *const ReviewRows = "SELECT group_concat(row, ';') FROM (SELECT _id || ',' || cardid || ',' || time || ',' || "
                               "quality || ',' || result AS row FROM practice_review NOT INDEXED ORDER BY _id)";
const char *const FavouriteRows = "SELECT group_concat(verbid) FROM (SELECT verbid FROM favourite NOT INDEXED ORDER BY _id)";
const char *const HistoryRows = "SELECT group_concat(verbid || ':' || timestamp) FROM (SELECT verbid, timestamp FROM "
                                "history NOT INDEXED ORDER BY _id)";
} // namespace

class PracticeCarryOverTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        m_docs = m_dir->filePath(QStringLiteral("data/Norvella/norvella"));
        QVERIFY(QDir().mkpath(m_docs));
        QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("config/Norvella/norvella"))));
        QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("run"))));
        QFile::setPermissions(m_dir->filePath(QStringLiteral("run")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    // Read out of one copy and built into the next, without the app.
    void rowsReadAndWrittenByTheUpdateSteps()
    {
        makeInstall(OldVersion);
        const CarryOver carryOver = WorkingCopy::readUserRows(working());
        QVERIFY(carryOver.practice.present);
        QCOMPARE(carryOver.practice.cards.size(), Cards);
        QCOMPARE(carryOver.practice.reviews.size(), Reviews);
        QCOMPARE(carryOver.practice.cards.at(6).easiness, 1.3 + 7 % 13 * 0.1);
        const QString target = m_dir->filePath(QStringLiteral("new.db"));
        QString error;
        QVERIFY2(WorkingCopy::build(QStringLiteral(NORVELLA_MASTER), target, carryOver, 42, &error), qPrintable(error));
        QCOMPARE(WorkingCopy::readUserRows(target), carryOver);
        QCOMPARE(test::querySingleColumn(target, "SELECT value FROM practice_meta"),
                 QStringList{QString::number(PracticeTables::SchemaVersion)});

        // A copy that never practised gets no practice tables from an update.
        const QString plain = m_dir->filePath(QStringLiteral("plain.db"));
        QVERIFY(WorkingCopy::build(QStringLiteral(NORVELLA_MASTER), plain, CarryOver{}, 42, &error));
        QVERIFY(!WorkingCopy::readUserRows(plain).practice.present);
    }

    void killAtEveryStepOfAnUpdate()
    {
        int step = 1;
        for (;; ++step) {
            QVERIFY(step < 50);
            makeInstall(OldVersion);
            QProcess process;
            QProcessEnvironment env = environment();
            env.insert(QStringLiteral("NORVELLA_KILL_AT"), QString::number(step));
            const int exitCode = run(env);
            if (exitCode == 0)
                break;
            QCOMPARE(exitCode, -1);
            QCOMPARE(run(environment()), 0);
            checkEverythingKept(QStringLiteral("step %1").arg(step));
            if (QTest::currentTestFailed())
                return;
        }
        QVERIFY(step > 5);
        checkEverythingKept(QStringLiteral("uninterrupted"));
    }

    // Garbage over a page of the cards: the next launch rebuilds the copy,
    // keeps every favourite, history entry and review, and the cards it can read.
    void damagedPracticeTable()
    {
        makeInstall(QStringLiteral(NORVELLA_APP_VERSION));
        const int page = test::querySingleColumn(working(), "SELECT pageno FROM dbstat WHERE name = 'practice_card' "
                                                            "AND pagetype = 'leaf' LIMIT 1 OFFSET 2").value(0).toInt();
        const int pageSize = test::querySingleColumn(working(), "PRAGMA page_size").value(0).toInt();
        QVERIFY(page > 1);
        QFile file(working());
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.seek(qint64(page - 1) * pageSize);
        file.write(QByteArray(pageSize, '\x5A'));
        file.close();

        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
        QVERIFY(process.waitForFinished(60000));
        const QByteArray err = process.readAllStandardError();
        QCOMPARE(process.exitCode(), 0);
        QVERIFY2(err.contains("The practice table practice_card of"), err.constData());
        QCOMPARE(test::querySingleColumn(working(), FavouriteRows), QStringList{m_favourites});
        QCOMPARE(test::querySingleColumn(working(), HistoryRows), QStringList{m_history});
        QCOMPARE(test::querySingleColumn(working(), ReviewRows), QStringList{m_reviews});
        const int kept = test::querySingleColumn(working(), "SELECT count(*) FROM practice_card").value(0).toInt();
        QVERIFY2(kept > Cards / 2 && kept < Cards, qPrintable(QString::number(kept)));
        QCOMPARE(test::querySingleColumn(working(), "PRAGMA integrity_check"), QStringList{"ok"});
    }

private:
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), m_dir->filePath(QStringLiteral("home")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), m_dir->filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir->filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir->filePath(QStringLiteral("run")));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
        env.remove(QStringLiteral("NORVELLA_KILL_AT"));
        return env;
    }

    // The exit code of a launch that reaches its first frame; -1 when killed.
    int run(const QProcessEnvironment &env) const
    {
        QProcess process;
        process.setProcessEnvironment(env);
        process.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--first-frame")});
        if (!process.waitForFinished(60000))
            return -2;
        return process.exitStatus() == QProcess::CrashExit ? -1 : process.exitCode();
    }

    void checkEverythingKept(const QString &when)
    {
        const QByteArray context = when.toUtf8();
        QVERIFY2(test::querySingleColumn(working(), FavouriteRows) == QStringList{m_favourites}, context);
        QVERIFY2(test::querySingleColumn(working(), HistoryRows) == QStringList{m_history}, context);
        QVERIFY2(test::querySingleColumn(working(), CardRows) == QStringList{m_cards}, context);
        QVERIFY2(test::querySingleColumn(working(), ReviewRows) == QStringList{m_reviews}, context);
        QVERIFY2(test::querySingleColumn(working(), "PRAGMA user_version")
                         == QStringList{QString::number(WorkingCopy::encodeVersion(QStringLiteral(NORVELLA_APP_VERSION)))},
                 context);
    }

    // A copy of the given version with favourites, history and practice rows.
    void makeInstall(const QString &version)
    {
        for (const QString &name : QDir(m_docs).entryList(QDir::Files))
            QFile::remove(m_docs + QLatin1Char('/') + name);
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER), working()));
        QFile::setPermissions(working(), QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(test::runSql(working(), PracticeTables::createStatements().join(QStringLiteral(";\n"))));
        QVERIFY(test::runSql(working(), QStringLiteral(
                "PRAGMA user_version = %1;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40) "
                "INSERT INTO favourite(verbid) SELECT i * 13 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30) "
                "INSERT INTO history(verbid, timestamp) SELECT i * 7, 780000000 + i * 60 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %2) "
                "INSERT INTO practice_card(verbid, tense, person, repetitions, interval, easiness, due, lapses) "
                "SELECT i / 6 + 1, 6 + i % 3, i % 6 + 1, i % 5, i % 40, 1.3 + i % 13 * 0.1, 2461000 + i % 17, i % 3 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %3) "
                "INSERT INTO practice_review(cardid, time, quality, result) "
                "SELECT i % %2 + 1, 1790000000 + i * 97, i % 6, i % 3 FROM n;")
                                                .arg(WorkingCopy::encodeVersion(version))
                                                .arg(Cards)
                                                .arg(Reviews)));
        Settings settings(m_dir->filePath(QStringLiteral("config/Norvella/norvella/settings.json")));
        settings.clear();
        settings.setString(SettingsKeys::InstalledVersion, version);
        m_favourites = test::querySingleColumn(working(), FavouriteRows).value(0);
        m_history = test::querySingleColumn(working(), HistoryRows).value(0);
        m_cards = test::querySingleColumn(working(), CardRows).value(0);
        m_reviews = test::querySingleColumn(working(), ReviewRows).value(0);
        QCOMPARE(m_cards.count(QLatin1Char(';')), Cards - 1);
    }

    QString working() const { return m_docs + QStringLiteral("/verbs.db"); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_docs, m_favourites, m_history, m_cards, m_reviews;
};

QTEST_GUILESS_MAIN(PracticeCarryOverTest)
#include "tst_practicecarryover.moc"
