#include "TestSupport.h"

#include <QFile>

#include <sqlite3.h>

namespace norvella::test {

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

bool runSql(const QString &path, const QString &sql)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.toUtf8().constData(), &db) != SQLITE_OK) {
        sqlite3_close(db);
        return false;
    }
    char *error = nullptr;
    const bool ok = sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, &error) == SQLITE_OK;
    if (!ok)
        qWarning("SQL failed on %s: %s", qPrintable(path), error);
    sqlite3_free(error);
    sqlite3_close(db);
    return ok;
}

bool createFixtureDatabase(const QString &path, const QString &extraSql, bool withFixtureRows)
{
    QFile::remove(path);
    const QString schema = QString::fromUtf8(readFile(QStringLiteral(NORVELLA_SCHEMA_SQL)));
    if (schema.isEmpty() || !runSql(path, schema))
        return false;
    if (withFixtureRows && !runSql(path, QString::fromUtf8(readFile(QStringLiteral(NORVELLA_FIXTURE_SQL)))))
        return false;
    return extraSql.isEmpty() || runSql(path, extraSql);
}

QStringList querySingleColumn(const QString &path, const QString &sql)
{
    QStringList values;
    sqlite3 *db = nullptr;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(db, sql.toUtf8().constData(), -1, &statement, nullptr) == SQLITE_OK) {
            while (sqlite3_step(statement) == SQLITE_ROW) {
                const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, 0));
                values << (text ? QString::fromUtf8(text) : QStringLiteral("<null>"));
            }
        }
        sqlite3_finalize(statement);
    }
    sqlite3_close(db);
    return values;
}

QString withoutPatternColumnsSql()
{
    return QStringLiteral(
            "CREATE TABLE old_verb AS SELECT _id, italian, simplified_italian, english, german, simplified_german, "
            "french, simplified_french, spanish, simplified_spanish, dutch, simplified_dutch, portuguese, "
            "simplified_portuguese, turkish, simplified_turkish, voice_available FROM verb;"
            "DROP TABLE verb;"
            "ALTER TABLE old_verb RENAME TO verb;");
}

} // namespace norvella::test
