#include "WorkingCopy.h"

#include "CrashLog.h"
#include "FaultInjection.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QVersionNumber>

#include <sqlite3.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace norvella::WorkingCopy {

namespace {

// SQLite's unix file layer refuses longer names.
constexpr int SqliteMaxPathBytes = 512;
// The longest name SQLite derives from the copy's: "verbs.db.new-journal".
constexpr int LongestSuffixBytes = int(sizeof(".new-journal")) - 1;
// Bounds the row-by-row rescue past the last row a damaged table still shows.
constexpr qint64 RescueProbeMargin = 10000;

// One connection for these file-level steps, outside the app's queue: they
// run before the queue exists.
class Connection
{
public:
    explicit Connection(const QString &path)
    {
        const int rc = sqlite3_open_v2(path.toUtf8().constData(), &m_db, SQLITE_OPEN_READWRITE, nullptr);
        if (rc != SQLITE_OK) {
            setError(rc, m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : QStringLiteral("out of memory"));
            sqlite3_close_v2(m_db);
            m_db = nullptr;
        } else {
            sqlite3_busy_timeout(m_db, 5000);
        }
    }
    ~Connection() { close(); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isOpen() const { return m_db != nullptr; }
    sqlite3 *handle() const { return m_db; }
    // "message (code)", for log lines and results.
    QString error() const { return QStringLiteral("%1 (%2)").arg(m_message).arg(m_code); }
    const QString &errorMessage() const { return m_message; }
    int errorCode() const { return m_code; }
    bool close()
    {
        if (!m_db)
            return true;
        const int rc = sqlite3_close(m_db);
        if (rc != SQLITE_OK) {
            sqlite3_close_v2(m_db);
            setError(rc, QStringLiteral("close failed"));
        }
        m_db = nullptr;
        return rc == SQLITE_OK;
    }

    // Runs a statement, handing each row to `row`; false with error() set
    // when preparing or any step fails (rows before the failure were handed on).
    bool run(const QString &sql, const QList<qint64> &values = {},
             const std::function<void(sqlite3_stmt *)> &row = {})
    {
        if (!m_db)
            return false;
        sqlite3_stmt *statement = nullptr;
        const QByteArray utf8 = sql.toUtf8();
        int rc = sqlite3_prepare_v2(m_db, utf8.constData(), int(utf8.size()), &statement, nullptr);
        if (rc == SQLITE_OK) {
            for (int i = 0; i < values.size(); ++i)
                sqlite3_bind_int64(statement, i + 1, values.at(i));
            while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
                if (row)
                    row(statement);
            }
        }
        if (rc != SQLITE_DONE && rc != SQLITE_OK)
            setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
        sqlite3_finalize(statement);
        return rc == SQLITE_DONE || rc == SQLITE_OK;
    }

    std::optional<qint64> integer(const QString &sql)
    {
        std::optional<qint64> value;
        if (!run(sql, {}, [&](sqlite3_stmt *s) {
                if (!value)
                    value = sqlite3_column_int64(s, 0);
            }))
            return std::nullopt;
        return value;
    }

    QStringList texts(const QString &sql, bool *ok)
    {
        QStringList lines;
        *ok = run(sql, {}, [&](sqlite3_stmt *s) {
            lines << QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(s, 0)));
        });
        return lines;
    }

    bool hasColumn(const char *table, const char *column)
    {
        return sqlite3_table_column_metadata(m_db, nullptr, table, column, nullptr, nullptr, nullptr, nullptr,
                                             nullptr)
                == SQLITE_OK;
    }

private:
    void setError(int code, const QString &message)
    {
        m_code = code;
        m_message = message;
    }

    sqlite3 *m_db = nullptr;
    int m_code = 0;
    QString m_message;
};

void reportError(const char *fixedMessage, const Connection &db)
{
    CrashLog::log(errorReport(fixedMessage, db.errorMessage(), db.errorCode()));
}

bool syncPath(const QString &path, bool directory)
{
#ifdef Q_OS_UNIX
    const int fd = ::open(QFile::encodeName(path).constData(), directory ? (O_RDONLY | O_DIRECTORY) : O_RDONLY);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
#else
    Q_UNUSED(path);
    Q_UNUSED(directory);
    return true;
#endif
}

QString schemaProblem(Connection &db)
{
    if (!db.hasColumn("verb", "italian"))
        return QStringLiteral("no verb table");
    if (!db.hasColumn("favourite", "verbid") || !db.hasColumn("history", "timestamp"))
        return QStringLiteral("no favourite or history table");
    return {};
}

// integrity_check limited to one table also compares its indexes with its
// rows, which the whole-file quick check does not.
QStringList tableProblems(Connection &db, const QString &table, bool *ok)
{
    const QStringList lines = db.texts(QStringLiteral("PRAGMA integrity_check(%1)").arg(table), ok);
    return lines == QStringList{QStringLiteral("ok")} ? QStringList() : lines;
}

bool onlyIndexProblems(const QStringList &problems)
{
    for (const QString &line : problems) {
        if (!line.contains(QLatin1String("index")))
            return false;
    }
    return true;
}

// Rows of one table by rowid: first a plain scan that skips the indexes; if
// the scan breaks off, each rowid up to past the highest known one is asked
// for on its own, which reaches rows on pages the scan could not get past.
template<typename Row>
std::map<qint64, Row> rescueTable(Connection &db, const QString &table, const QString &columns,
                                  const std::function<Row(sqlite3_stmt *, int)> &read, bool *partial)
{
    std::map<qint64, Row> rows;
    const bool complete = db.run(QStringLiteral("SELECT _id, %1 FROM %2 NOT INDEXED").arg(columns, table), {},
                                 [&](sqlite3_stmt *s) { rows[sqlite3_column_int64(s, 0)] = read(s, 1); });
    if (complete)
        return rows;
    *partial = true;
    qint64 highest = rows.empty() ? 0 : rows.rbegin()->first;
    if (const auto max = db.integer(QStringLiteral("SELECT max(_id) FROM %1 NOT INDEXED").arg(table)))
        highest = qMax(highest, *max);
    const QString one = QStringLiteral("SELECT _id, %1 FROM %2 NOT INDEXED WHERE _id = ?").arg(columns, table);
    for (qint64 id = 1; id <= highest + RescueProbeMargin; ++id) {
        if (rows.count(id))
            continue;
        db.run(one, {id}, [&](sqlite3_stmt *s) { rows[id] = read(s, 1); });
    }
    return rows;
}

// Read after favourites and history and on their own: a damaged practice
// table loses at most its own unreadable rows.
PracticeRows readPracticeRows(Connection &db)
{
    PracticeRows rows;
    if (!db.hasColumn(PracticeTables::Cards, "verbid") || !db.hasColumn(PracticeTables::Reviews, "cardid"))
        return rows;
    rows.present = true;
    bool partial = false;
    const auto cards = rescueTable<PracticeCard>(
            db, QLatin1String(PracticeTables::Cards),
            QStringLiteral("verbid, tense, person, repetitions, interval, easiness, due, lapses"),
            [](sqlite3_stmt *s, int c) {
                return PracticeCard{0, sqlite3_column_int64(s, c), sqlite3_column_int(s, c + 1),
                                    sqlite3_column_int(s, c + 2), sqlite3_column_int(s, c + 3),
                                    sqlite3_column_int(s, c + 4), sqlite3_column_double(s, c + 5),
                                    sqlite3_column_int64(s, c + 6), sqlite3_column_int(s, c + 7)};
            },
            &partial);
    for (auto [id, card] : cards) {
        card.id = id;
        rows.cards << card;
    }
    const auto reviews = rescueTable<PracticeReview>(
            db, QLatin1String(PracticeTables::Reviews), QStringLiteral("cardid, time, quality, result"),
            [](sqlite3_stmt *s, int c) {
                return PracticeReview{0, sqlite3_column_int64(s, c), sqlite3_column_int64(s, c + 1),
                                      sqlite3_column_int(s, c + 2), sqlite3_column_int(s, c + 3)};
            },
            &partial);
    for (auto [id, review] : reviews) {
        review.id = id;
        rows.reviews << review;
    }
    if (partial)
        CrashLog::log(QStringLiteral("Some practice rows could not be read; kept %1 cards and %2 reviews")
                              .arg(rows.cards.size())
                              .arg(rows.reviews.size()));
    return rows;
}

// The ids are kept: reviews point at their cards by id.
bool writePracticeRows(Connection &db, const PracticeRows &rows)
{
    if (!rows.present)
        return true;
    for (const QString &statement : PracticeTables::createStatements()) {
        if (!db.run(statement))
            return false;
    }
    for (const PracticeCard &card : rows.cards) {
        // The easiness is a fraction; it is bound as text of its exact value
        // so the integer binding of run() does not cut it.
        if (!db.run(QStringLiteral("INSERT OR IGNORE INTO practice_card(_id, verbid, tense, person, repetitions, "
                                   "interval, easiness, due, lapses) VALUES(?, ?, ?, ?, ?, ?, %1, ?, ?)")
                             .arg(qIsFinite(card.easiness) ? card.easiness : 2.5, 0, 'g', 17),
                     {card.id, card.verbId, card.tense, card.person, card.repetitions, card.interval, card.due,
                      card.lapses}))
            return false;
    }
    for (const PracticeReview &review : rows.reviews) {
        if (!db.run(QStringLiteral("INSERT INTO practice_review(_id, cardid, time, quality, result) "
                                   "VALUES(?, ?, ?, ?, ?)"),
                    {review.id, review.cardId, review.time, review.quality, review.result}))
            return false;
    }
    return true;
}

} // namespace

bool pathFitsSqlite(const QString &path, QString *problem)
{
    const qsizetype bytes = QFile::encodeName(QFileInfo(path).absoluteFilePath()).size() + LongestSuffixBytes;
    if (bytes < SqliteMaxPathBytes)
        return true;
    if (problem)
        *problem = QStringLiteral("the data folder's path is too long for SQLite (%1 bytes with the file name; "
                                  "at most %2): %3")
                           .arg(bytes)
                           .arg(SqliteMaxPathBytes - 1)
                           .arg(QFileInfo(path).absolutePath());
    return false;
}

Inspection inspect(const QString &path, Depth depth)
{
    Inspection result;
    Connection db(path);
    if (!db.isOpen()) {
        result.problem = db.error();
        return result;
    }
    // The first read rolls back a hot journal; only then are the file's
    // size and contents what a check should look at.
    const auto version = db.integer(QStringLiteral("PRAGMA user_version"));
    if (!version) {
        result.problem = db.error();
        return result;
    }
    result.opened = true;
    result.userVersion = int(*version);

    // A copy cut short (a full disk during an old copy, a damaged card)
    // still opens; its header knows how long it should be.
    const auto pages = db.integer(QStringLiteral("PRAGMA page_count"));
    const auto pageSize = db.integer(QStringLiteral("PRAGMA page_size"));
    if (!QFile::exists(path + QStringLiteral("-wal")) && pages && pageSize
        && QFileInfo(path).size() < *pages * *pageSize) {
        result.problem = QStringLiteral("the file is %1 bytes shorter than its header says")
                                 .arg(*pages * *pageSize - QFileInfo(path).size());
        return result;
    }
    bool ok = false;
    if (depth == Depth::Full) {
        const QStringList whole = db.texts(QStringLiteral("PRAGMA quick_check"), &ok);
        if (!ok || whole != QStringList{QStringLiteral("ok")}) {
            result.problem = ok ? whole.mid(0, 3).join(QStringLiteral("; ")) : db.error();
            return result;
        }
    }
    result.problem = schemaProblem(db);
    if (!result.problem.isEmpty())
        return result;

    QStringList userTables{QStringLiteral("favourite"), QStringLiteral("history")};
    if (db.hasColumn(PracticeTables::Cards, "verbid"))
        userTables << PracticeTables::tableNames();
    for (const QString &table : std::as_const(userTables)) {
        QStringList problems = tableProblems(db, table, &ok);
        if (ok && !problems.isEmpty() && onlyIndexProblems(problems)) {
            // The rows are sound and only their index is wrong: rebuilding
            // the index in place keeps everything.
            CrashLog::log(QStringLiteral("The %1 index of %2 disagrees with its rows (%3); rebuilding it")
                                  .arg(table, path, problems.constFirst()));
            if (db.run(QStringLiteral("REINDEX %1").arg(table))) {
                problems = tableProblems(db, table, &ok);
                result.reindexed = true;
            }
        }
        if (!ok || !problems.isEmpty()) {
            result.problem = ok ? problems.mid(0, 3).join(QStringLiteral("; ")) : db.error();
            if (table.startsWith(QLatin1String("practice_")))
                CrashLog::log(QStringLiteral("The practice table %1 of %2 is damaged (%3); the copy is rebuilt with "
                                             "the favourites, the history and the practice rows still readable")
                                      .arg(table, path, result.problem));
            return result;
        }
    }
    // An old fault could store a verb twice; the lists would show it twice.
    const auto duplicates = db.integer(QStringLiteral("SELECT count(*) - count(DISTINCT verbid) FROM favourite"));
    if (duplicates && *duplicates > 0
        && db.run(QStringLiteral("DELETE FROM favourite WHERE verbid IS NULL OR _id NOT IN "
                                 "(SELECT min(_id) FROM favourite GROUP BY verbid)")))
        CrashLog::log(QStringLiteral("Removed %1 favourites stored twice").arg(*duplicates));
    result.healthy = true;
    return result;
}

CarryOver readUserRows(const QString &path, bool *rescued)
{
    CarryOver carryOver;
    if (rescued)
        *rescued = false;
    Connection db(path);
    if (!db.isOpen()) {
        reportError(DatabaseErrors::ReadingMigration, db);
        return carryOver;
    }
    // Lets SQLite read a file shorter than its header says instead of
    // refusing it whole; nothing is written through this connection.
    db.run(QStringLiteral("PRAGMA writable_schema = ON"));
    bool partial = false;
    const auto favourites = rescueTable<std::optional<int>>(
            db, QStringLiteral("favourite"), QStringLiteral("verbid"),
            [](sqlite3_stmt *s, int column) {
                return sqlite3_column_type(s, column) == SQLITE_NULL ? std::optional<int>()
                                                                      : std::optional<int>(sqlite3_column_int(s, column));
            },
            &partial);
    // A verb marked twice by an old fault is one favourite.
    QSet<int> seen;
    for (const auto &[id, verbId] : favourites) {
        if (verbId && !seen.contains(*verbId)) {
            seen.insert(*verbId);
            carryOver.favourites << *verbId;
        }
    }
    // Whole seconds, as the old copy's rows have always been carried over.
    const auto history = rescueTable<QPair<int, int>>(
            db, QStringLiteral("history"), QStringLiteral("verbid, timestamp"),
            [](sqlite3_stmt *s, int column) {
                return qMakePair(sqlite3_column_int(s, column), sqlite3_column_int(s, column + 1));
            },
            &partial);
    for (const auto &[id, row] : history)
        carryOver.history << row;
    if (partial)
        reportError(DatabaseErrors::ReadingMigration, db);
    carryOver.practice = readPracticeRows(db);
    // Leaves the old copy's journal settled in the file itself, so nothing
    // of it is pending when the copy is replaced.
    db.run(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    if (rescued)
        *rescued = partial;
    return carryOver;
}

bool build(const QString &masterPath, const QString &target, const CarryOver &carryOver, int userVersion,
           QString *error)
{
    auto fail = [&](const QString &why) {
        *error = why;
        for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
            QFile::remove(target + suffix);
        return false;
    };
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(target + suffix);
    QFile master(masterPath);
    if (!master.copy(target))
        return fail(QStringLiteral("could not copy %1 to %2: %3").arg(masterPath, target, master.errorString()));
    // An installed master is read-only; the copy must accept the user's rows.
    QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    FaultInjection::point("master copied");

    qint64 expectedFavourites = 0;
    qint64 expectedHistory = 0;
    {
        Connection db(target);
        if (!db.isOpen())
            return fail(QStringLiteral("could not open the new copy: ") + db.error());
        const QString problem = schemaProblem(db);
        if (!problem.isEmpty())
            return fail(QStringLiteral("the master %1 is not a verb database: %2").arg(masterPath, problem));
        bool ok = db.run(QStringLiteral("BEGIN IMMEDIATE"));
        // A master may ship rows of its own (test data does).
        const auto shippedFavourites = db.integer(QStringLiteral("SELECT count(*) FROM favourite"));
        const auto shippedHistory = db.integer(QStringLiteral("SELECT count(*) FROM history"));
        ok = ok && shippedFavourites && shippedHistory;
        expectedFavourites = shippedFavourites.value_or(0) + carryOver.favourites.size();
        expectedHistory = shippedHistory.value_or(0) + carryOver.history.size();
        for (int verbId : carryOver.favourites) {
            if (!ok)
                break;
            ok = db.run(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {verbId});
        }
        for (const auto &[verbId, timestamp] : carryOver.history) {
            if (!ok)
                break;
            ok = db.run(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES(?, ?)"), {verbId, timestamp});
        }
        ok = ok && writePracticeRows(db, carryOver.practice);
        ok = ok && db.run(QStringLiteral("PRAGMA user_version = %1").arg(userVersion));
        FaultInjection::point("carry-over inserted");
        ok = ok && db.run(QStringLiteral("COMMIT"));
        if (!ok) {
            const QString why = db.error();
            reportError(DatabaseErrors::InsertingMigration, db);
            return fail(QStringLiteral("could not write the carry-over into the new copy: ") + why);
        }
        if (!db.close())
            return fail(QStringLiteral("could not close the new copy: ") + db.error());
    }
    FaultInjection::point("new copy committed");

    // Read back what was written: the rename below is only safe for a copy
    // that holds every row.
    Connection check(target);
    const auto favourites = check.integer(QStringLiteral("SELECT count(*) FROM favourite"));
    const auto history = check.integer(QStringLiteral("SELECT count(*) FROM history"));
    const auto version = check.integer(QStringLiteral("PRAGMA user_version"));
    if (!favourites || !history || !version || *favourites != expectedFavourites || *history != expectedHistory
        || *version != userVersion)
        return fail(QStringLiteral("the new copy does not read back what was written: ") + check.error());
    if (carryOver.practice.present) {
        const auto cards = check.integer(QStringLiteral("SELECT count(*) FROM practice_card"));
        const auto reviews = check.integer(QStringLiteral("SELECT count(*) FROM practice_review"));
        // A form carried twice (a damaged index let it in) is kept once.
        std::set<std::tuple<qint64, int, int>> forms;
        for (const PracticeCard &card : carryOver.practice.cards)
            forms.emplace(card.verbId, card.tense, card.person);
        if (!cards || !reviews || *cards != qint64(forms.size())
            || *reviews != carryOver.practice.reviews.size())
            return fail(QStringLiteral("the new copy does not read back the practice rows: ") + check.error());
    }
    check.close();
    if (QFile::exists(target + QStringLiteral("-journal")) || QFile::exists(target + QStringLiteral("-wal")))
        return fail(QStringLiteral("the new copy still has a journal"));
    return true;
}

bool replace(const QString &from, const QString &to, QString *error)
{
    // A journal of the old copy would be played into the new one at its
    // first open. The old copy was read and closed, which settled it.
    for (const QString &suffix : {QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")}) {
        if (QFile::exists(to + suffix) && !QFile::remove(to + suffix)) {
            *error = QStringLiteral("could not remove the old journal %1").arg(to + suffix);
            return false;
        }
    }
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0) {
        *error = QStringLiteral("could not rename %1 to %2: %3").arg(from, to, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    syncPath(QFileInfo(to).absolutePath(), true);
    return true;
}

QString fullCheck(const QString &path, const std::function<void(sqlite3 *)> &started)
{
    Connection db(path);
    if (!db.isOpen())
        return db.error();
    if (started)
        started(db.handle());
    bool ok = false;
    const QStringList whole = db.texts(QStringLiteral("PRAGMA quick_check"), &ok);
    if (started)
        started(nullptr);
    if (!ok)
        return db.errorCode() == SQLITE_INTERRUPT ? QString() : db.error();
    return whole == QStringList{QStringLiteral("ok")} ? QString() : whole.mid(0, 3).join(QStringLiteral("; "));
}

bool stampVersion(const QString &path, int userVersion)
{
    Connection db(path);
    return db.run(QStringLiteral("PRAGMA user_version = %1").arg(userVersion));
}

int encodeVersion(const QString &version)
{
    const QVersionNumber number = QVersionNumber::fromString(version);
    if (!number.isNull() && number.majorVersion() < 2000 && number.minorVersion() < 1000 && number.microVersion() < 1000)
        return number.majorVersion() * 1000000 + number.minorVersion() * 1000 + number.microVersion();
    // Not a dotted number: any stable value that a real version cannot take.
    return int(qHash(version) % 100000000) + 2000000000 - 100000000;
}

} // namespace norvella::WorkingCopy
