#pragma once

#include "DatabaseQueue.h"

#include <QList>
#include <QPair>
#include <QString>

#include <memory>

namespace norvella {

class Settings;

// Favourites and history read from an old working copy, to be written into
// its replacement.
struct CarryOver
{
    QList<int> favourites;
    QList<QPair<int, int>> history; // verb id, whole seconds
};

// Owns where the working database lives and how it is brought up to date with
// the master copy that ships with the app.
class VerbStore
{
public:
    enum class Outcome { Ready, MasterMissing, Failed };
    struct Result
    {
        Outcome outcome = Outcome::Failed;
        QString error;
        bool copied = false;
    };

    static QString documentsDirectory();
    static QString workingCopyPath(const QString &documentsDirectory);
    // The master copy installed with the app; empty when it cannot be found.
    static QString findMasterDatabase();
    static QStringList masterSearchPaths();

    // Replaces the working copy whenever the stored version differs from
    // appVersion (or the copy is missing or damaged), keeping the user's
    // favourites and history.
    static Result prepare(Settings &settings, const QString &appVersion, const QString &documentsDirectory,
                          const QString &masterPath);

    static CarryOver readCarryOver(const QString &path);
    static void insertCarryOver(DatabaseQueue &queue, const CarryOver &carryOver);
    // False when SQLite cannot open the file or its quick check fails.
    static bool isHealthy(const QString &path, QString *problem = nullptr);
};

} // namespace norvella
