#include "LegacySettings.h"

#include "CrashLog.h"
#include "PropertyList.h"
#include "Settings.h"

#include <QFile>
#include <QFileInfo>
#include <QVariantMap>

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
} // namespace

bool migrateLegacySettings(Settings &settings, const QString &documentsDirectory)
{
    const QString path = documentsDirectory + QStringLiteral("/norvella.plist");
    if (!QFileInfo::exists(path))
        return false;
    QString error;
    const auto root = PropertyList::fromFile(path, &error);
    if (!root || root->metaType().id() != QMetaType::QVariantMap) {
        // Left in place: deleting it would lose the user's old preferences for good.
        CrashLog::log(QStringLiteral("Unable to read legacy settings %1: %2")
                              .arg(path, error.isEmpty() ? QStringLiteral("not a dictionary") : error));
        return false;
    }
    const QVariantMap legacy = root->toMap();
    if (legacy.contains(SettingsKeys::IncludeEnglish))
        settings.setBool(SettingsKeys::IncludeEnglish, legacyBool(legacy.value(SettingsKeys::IncludeEnglish)));
    if (legacy.contains(SettingsKeys::SearchFrom))
        settings.setObject(SettingsKeys::SearchFrom, legacy.value(SettingsKeys::SearchFrom));
    if (legacy.contains(SettingsKeys::SearchConjugations))
        settings.setBool(SettingsKeys::SearchConjugations, legacyBool(legacy.value(SettingsKeys::SearchConjugations)));
    if (legacy.contains(SettingsKeys::SortByLang))
        settings.setBool(SettingsKeys::SortByLang, legacyBool(legacy.value(SettingsKeys::SortByLang)));
    settings.synchronize();

    QFile file(path);
    if (!file.remove())
        CrashLog::log(QStringLiteral("Unable to delete file. Will try again later. %1").arg(file.errorString()));
    return true;
}

} // namespace norvella
