#pragma once

#include <QString>
#include <QVariant>

namespace norvella {

// Local stand-in for a crash reporter: log lines and custom values go to
// stderr and to a log file in the app's data folder, never off the machine.
class CrashLog
{
public:
    static void log(const QString &message);
    static void setCustomValue(const QString &key, const QVariant &value);
    static QVariant customValue(const QString &key);
    // Tests redirect the file; an empty path keeps logging on stderr only.
    static void setLogFilePath(const QString &path);
    static QString logFilePath();
};

// The error-report pattern: a fixed message ending in ": %@ (%d)".
QString errorReport(const char *fixedMessage, const QString &errorMessage, int errorCode);
class Database;
void reportDatabaseError(const char *fixedMessage, const Database &db);

namespace DatabaseErrors {
inline constexpr char ReadingMigration[] = "An error occurred when reading migration settings: %@ (%d)";
inline constexpr char InsertingMigration[] = "An error occurred when inserting migration settings: %@ (%d)";
inline constexpr char ReadingVerbList[] = "An error occurred when reading list of verbs: %@ (%d)";
inline constexpr char PerformingSearch[] = "An error occurred when performing search: %@ (%d)";
inline constexpr char RemovingFavourite[] = "An error occurred when removing the favourite: %@ (%d)";
inline constexpr char RemovingHistory[] = "An error occurred when removing the item from history: %@ (%d)";
inline constexpr char ReadingConjugation[] = "An error occurred when reading verb conjugation: %@ (%d)";
}

} // namespace norvella
