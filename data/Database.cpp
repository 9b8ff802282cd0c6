#include "Database.h"

#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "UserMessages.h"
#include "Verb.h"

#include <sqlite3.h>

#include <optional>

namespace norvella {

ResultSet::ResultSet(sqlite3_stmt *statement, Database *owner) : m_statement(statement), m_owner(owner)
{
    const int count = sqlite3_column_count(statement);
    m_columnNames.reserve(count);
    for (int i = 0; i < count; ++i)
        m_columnNames.push_back(QString::fromUtf8(sqlite3_column_name(statement, i)));
}

ResultSet::~ResultSet()
{
    close();
}

bool ResultSet::next()
{
    if (!m_statement || m_finished)
        return false;
    const int rc = sqlite3_step(m_statement);
    if (rc == SQLITE_ROW)
        return true;
    // Stepping again after the end would silently start the query over.
    m_finished = true;
    if (rc != SQLITE_DONE) {
        // Some errors only show while stepping (a LIKE pattern over the length
        // limit, a busy or corrupt file); without this they look like no rows.
        m_errorCode = rc;
        m_errorMessage = QString::fromUtf8(sqlite3_errmsg(sqlite3_db_handle(m_statement)));
        if (m_owner)
            m_owner->setError(m_errorCode, m_errorMessage);
    }
    return false;
}

void ResultSet::close()
{
    if (m_statement) {
        sqlite3_finalize(m_statement);
        m_statement = nullptr;
    }
}

int ResultSet::columnIndexForName(const QString &name) const
{
    for (size_t i = 0; i < m_columnNames.size(); ++i) {
        if (m_columnNames[i].compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    }
    return -1;
}

bool ResultSet::columnIsNull(const QString &name) const
{
    const int i = columnIndexForName(name);
    return i < 0 || !m_statement || sqlite3_column_type(m_statement, i) == SQLITE_NULL;
}

int ResultSet::intForColumn(const QString &name) const
{
    const int i = columnIndexForName(name);
    return i < 0 || !m_statement ? 0 : sqlite3_column_int(m_statement, i);
}

qint64 ResultSet::longLongIntForColumn(const QString &name) const
{
    const int i = columnIndexForName(name);
    return i < 0 || !m_statement ? 0 : sqlite3_column_int64(m_statement, i);
}

double ResultSet::doubleForColumn(const QString &name) const
{
    const int i = columnIndexForName(name);
    return i < 0 || !m_statement ? 0.0 : sqlite3_column_double(m_statement, i);
}

bool ResultSet::boolForColumn(const QString &name) const
{
    return intForColumn(name) != 0;
}

QString ResultSet::stringForColumn(const QString &name) const
{
    const int i = columnIndexForName(name);
    if (i < 0 || !m_statement || sqlite3_column_type(m_statement, i) == SQLITE_NULL)
        return {};
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, i));
    return QString::fromUtf8(text, sqlite3_column_bytes(m_statement, i));
}

Database::Database(QString path) : m_path(std::move(path)) {}

Database::~Database()
{
    close();
}

bool Database::open()
{
    if (m_db)
        return true;
    // The working copy must already exist: creating an empty file here would
    // hide a failed copy behind "no such table" errors.
    const int rc = sqlite3_open_v2(m_path.toUtf8().constData(), &m_db,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        setError(rc, m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : QStringLiteral("out of memory"));
        sqlite3_close_v2(m_db);
        m_db = nullptr;
        return false;
    }
    sqlite3_busy_timeout(m_db, 2000);
    // Write-ahead logging: the search index and the background check read on
    // their own connections without ever blocking a write. With NORMAL, a
    // commit appends to the log and does not wait for the disk; a killed app
    // loses nothing, a power cut at most the last few taps, and the file is
    // never damaged. The queue closes its connection after many turns, and a
    // checkpoint on every close would bring the disk wait back: checkpoints
    // are left to SQLite's own threshold. Changing the mode fails harmlessly
    // on a read-only file.
    sqlite3_exec(m_db, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
    sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    return true;
}

void Database::close()
{
    if (m_db) {
        sqlite3_close_v2(m_db);
        m_db = nullptr;
    }
}

void Database::setError(int code, const QString &message)
{
    m_lastErrorCode = code;
    m_lastErrorMessage = message;
}

sqlite3_stmt *Database::prepare(const QString &sql, const QVariantList &values)
{
    if (!m_db && !open())
        return nullptr;
    sqlite3_stmt *statement = nullptr;
    const QByteArray utf8 = sql.toUtf8();
    int rc = sqlite3_prepare_v2(m_db, utf8.constData(), int(utf8.size()), &statement, nullptr);
    if (rc != SQLITE_OK) {
        setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
        sqlite3_finalize(statement);
        return nullptr;
    }
    const int expected = sqlite3_bind_parameter_count(statement);
    if (expected != values.size()) {
        setError(SQLITE_RANGE, QStringLiteral("statement takes %1 values, %2 given").arg(expected).arg(values.size()));
        sqlite3_finalize(statement);
        return nullptr;
    }
    for (int i = 0; i < values.size(); ++i) {
        const QVariant &value = values.at(i);
        const int index = i + 1;
        switch (value.metaType().id()) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            rc = sqlite3_bind_null(statement, index);
            break;
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            rc = sqlite3_bind_int64(statement, index, value.toLongLong());
            break;
        case QMetaType::Double:
        case QMetaType::Float:
            rc = sqlite3_bind_double(statement, index, value.toDouble());
            break;
        default: {
            if (value.isNull()) {
                rc = sqlite3_bind_null(statement, index);
            } else {
                const QByteArray text = value.toString().toUtf8();
                rc = sqlite3_bind_text(statement, index, text.constData(), int(text.size()), SQLITE_TRANSIENT);
            }
        }
        }
        if (rc != SQLITE_OK) {
            setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
            sqlite3_finalize(statement);
            return nullptr;
        }
    }
    return statement;
}

std::unique_ptr<ResultSet> Database::executeQuery(const QString &sql, const QVariantList &values)
{
    sqlite3_stmt *statement = prepare(sql, values);
    if (!statement)
        return nullptr;
    return std::make_unique<ResultSet>(statement, this);
}

bool Database::executeUpdate(const QString &sql, const QVariantList &values)
{
    sqlite3_stmt *statement = prepare(sql, values);
    if (!statement)
        return false;
    int rc = sqlite3_step(statement);
    while (rc == SQLITE_ROW)
        rc = sqlite3_step(statement);
    if (rc != SQLITE_DONE)
        setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
    sqlite3_finalize(statement);
    return rc == SQLITE_DONE;
}

bool Database::inTransaction(const std::function<bool()> &body)
{
    // SQLite opens a file it cannot write read-only and stays so; opened
    // afresh, a connection writes as soon as the disk allows it again.
    if (m_db && sqlite3_db_readonly(m_db, "main") == 1)
        close();
    if (!executeUpdate(QStringLiteral("BEGIN IMMEDIATE")))
        return false;
    if (body() && executeUpdate(QStringLiteral("COMMIT")))
        return true;
    const int code = m_lastErrorCode;
    const QString message = m_lastErrorMessage;
    if (m_db && !sqlite3_get_autocommit(m_db))
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    setError(code, message);
    return false;
}

QString Database::lastErrorMessage() const
{
    return m_lastErrorMessage.isEmpty() ? QStringLiteral("not an error") : m_lastErrorMessage;
}

int Database::lastErrorCode() const
{
    return m_lastErrorCode;
}

bool writeFavourite(Database &db, qint64 verbId, bool favourite, bool &isFavourite)
{
    std::optional<bool> stored;
    const bool written = db.inTransaction([&] {
        auto rows = db.executeQuery(QStringLiteral("SELECT count(*) AS n FROM favourite WHERE verbid=?"), {verbId});
        if (!rows || !rows->next())
            return false;
        stored = rows->intForColumn(QStringLiteral("n")) > 0;
        rows->close();
        if (favourite)
            return *stored || db.executeUpdate(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {verbId});
        return db.executeUpdate(QStringLiteral("DELETE FROM favourite WHERE verbid=?"), {verbId});
    });
    if (written)
        isFavourite = favourite;
    else if (stored)
        isFavourite = *stored;
    return written;
}

} // namespace norvella
