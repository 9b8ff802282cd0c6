#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace norvella::test {

// The whole file, empty when it cannot be read.
QByteArray readFile(const QString &path);
// Replaces the file's contents; false unless every byte was written.
bool writeFile(const QString &path, const QByteArray &bytes);

// Builds a database with the app's schema and the small fixture data set;
// extraSql runs afterwards (to add rows a test needs). Returns false on any error.
bool createFixtureDatabase(const QString &path, const QString &extraSql = {}, bool withFixtureRows = true);
// Runs SQL directly, outside the app's wrapper, so tests can check what was written.
QStringList querySingleColumn(const QString &path, const QString &sql);
bool runSql(const QString &path, const QString &sql);
// Statements that turn a database back into one from before verbs had a
// pattern, a model and a frequency rank (SQLite cannot drop a column from a
// table whose definition holds comments, so the table is copied without them).
QString withoutPatternColumnsSql();

} // namespace norvella::test
