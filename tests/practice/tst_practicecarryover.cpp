// The learner's practice rows go through an update of the working copy like
// favourites and history (tst_crashsafety kills such an update at every step);
// a damaged practice table costs only its unreadable rows.
#include "AppSandbox.h"
#include "PracticeTables.h"
#include "Settings.h"
#include "TestSupport.h"
#include "UserRows.h"
#include "WorkingCopy.h"

#include <QDir>
#include <QtTest>

using namespace norvella;

namespace {
constexpr int Cards = 2000;
constexpr int Reviews = 3000;
const QString OldVersion = QStringLiteral("0.9.0");

using namespace norvella::test::UserRows;
} // namespace

class PracticeCarryOverTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_app.reset(new test::AppSandbox(QStringLiteral(NORVELLA_BINARY)));
        QVERIFY(m_app->isReady());
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
        const QString target = m_app->filePath(QStringLiteral("new.db"));
        QString error;
        QVERIFY2(WorkingCopy::build(QStringLiteral(NORVELLA_MASTER), target, carryOver, 42, &error), qPrintable(error));
        QCOMPARE(WorkingCopy::readUserRows(target), carryOver);
        QCOMPARE(test::querySingleColumn(target, "SELECT value FROM practice_meta"),
                 QStringList{QString::number(PracticeTables::SchemaVersion)});

        // A copy that never practised gets no practice tables from an update.
        const QString plain = m_app->filePath(QStringLiteral("plain.db"));
        QVERIFY(WorkingCopy::build(QStringLiteral(NORVELLA_MASTER), plain, CarryOver{}, 42, &error));
        QVERIFY(!WorkingCopy::readUserRows(plain).practice.present);
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

        const test::AppSandbox::Run run = m_app->launch();
        const QByteArray err = run.err;
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(err.contains("The practice table practice_card of"), err.constData());
        QCOMPARE(test::querySingleColumn(working(), Favourites), QStringList{m_favourites});
        QCOMPARE(test::querySingleColumn(working(), History), QStringList{m_history});
        QCOMPARE(test::querySingleColumn(working(), PracticeReviews), QStringList{m_reviews});
        const int kept = test::querySingleColumn(working(), "SELECT count(*) FROM practice_card").value(0).toInt();
        QVERIFY2(kept > Cards / 2 && kept < Cards, qPrintable(QString::number(kept)));
        QCOMPARE(test::querySingleColumn(working(), "PRAGMA integrity_check"), QStringList{"ok"});
    }

private:
    // A copy of the given version with favourites, history and practice rows.
    void makeInstall(const QString &version)
    {
        m_app->removeWorkingFiles();
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
        Settings settings(m_app->settingsPath());
        settings.clear();
        settings.setString(SettingsKeys::InstalledVersion, version);
        m_favourites = test::querySingleColumn(working(), Favourites).value(0);
        m_history = test::querySingleColumn(working(), History).value(0);
        m_cards = test::querySingleColumn(working(), PracticeCards).value(0);
        m_reviews = test::querySingleColumn(working(), PracticeReviews).value(0);
        QCOMPARE(m_cards.count(QLatin1Char(';')), Cards - 1);
    }

    QString working() const { return m_app->working(); }

    std::unique_ptr<test::AppSandbox> m_app;
    QString m_favourites, m_history, m_cards, m_reviews;
};

QTEST_GUILESS_MAIN(PracticeCarryOverTest)
#include "tst_practicecarryover.moc"
