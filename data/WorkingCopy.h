#pragma once

#include "PracticeTables.h"

#include <QList>
#include <QPair>
#include <QString>

#include <functional>

struct sqlite3;

namespace norvella {

// Favourites, history and practice rows read from an old working copy, to be written into
// its replacement.
struct CarryOver
{
    QList<int> favourites;
    QList<QPair<int, int>> history; // verb id, whole seconds
    PracticeRows practice;
    bool operator==(const CarryOver &) const = default;
};

// The file-level steps behind the working database: judging a copy, reading
// the user's rows out of it (also out of a damaged one), and building a
// replacement beside it that takes its place in one atomic rename.
namespace WorkingCopy {

struct Inspection
{
    bool opened = false;
    bool healthy = false;
    int userVersion = 0;
    QString problem;
    // Indexes of the user's tables were rebuilt because their entries
    // disagreed with the rows.
    bool reindexed = false;
};

// SQLite limits a file name (with "-journal" or "-wal" added) to 512 bytes.
bool pathFitsSqlite(const QString &path, QString *problem);

enum class Depth {
    // What a launch can afford: the header, the file's length, the schema and
    // the user's own tables with their indexes.
    Launch,
    // Also every page of the verb data (about a tenth of a second).
    Full,
};

// Opens the copy read-write, so a hot journal left by a crash mid-commit is
// rolled back rather than taken for damage, then checks it.
Inspection inspect(const QString &path, Depth depth = Depth::Full);

// The whole-file check, for a background thread: an empty answer means
// sound (or interrupted). `started` is handed the connection while the check
// runs, and null after, so another thread can interrupt it.
QString fullCheck(const QString &path, const std::function<void(sqlite3 *)> &started = {});

// Reads the rows with the statements of a healthy copy; when they fail,
// falls back to reading table rows one by one without the indexes, so every
// row SQLite can still reach is kept.
CarryOver readUserRows(const QString &path, bool *rescued = nullptr);

// Copies the master to `target` and writes the carry-over and the data
// version into it in one transaction, then reads it back. On failure the
// target is removed and `error` says why.
bool build(const QString &masterPath, const QString &target, const CarryOver &carryOver, int userVersion,
           QString *error);

// Atomically puts `from` in the place of `to` and makes the rename durable.
bool replace(const QString &from, const QString &to, QString *error);

// Writes the data version into a healthy copy that predates it.
bool stampVersion(const QString &path, int userVersion);

// The app version as the integer SQLite keeps in the copy's header.
int encodeVersion(const QString &version);

} // namespace WorkingCopy

} // namespace norvella
