#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "TestSupport.h"

#include <sqlite3.h>

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

    // All or nothing, and the reason kept is the first failure's, also when SQLite has
    // already ended the transaction by itself, as it does when the database is full.
    void transactionsKeepTheFirstError()
    {
        DatabaseQueue queue(m_path);
        queue.inDatabase([&](Database &db) {
            const QString insert = QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)");
            QVERIFY(!db.inTransaction([&] {
                return db.executeUpdate(insert, {40}) && db.executeUpdate(QStringLiteral("INSERT INTO nowhere VALUES(1)"));
            }));
            QCOMPARE(db.lastErrorMessage(), QStringLiteral("no such table: nowhere"));

            auto pages = db.executeQuery(QStringLiteral("PRAGMA page_count"));
            QVERIFY(pages && pages->next());
            const int used = pages->intForColumn(QStringLiteral("page_count"));
            pages->close();
            QVERIFY(db.executeUpdate(QStringLiteral("PRAGMA max_page_count = %1").arg(used)));
            QVERIFY(!db.inTransaction([&] {
                for (int i = 0; i < 100; ++i) {
                    if (!db.executeUpdate(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES(?, ?)"),
                                          {QString(2000, u'x'), i}))
                        return false;
                }
                return true;
            }));
            QCOMPARE(db.lastErrorCode(), SQLITE_FULL);
            QCOMPARE(db.lastErrorMessage(), QStringLiteral("database or disk is full"));
            QVERIFY(sqlite3_get_autocommit(db.handle()));

            QVERIFY(db.executeUpdate(QStringLiteral("PRAGMA max_page_count = 1000000")));
            QVERIFY(db.inTransaction([&] { return db.executeUpdate(insert, {41}); }));
        });
        QCOMPARE(test::querySingleColumn(m_path, QStringLiteral("SELECT verbid FROM favourite WHERE verbid >= 40")),
                 QStringList{"41"});
        QCOMPARE(test::querySingleColumn(m_path, QStringLiteral("SELECT count(*) FROM history WHERE length(verbid) > 100")),
                 QStringList{"0"});
    }

    // Marking stores a verb once however often it is asked (an old double stays as it is),
    // unmarking takes every row; the flag given back is what the table holds, also after a failure.
    void favouriteWritesStoreAVerbOnce()
    {
        QVERIFY(test::runSql(m_path, QStringLiteral("INSERT INTO favourite(verbid) VALUES (50), (50);"
                                                    "CREATE TRIGGER refuse BEFORE INSERT ON favourite WHEN NEW.verbid = 52 "
                                                    "BEGIN SELECT RAISE(ABORT, 'refused'); END;")));
        const QString rows = QStringLiteral("SELECT verbid FROM favourite WHERE verbid >= 50 ORDER BY verbid");
        DatabaseQueue queue(m_path);
        queue.inDatabase([&](Database &db) {
            bool flag = false;
            QVERIFY(writeFavourite(db, 51, true, flag) && flag);
            QVERIFY(writeFavourite(db, 51, true, flag) && flag);
            QVERIFY(writeFavourite(db, 50, true, flag) && flag);
            QCOMPARE(test::querySingleColumn(m_path, rows), (QStringList{"50", "50", "51"}));
            QVERIFY(writeFavourite(db, 50, false, flag) && !flag);
            QVERIFY(writeFavourite(db, 50, false, flag) && !flag);
            QCOMPARE(test::querySingleColumn(m_path, rows), QStringList{"51"});

            flag = true;
            QVERIFY(!writeFavourite(db, 52, true, flag));
            QVERIFY(!flag);
            QCOMPARE(db.lastErrorMessage(), QStringLiteral("refused"));
            QVERIFY(sqlite3_get_autocommit(db.handle()));
        });
        QCOMPARE(test::querySingleColumn(m_path, rows), QStringList{"51"});
    }

private:
    QTemporaryDir m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(DatabaseTest)
#include "tst_database.moc"
