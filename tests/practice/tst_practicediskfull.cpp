// The disk fills while a practice answer is being stored: the answer is
// refused with a logged reason and a message, the card stays on screen, the
// learner's favourites, history and earlier practice rows are all still
// there, and the real app starts on that disk.
//
// The answer goes through the drill's own path (PracticeController) on the
// working copy the real binary built. The tmpfs needs a mount namespace, so
// the suite runs itself again inside `unshare -rm` for that part.
#include "AppSandbox.h"
#include "DatabaseQueue.h"
#include "PracticeController.h"
#include "PracticeTables.h"
#include "Strings.h"
#include "TestSupport.h"
#include "UserRows.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <cstdio>

using namespace norvella;

namespace {
const char *const ChildVariable = "NORVELLA_ANSWER_ON_FULL_DISK";

// Writes a file next to the copy until the disk takes no more.
bool fillDisk(const QString &path)
{
    QFile filler(path);
    if (!filler.open(QIODevice::WriteOnly))
        return false;
    const QByteArray block(64 * 1024, 'x');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
    filler.close();
    QFile probe(path + QStringLiteral(".probe"));
    return !probe.open(QIODevice::WriteOnly) || probe.write(block) < block.size() || !probe.flush();
}

// The part that runs on the tmpfs: shows a card, fills the disk, answers it.
// Exit 0 when the answer was refused the way the learner should see it.
int answerOnFullDisk(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QString working = qEnvironmentVariable(ChildVariable);
    auto fail = [](const char *why) {
        std::fprintf(stderr, "child: %s\n", why);
        return 1;
    };
    PracticeController drill;
    drill.setQueue(std::make_shared<DatabaseQueue>(working));
    drill.start();
    if (!drill.hasCard())
        return fail("no card to answer");
    const int remaining = drill.remaining();
    if (!fillDisk(QFileInfo(working).dir().filePath(QStringLiteral("filler"))))
        return fail("the disk did not fill");
    drill.submit(QStringLiteral("sbagliato"));
    drill.rate(1);
    if (drill.message() != Strings::text(QStringLiteral("practice.save.failed")))
        return fail("no message said the answer was not saved");
    if (!drill.hasCard() || drill.remaining() != remaining)
        return fail("the card was not kept to answer again");
    // Answering again on the same full disk is refused the same way.
    drill.rate(2);
    if (drill.remaining() != remaining)
        return fail("a second answer moved on");
    std::fprintf(stderr, "child: answer refused, card kept\n");
    return 0;
}
} // namespace

class PracticeDiskFullTest : public QObject
{
    Q_OBJECT

private slots:
    void answerOnAFullDisk()
    {
        if (QProcess::execute(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("true")}) != 0)
            QSKIP("no user and mount namespaces here for a small tmpfs (unshare -rm)");
        test::AppSandbox app(QStringLiteral(NORVELLA_BINARY));
        QVERIFY(app.isReady());
        // The copy the app makes for itself, then a learner's rows in it.
        const test::AppSandbox::Run first = app.launch();
        QVERIFY2(first.exitCode == 0, first.err.constData());
        QVERIFY(test::runSql(app.working(), PracticeTables::createStatements().join(QStringLiteral(";\n"))));
        QVERIFY(test::runSql(app.working(), QStringLiteral(
                "INSERT INTO favourite(verbid) SELECT _id FROM verb WHERE italian IN ('essere', 'avere', 'andare');"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20) "
                "INSERT INTO history(verbid, timestamp) SELECT i * 7, 780000000 + i * 60 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 30) "
                "INSERT INTO practice_card(verbid, tense, person, repetitions, interval, easiness, due, lapses) "
                "SELECT i * 5, 6, i % 6 + 1, 2, 6, 2.5, 2400000, 0 FROM n;"
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60) "
                "INSERT INTO practice_review(cardid, time, quality, result) "
                "SELECT i % 30 + 1, 1700000000 + i * 97, i % 6, i % 3 FROM n;")));
        const QStringList rows{test::UserRows::Favourites, test::UserRows::History, test::UserRows::PracticeCards,
                               test::UserRows::PracticeReviews};
        QStringList before;
        for (const QString &sql : rows)
            before << test::querySingleColumn(app.working(), sql).value(0);
        QVERIFY(!before.contains(QString()));

        const QString seed = app.filePath(QStringLiteral("seed"));
        const QString after = app.filePath(QStringLiteral("after"));
        QVERIFY(QDir().rename(app.docs(), seed));
        QVERIFY(QDir().mkpath(app.docs()));
        const qint64 room = QFileInfo(seed + QStringLiteral("/verbs.db")).size() + 2 * 1024 * 1024;
        // The mount lives and dies with the namespace, so what is left on it is copied out.
        const QString script = QStringLiteral(
                "mount -t tmpfs -o size=%1 tmpfs \"$DOCS\" || exit 77; cp -a \"$SEED\"/. \"$DOCS\"/ || exit 78; "
                "\"$SELF\" || exit 79; \"$APP\" --first-frame; status=$?; rm -f \"$DOCS\"/filler*; "
                "mkdir -p \"$AFTER\" && cp -a \"$DOCS\"/. \"$AFTER\"/; exit $status")
                                       .arg(room);
        const test::AppSandbox::Run run = app.inMountNamespace(
                script, {{"DOCS", app.docs()}, {"SEED", seed}, {"AFTER", after}, {"APP", app.binary()},
                         {"SELF", QCoreApplication::applicationFilePath()}, {ChildVariable, app.working()}});
        const QByteArray &err = run.err;
        if (run.exitCode == 77)
            QSKIP("no tmpfs can be mounted here");
        QVERIFY2(run.exitCode == 0, err.constData());
        QVERIFY2(err.contains("child: answer refused, card kept"), err.constData());
        QVERIFY2(err.contains("An error occurred when saving practice progress: database or disk is full"),
                 err.constData());

        const QString kept = after + QStringLiteral("/verbs.db");
        for (qsizetype i = 0; i < rows.size(); ++i)
            QCOMPARE(test::querySingleColumn(kept, rows[i]).value(0), before[i]);
        QCOMPARE(test::querySingleColumn(kept, "PRAGMA integrity_check"), QStringList{"ok"});
    }
};

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(ChildVariable))
        return answerOnFullDisk(argc, argv);
    QCoreApplication app(argc, argv);
    PracticeDiskFullTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_practicediskfull.moc"
