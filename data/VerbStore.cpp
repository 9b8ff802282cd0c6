#include "VerbStore.h"

#include "CrashLog.h"
#include "FaultInjection.h"
#include "Settings.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>

#include <algorithm>

#include <unistd.h>

namespace norvella {

namespace {

// How long a launch waits for another one that is preparing the same copy.
constexpr int PreparationLockWaitMs = 60000;
constexpr char MovedAsideInfix[] = ".corrupt-";

// Keeps the newest damaged copy for inspection and deletes older ones: each
// is as large as the database.
void pruneMovedAside(const QString &working, int keep)
{
    const QFileInfo info(working);
    QFileInfoList aside = QDir(info.absolutePath())
                                  .entryInfoList({info.fileName() + QLatin1String(MovedAsideInfix) + QLatin1Char('*')},
                                                 QDir::Files, QDir::Time);
    for (qsizetype i = keep; i < aside.size(); ++i)
        QFile::remove(aside.at(i).absoluteFilePath());
}

// Keeps the damaged file beside the new one without ever leaving the working
// copy's name empty: a link (or a copy) first, the rename of the new copy after.
void keepDamagedCopy(const QString &working)
{
    pruneMovedAside(working, 0);
    const QString stamp = working + QLatin1String(MovedAsideInfix)
            + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    // A hard link keeps the damaged bytes past the rename without copying
    // them; a file system without links gets a copy.
    const bool kept = ::link(QFile::encodeName(working).constData(), QFile::encodeName(stamp).constData()) == 0
            || QFile::copy(working, stamp);
    if (!kept)
        CrashLog::log(QStringLiteral("Could not keep the damaged %1 aside").arg(working));
}

} // namespace

QString VerbStore::documentsDirectory()
{
    // Without a home, Qt would fall back to the file system root, and a
    // launch by root would scatter the database there.
    if (qEnvironmentVariableIsEmpty("HOME") && qEnvironmentVariableIsEmpty("XDG_DATA_HOME"))
        return {};
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

namespace {
QString damageMarker(const QString &working)
{
    return working + QStringLiteral(".damaged");
}
} // namespace

void VerbStore::markDamaged(const QString &workingCopy, const QString &problem)
{
    QFile marker(damageMarker(workingCopy));
    if (marker.exists())
        return;
    CrashLog::log(QStringLiteral("The working database %1 is damaged (%2); it will be repaired at the next start")
                          .arg(workingCopy, problem));
    if (marker.open(QIODevice::WriteOnly))
        marker.write(problem.toUtf8());
}

bool VerbStore::isHealthy(const QString &path, QString *problem)
{
    const WorkingCopy::Inspection inspection = WorkingCopy::inspect(path);
    if (problem)
        *problem = inspection.problem;
    return inspection.healthy;
}

VerbStore::Result VerbStore::prepare(Settings &settings, const QString &appVersion,
                                     const QString &documentsDirectory, const QString &masterPath)
{
    Result result;
    if (documentsDirectory.isEmpty()) {
        result.error = QStringLiteral("there is no folder for the user's data (HOME is not set)");
        return result;
    }
    const QString working = workingCopyPath(documentsDirectory);
    if (!WorkingCopy::pathFitsSqlite(working, &result.error))
        return result;
    if (!QDir().mkpath(documentsDirectory)) {
        result.error = QStringLiteral("could not create the data folder %1").arg(documentsDirectory);
        return result;
    }

    QLockFile lock(working + QStringLiteral(".lock"));
    if (!lock.tryLock(PreparationLockWaitMs)) {
        if (lock.error() == QLockFile::LockFailedError) {
            result.error = QStringLiteral("another Norvella is still preparing %1").arg(working);
            return result;
        }
        // A folder that cannot take the lock file cannot take a new copy
        // either; a current copy can still be read from it.
        CrashLog::log(QStringLiteral("Could not lock %1 for the update check; going on without the lock").arg(working));
    }
    // A replacement left half-built by a kill is never used.
    const QString replacement = working + QStringLiteral(".new");
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")})
        QFile::remove(replacement + suffix);
    pruneMovedAside(working, 1);

    const int dataVersion = WorkingCopy::encodeVersion(appVersion);
    const bool exists = QFileInfo(working).isFile();
    WorkingCopy::Inspection inspection;
    // The whole-file check runs after launch; damage it or SQLite found last
    // time is looked at in full now.
    const bool suspected = QFile::exists(damageMarker(working));
    if (exists) {
        inspection = WorkingCopy::inspect(working, suspected ? WorkingCopy::Depth::Full : WorkingCopy::Depth::Launch);
        const bool sameVersion = inspection.userVersion == dataVersion
                // A copy from before the version lived in the file: trust the setting once.
                || (inspection.userVersion == 0 && Preferences::installedVersion(settings) == appVersion);
        if (inspection.healthy && sameVersion) {
            if (inspection.userVersion != dataVersion)
                WorkingCopy::stampVersion(working, dataVersion);
            if (Preferences::installedVersion(settings) != appVersion) {
                settings.setString(SettingsKeys::InstalledVersion, appVersion);
                settings.synchronize();
            }
            QFile::remove(damageMarker(working));
            result.outcome = Outcome::Ready;
            return result;
        }
        if (!inspection.healthy)
            CrashLog::log(QStringLiteral("The working database %1 is damaged (%2); repairing it")
                                  .arg(working, inspection.problem));
    }

    if (masterPath.isEmpty() || !QFileInfo(masterPath).isFile()) {
        result.outcome = Outcome::MasterMissing;
        result.error = QStringLiteral("the master database verbs.db is missing (looked in %1)")
                               .arg(masterSearchPaths().join(QStringLiteral(", ")));
        return result;
    }

    const bool damaged = exists && !inspection.healthy;
    CarryOver carryOver;
    if (exists)
        carryOver = WorkingCopy::readUserRows(working);
    FaultInjection::point("carry-over read");

    if (!WorkingCopy::build(masterPath, replacement, carryOver, dataVersion, &result.error))
        return result;
    if (damaged)
        keepDamagedCopy(working);
    if (!WorkingCopy::replace(replacement, working, &result.error))
        return result;
    FaultInjection::point("new copy in place");
    result.copied = true;
    result.repaired = damaged;
    result.keptFavourites = int(carryOver.favourites.size());
    result.keptHistory = int(carryOver.history.size());
    if (damaged)
        CrashLog::log(QStringLiteral("The working database was repaired: kept %1 favourites and %2 history entries")
                              .arg(result.keptFavourites)
                              .arg(result.keptHistory));

    QFile::remove(damageMarker(working));
    settings.setString(SettingsKeys::InstalledVersion, appVersion);
    settings.synchronize();
    FaultInjection::point("version stored");
    result.outcome = Outcome::Ready;
    return result;
}

} // namespace norvella
