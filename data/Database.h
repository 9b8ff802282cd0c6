#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

#include <memory>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace norvella {

// One step-through of a query. Columns are looked up by name, the way the
// screens read them; an unknown column reads like NULL.
class ResultSet
{
public:
    ResultSet(sqlite3_stmt *statement);
    ~ResultSet();
    ResultSet(const ResultSet &) = delete;
    ResultSet &operator=(const ResultSet &) = delete;

    bool next();
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
    std::vector<QString> m_columnNames;
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
    // statement failed; lastErrorMessage()/lastErrorCode() say why.
    std::unique_ptr<ResultSet> executeQuery(const QString &sql, const QVariantList &values = {});
    bool executeUpdate(const QString &sql, const QVariantList &values = {});

    QString lastErrorMessage() const;
    int lastErrorCode() const;

    sqlite3 *handle() const { return m_db; }

private:
    sqlite3_stmt *prepare(const QString &sql, const QVariantList &values);
    void setError(int code, const QString &message);

    QString m_path;
    sqlite3 *m_db = nullptr;
    int m_lastErrorCode = 0;
    QString m_lastErrorMessage;
};

} // namespace norvella
