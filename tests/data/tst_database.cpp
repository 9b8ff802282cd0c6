#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

class DatabaseTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(test::createFixtureDatabase(m_path));
    }

    void typedReadsByColumnName()
    {
        DatabaseQueue queue(m_path);
        const QString odd = QStringLiteral("l'\"ora\" 😀 %_");
        queue.inDatabase([&](Database &db) {
            auto rs = db.executeQuery(QStringLiteral("SELECT _id, italian AS Name, english, voice_available, 0.75 AS ratio, "
                                                     "? AS odd FROM verb WHERE _id IN (?, ?) ORDER BY _id"),
                                      {odd, 1, 4});
            QVERIFY(rs);
            QVERIFY(rs->next());
            QCOMPARE(rs->intForColumn(QStringLiteral("_id")), 1);
            // Column names match without regard to case, as the screens expect.
            QCOMPARE(rs->stringForColumn(QStringLiteral("name")), QStringLiteral("andare"));
            QCOMPARE(rs->doubleForColumn(QStringLiteral("ratio")), 0.75);
            QCOMPARE(rs->boolForColumn(QStringLiteral("voice_available")), false);
            QCOMPARE(rs->stringForColumn(QStringLiteral("odd")), odd);
            QVERIFY(rs->next());
            QVERIFY(rs->stringForColumn(QStringLiteral("english")).isNull() && rs->columnIsNull(QStringLiteral("english")));
            QCOMPARE(rs->intForColumn(QStringLiteral("no_such_column")), 0);
            QVERIFY(!rs->next());
            // Running out of rows is not a failure, and the query does not start over.
            QVERIFY(!rs->failed());
            QVERIFY(!rs->next());
        });
    }

    void failuresReportMessageAndCodeEvenWhenStepping()
    {
        DatabaseQueue queue(m_path);
        queue.inDatabase([](Database &db) {
            QVERIFY(!db.executeQuery(QStringLiteral("SELECT * FROM nowhere")));
            QVERIFY(db.lastErrorMessage().contains(QStringLiteral("no such table")));
            QCOMPARE(db.lastErrorCode(), 1);
            // A wrong number of values is an error, not a silent NULL.
            QVERIFY(!db.executeUpdate(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {}));
            QVERIFY(!db.executeUpdate(QStringLiteral("INSERT INTO nowhere VALUES(1)")));

            // The statement prepares; only its first step finds the pattern over SQLite's length limit.
            auto rs = db.executeQuery(QStringLiteral("SELECT italian FROM verb WHERE italian LIKE ?"),
                                      {QString(50001, u'%')});
            QVERIFY(rs);
            QVERIFY(!rs->next());
            QVERIFY(rs->failed());
            QCOMPARE(rs->errorCode(), 1);
            QVERIFY2(rs->errorMessage().contains(QStringLiteral("LIKE or GLOB pattern too complex")),
                     qPrintable(rs->errorMessage()));
            QCOMPARE(db.lastErrorMessage(), rs->errorMessage());
        });
    }

    void closedConnectionReopensOnNextTurn()
    {
        DatabaseQueue queue(m_path);
        queue.inDatabase([](Database &db) {
            QVERIFY(db.executeUpdate(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {3}));
            db.close();
        });
        queue.inDatabase([](Database &db) {
            QVERIFY(db.isOpen());
            auto rs = db.executeQuery(QStringLiteral("SELECT count(*) AS n FROM favourite WHERE verbid = ?"), {3});
            QVERIFY(rs && rs->next());
            QCOMPARE(rs->intForColumn(QStringLiteral("n")), 1);
        });

        // A missing file is not created empty.
        const QString missing = m_dir.filePath(QStringLiteral("absent.db"));
        DatabaseQueue absent(missing);
        QVERIFY(!absent.isUsable());
        absent.inDatabase([](Database &db) { QVERIFY(!db.executeQuery(QStringLiteral("SELECT 1"))); });
        QVERIFY(!QFile::exists(missing));
    }

private:
    QTemporaryDir m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(DatabaseTest)
#include "tst_database.moc"
