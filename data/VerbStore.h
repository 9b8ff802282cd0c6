#pragma once

#include "WorkingCopy.h"

#include <QString>
#include <QStringList>

namespace norvella {

class Settings;

// Owns where the working database lives and how it is brought up to date with
// the master copy that ships with the app.
//
// What it guarantees about the user's rows: the working copy is never
// changed in place during an update. A replacement is built beside it, with
// the favourites and history written in one transaction and read back, and
// takes its place in one atomic rename; only then is the version stored. A
// kill at any instant leaves either the old copy or the new one, each with
// every row. The data version also lives inside the copy, so a lost settings
// file does not trigger a needless update, and a lock lets one process at a
// time prepare the copy.
class VerbStore
{
public:
    enum class Outcome { Ready, MasterMissing, Failed };
    struct Result
    {
        Outcome outcome = Outcome::Failed;
        QString error;
        bool copied = false;
        // A damaged copy was replaced; these many of the user's rows were kept.
        bool repaired = false;
        int keptFavourites = 0;
        int keptHistory = 0;
    };

    // The app's data folder; empty when the user has no home to keep it in.
    static QString documentsDirectory();
    static QString workingCopyPath(const QString &documentsDirectory);
    // The master copy installed with the app; empty when it cannot be found.
    static QString findMasterDatabase();
    static QStringList masterSearchPaths();

    // Replaces the working copy whenever its data version differs from
    // appVersion (or the copy is missing or damaged), keeping the user's
    // favourites and history.
    static Result prepare(Settings &settings, const QString &appVersion, const QString &documentsDirectory,
                          const QString &masterPath);

    // Favourites and history of a copy, read the way an update reads them.
    static CarryOver readCarryOver(const QString &path) { return WorkingCopy::readUserRows(path); }
    // Records damage found while the app runs; the next launch checks the
    // whole copy and repairs it.
    static void markDamaged(const QString &workingCopy, const QString &problem);
    // False when SQLite cannot open the file or finds it damaged.
    static bool isHealthy(const QString &path, QString *problem = nullptr);
};

} // namespace norvella
