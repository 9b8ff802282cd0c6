#include "VerbStore.h"

#include "CrashLog.h"
#include "Settings.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <sqlite3.h>

namespace norvella {

QString VerbStore::documentsDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

QString VerbStore::workingCopyPath(const QString &documentsDirectory)
{
    return documentsDirectory + QStringLiteral("/verbs.db");
}

QStringList VerbStore::masterSearchPaths()
{
    QStringList paths;
    const QString fromEnvironment = qEnvironmentVariable("NORVELLA_MASTER_DB");
    if (!fromEnvironment.isEmpty())
        paths << fromEnvironment;
    const QString appDir = QCoreApplication::applicationDirPath();
    paths << appDir + QStringLiteral("/verbs.db") << appDir + QStringLiteral("/../share/norvella/verbs.db");
    return paths;
}

QString VerbStore::findMasterDatabase()
{
    for (const QString &path : masterSearchPaths()) {
        if (QFileInfo(path).isFile())
            return QFileInfo(path).absoluteFilePath();
    }
    return {};
}

bool VerbStore::isHealthy(const QString &path, QString *problem)
{
    sqlite3 *db = nullptr;
    bool healthy = false;
    QString why;
    if (sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        why = db ? QString::fromUtf8(sqlite3_errmsg(db)) : QStringLiteral("cannot open");
    } else {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(db, "PRAGMA quick_check", -1, &statement, nullptr) != SQLITE_OK) {
            why = QString::fromUtf8(sqlite3_errmsg(db));
        } else if (sqlite3_step(statement) != SQLITE_ROW) {
            why = QString::fromUtf8(sqlite3_errmsg(db));
        } else {
            const auto *answer = reinterpret_cast<const char *>(sqlite3_column_text(statement, 0));
            healthy = answer && qstrcmp(answer, "ok") == 0;
            if (!healthy)
                why = QString::fromUtf8(answer ? answer : "no answer");
        }
        sqlite3_finalize(statement);
        if (healthy) {
            // A valid but foreign SQLite file would pass the check and then
            // fail every screen's query.
            healthy = sqlite3_table_column_metadata(db, nullptr, "verb", "italian", nullptr, nullptr, nullptr,
                                                    nullptr, nullptr)
                    == SQLITE_OK;
            if (!healthy)
                why = QStringLiteral("no verb table");
        }
    }
    sqlite3_close_v2(db);
    if (problem)
        *problem = why;
    return healthy;
}

CarryOver VerbStore::readCarryOver(const QString &path)
{
    CarryOver carryOver;
    DatabaseQueue queue(path);
    queue.inDatabase([&](Database &db) {
        auto favourites = db.executeQuery(QStringLiteral("SELECT verbid FROM favourite WHERE verbid is not null"));
        if (!favourites) {
            reportDatabaseError(DatabaseErrors::ReadingMigration, db);
            return;
        }
        while (favourites->next())
            carryOver.favourites << favourites->intForColumn(QStringLiteral("verbid"));
        favourites->close();

        auto history = db.executeQuery(QStringLiteral("SELECT verbid, timestamp FROM history"));
        if (!history) {
            reportDatabaseError(DatabaseErrors::ReadingMigration, db);
            return;
        }
        // Read as whole seconds on purpose: the fraction is not carried over.
        while (history->next())
            carryOver.history << qMakePair(history->intForColumn(QStringLiteral("verbid")),
                                           history->intForColumn(QStringLiteral("timestamp")));
        history->close();
    });
    return carryOver;
}

void VerbStore::insertCarryOver(DatabaseQueue &queue, const CarryOver &carryOver)
{
    queue.inDatabase([&](Database &db) {
        for (int verbId : carryOver.favourites) {
            if (!db.executeUpdate(QStringLiteral("INSERT INTO favourite(verbid) VALUES(?)"), {verbId})) {
                reportDatabaseError(DatabaseErrors::InsertingMigration, db);
                return;
            }
        }
        for (const auto &[verbId, timestamp] : carryOver.history) {
            if (!db.executeUpdate(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES(?, ?)"),
                                  {verbId, timestamp})) {
                reportDatabaseError(DatabaseErrors::InsertingMigration, db);
                return;
            }
        }
    });
}

VerbStore::Result VerbStore::prepare(Settings &settings, const QString &appVersion,
                                     const QString &documentsDirectory, const QString &masterPath)
{
    Result result;
    if (documentsDirectory.isEmpty()) {
        result.error = QStringLiteral("no documents directory");
        return result;
    }
    QDir().mkpath(documentsDirectory);
    const QString working = workingCopyPath(documentsDirectory);
    const bool exists = QFileInfo::exists(working);
    const bool sameVersion = Preferences::installedVersion(settings) == appVersion;

    bool damaged = false;
    if (sameVersion && exists) {
        QString problem;
        if (isHealthy(working, &problem)) {
            result.outcome = Outcome::Ready;
            return result;
        }
        damaged = true;
        CrashLog::log(QStringLiteral("The working database %1 is damaged (%2); replacing it").arg(working, problem));
    }

    CarryOver carryOver;
    if (exists && (!sameVersion || damaged))
        carryOver = readCarryOver(working);

    if (masterPath.isEmpty() || !QFileInfo(masterPath).isFile()) {
        result.outcome = Outcome::MasterMissing;
        result.error = QStringLiteral("the master database verbs.db is missing (looked in %1)")
                               .arg(masterSearchPaths().join(QStringLiteral(", ")));
        return result;
    }

    if (exists) {
        if (damaged) {
            // Keep the damaged file: it may still hold something worth rescuing by hand.
            const QString stamp = working + QStringLiteral(".corrupt-")
                    + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
            // Two damaged copies within a second must not collide.
            QString aside = stamp;
            for (int n = 2; QFile::exists(aside); ++n)
                aside = stamp + QLatin1Char('-') + QString::number(n);
            if (!QFile::rename(working, aside)) {
                result.error = QStringLiteral("could not move the damaged %1 aside").arg(working);
                return result;
            }
        } else if (!QFile::remove(working)) {
            result.error = QStringLiteral("could not delete the old %1").arg(working);
            return result;
        }
    }
    if (!QFile::copy(masterPath, working)) {
        result.error = QStringLiteral("could not copy %1 to %2").arg(masterPath, working);
        return result;
    }
    // An installed master is read-only; the copy must accept favourites and history.
    QFile::setPermissions(working, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    result.copied = true;

    if (!carryOver.favourites.isEmpty() || !carryOver.history.isEmpty()) {
        DatabaseQueue queue(working);
        insertCarryOver(queue, carryOver);
    }
    settings.setString(SettingsKeys::InstalledVersion, appVersion);
    settings.synchronize();
    result.outcome = Outcome::Ready;
    return result;
}

} // namespace norvella
