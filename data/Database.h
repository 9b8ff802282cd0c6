#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

#include <functional>
#include <memory>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace norvella {

class Database;

// One step-through of a query. Columns are looked up by name, the way the
// screens read them; an unknown column reads like NULL.
class ResultSet
{
public:
    // The owner, when given, also records a failed step as its last error;
    // it must outlive the result set.
    explicit ResultSet(sqlite3_stmt *statement, Database *owner = nullptr);
    ~ResultSet();
    ResultSet(const ResultSet &) = delete;
    ResultSet &operator=(const ResultSet &) = delete;

    // False at the end of the rows and when a step fails; failed() tells the
    // two apart. Once false it stays false: the query is not run again.
    bool next();
    bool failed() const { return m_errorCode != 0; }
    int errorCode() const { return m_errorCode; }
    const QString &errorMessage() const { return m_errorMessage; }
    void close();

    int columnIndexForName(const QString &name) const;
    bool columnIsNull(const QString &name) const;
    int intForColumn(const QString &name) const;
    qint64 longLongIntForColumn(const QString &name) const;
    double doubleForColumn(const QString &name) const;
    bool boolForColumn(const QString &name) const;
    // Null text reads as a null QString, which callers treat as empty.
    QString stringForColumn(const QString &name) const;

private:
    sqlite3_stmt *m_statement = nullptr;
    Database *m_owner = nullptr;
    std::vector<QString> m_columnNames;
    bool m_finished = false;
    int m_errorCode = 0;
    QString m_errorMessage;
};

class Database
{
public:
    explicit Database(QString path);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    const QString &path() const { return m_path; }
    bool open();
    bool isOpen() const { return m_db != nullptr; }
    void close();

    // Positional "?" parameters bound in order. A null pointer means the
    // statement failed; lastErrorMessage()/lastErrorCode() say why. A query
    // can also fail later, while its rows are read: see ResultSet::failed().
    std::unique_ptr<ResultSet> executeQuery(const QString &sql, const QVariantList &values = {});
    bool executeUpdate(const QString &sql, const QVariantList &values = {});

    // Runs `body` between BEGIN IMMEDIATE and COMMIT and answers whether all
    // of it succeeded; on failure nothing of it stays. The error kept is the
    // first one: SQLite ends a transaction by itself on some failures (a full
    // disk among them), and a ROLLBACK sent blindly after those would replace
    // the real reason with "no transaction is active". A connection that
    // could only be opened read-only is opened again first.
    bool inTransaction(const std::function<bool()> &body);

    QString lastErrorMessage() const;
    int lastErrorCode() const;

    sqlite3 *handle() const { return m_db; }

private:
    friend class ResultSet;
    sqlite3_stmt *prepare(const QString &sql, const QVariantList &values);
    void setError(int code, const QString &message);

    QString m_path;
    sqlite3 *m_db = nullptr;
    int m_lastErrorCode = 0;
    QString m_lastErrorMessage;
};

// The favourite mark as every screen writes it, in one transaction: marking a
// verb that already is a favourite adds no row, unmarking removes every row of
// it. `isFavourite` receives what the table holds afterwards; a failed write
// leaves the table as it was, and `isFavourite` too when not even the table
// could be read.
bool writeFavourite(Database &db, qint64 verbId, bool favourite, bool &isFavourite);

// The fixed report of a failed favourite write (see VerbRepository::setFavourite).
inline constexpr char UnableToUpdateFavourite[] = "Unable to update favourite %@ (%d)";

} // namespace norvella
