#include "LegacySettings.h"

#include "CrashLog.h"
#include "PropertyList.h"
#include "Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QVariantMap>

#include <cerrno>
#include <cstdio>

namespace norvella {

namespace {

bool legacyBool(const QVariant &value)
{
    // Old files stored flags as booleans, numbers or "YES"/"true" strings.
    if (value.metaType().id() == QMetaType::QString) {
        const QString s = value.toString().trimmed().toLower();
        return s == QLatin1String("yes") || s == QLatin1String("true") || s.toLongLong() != 0;
    }
    return value.toBool();
}

bool exists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

// Plain rename(2): it moves directories and dangling links too, and replaces
// an older damaged copy in one step.
QString renameEntry(const QString &from, const QString &to)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return {};
    return qt_error_string(errno);
}

// Logged under the name the user knows, whichever name the file has by now.
void moveAside(const QString &from, const QString &corrupt, const QString &legacyPath, const QString &reason)
{
    QString error = renameEntry(from, corrupt);
    // rename(2) will not put a file over a folder or the other way round.
    if (!error.isEmpty() && exists(corrupt)) {
        const QFileInfo old(corrupt);
        if (old.isDir() && !old.isSymLink() ? QDir(corrupt).removeRecursively() : QFile::remove(corrupt))
            error = renameEntry(from, corrupt);
    }
    if (error.isEmpty())
        CrashLog::log(QStringLiteral("Unable to read legacy settings %1: %2; moved to %3, it will not be read again")
                              .arg(legacyPath, reason, corrupt));
    else
        CrashLog::log(QStringLiteral("Unable to read legacy settings %1: %2; could not move it aside: %3")
                              .arg(legacyPath, reason, error));
}

void copyLegacyValues(Settings &settings, const QVariantMap &legacy)
{
    const Settings::Batch batch(settings);
    if (legacy.contains(SettingsKeys::IncludeEnglish))
        settings.setBool(SettingsKeys::IncludeEnglish, legacyBool(legacy.value(SettingsKeys::IncludeEnglish)));
    if (legacy.contains(SettingsKeys::SearchFrom))
        settings.setObject(SettingsKeys::SearchFrom, legacy.value(SettingsKeys::SearchFrom));
    if (legacy.contains(SettingsKeys::SearchConjugations))
        settings.setBool(SettingsKeys::SearchConjugations, legacyBool(legacy.value(SettingsKeys::SearchConjugations)));
    if (legacy.contains(SettingsKeys::SortByLang))
        settings.setBool(SettingsKeys::SortByLang, legacyBool(legacy.value(SettingsKeys::SortByLang)));
}

} // namespace

bool migrateLegacySettings(Settings &settings, const QString &documentsDirectory)
{
    const QDir documents(documentsDirectory);
    const QString path = documents.filePath(QLatin1String(LegacySettingsFiles::Name));
    const QString reading = documents.filePath(QLatin1String(LegacySettingsFiles::Reading));
    const QString corrupt = documents.filePath(QLatin1String(LegacySettingsFiles::Corrupt));

    if (exists(reading))
        moveAside(reading, corrupt, path, QStringLiteral("an earlier launch stopped while reading it"));
    if (!exists(path))
        return false;

    // Should the parser bring the process down, the file is no longer under the name
    // the next launch looks for. A folder that refuses the rename refuses the deletion
    // below too, and the file is then copied again at the next launch, as it always was.
    QString source = reading;
    if (const QString error = renameEntry(path, reading); !error.isEmpty()) {
        CrashLog::log(QStringLiteral("Unable to set legacy settings %1 aside while reading it: %2").arg(path, error));
        source = path;
    }

    QString problem;
    const auto root = PropertyList::fromFile(source, &problem);
    if (!root || root->metaType().id() != QMetaType::QVariantMap) {
        moveAside(source, corrupt, path, problem.isEmpty() ? QStringLiteral("not a dictionary") : problem);
        return false;
    }
    copyLegacyValues(settings, root->toMap());
    if (!settings.synchronize()) {
        // Deleting it now would lose the old preferences; the next launch copies them again.
        if (source == reading)
            renameEntry(reading, path);
        return true;
    }

    QFile file(source);
    if (!file.remove()) {
        CrashLog::log(QStringLiteral("Unable to delete file. Will try again later. %1").arg(file.errorString()));
        // Under its own name again, or the next launch would take it for a crashed read.
        if (source == reading)
            renameEntry(reading, path);
    }
    return true;
}

} // namespace norvella
