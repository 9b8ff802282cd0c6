#include "Settings.h"

#include "CrashLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QTimer>

namespace norvella {

namespace {
// Another process holds the lock only for the few milliseconds of its own save.
constexpr int LockTimeoutMs = 2000;
}

Settings::Settings(QString filePath) : m_file(std::move(filePath)), m_soonContext(std::make_unique<QObject>())
{
    reload();
    // A change waiting for its moment is written before the app ends.
    if (QCoreApplication::instance())
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, m_soonContext.get(),
                         [this] { save(); });
}

Settings::~Settings()
{
    if (m_soonScheduled)
        save();
}

void Settings::setIntegerSoon(const QString &key, qint64 value)
{
    const QVariant stored = QVariant::fromValue(value);
    m_values.insert(key, stored);
    m_changes.insert(key, stored);
    if (m_soonScheduled)
        return;
    m_soonScheduled = true;
    QTimer::singleShot(SoonSaveDelayMs, m_soonContext.get(), [this] {
        m_soonScheduled = false;
        save();
    });
}

QString Settings::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/settings.json");
}

Settings &Settings::standard()
{
    static Settings settings(standardFilePath());
    return settings;
}

void Settings::reload()
{
    m_changes.clear();
    m_clearAll = false;
    // A whole file is read without the lock: every writer replaces it in one rename.
    if (m_file.isWhole()) {
        m_values = m_file.load(false);
        return;
    }
    QLockFile lock(m_file.lockPath());
    // A damaged file is moved aside only while no other process can be replacing it.
    const bool locked = lock.tryLock(LockTimeoutMs);
    m_values = m_file.load(locked);
    // What came back from the last-good copy, or from the readable part of a damaged
    // file, is on disk nowhere else once that file is aside: write it out now, or
    // carry it as this process's own changes until a save succeeds.
    if (locked && !m_file.fileIsGood() && !m_values.isEmpty()) {
        QString error;
        if (!m_file.store(m_values, &error)) {
            saveFailed(error);
            m_changes = m_values;
        }
    }
}

void Settings::clear()
{
    m_values.clear();
    m_changes.clear();
    m_clearAll = true;
    save();
}

QVariant Settings::objectForKey(const QString &key) const
{
    return m_values.value(key);
}

QString Settings::stringForKey(const QString &key) const
{
    const QVariant value = m_values.value(key);
    if (value.metaType().id() == QMetaType::QString)
        return value.toString();
    if (value.metaType().id() == QMetaType::LongLong || value.metaType().id() == QMetaType::Double)
        return value.toString();
    return {};
}

bool Settings::boolForKey(const QString &key) const
{
    const QVariant value = m_values.value(key);
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::LongLong:
    case QMetaType::Double:
        return value.toDouble() != 0.0;
    case QMetaType::QString: {
        const QString s = value.toString().trimmed().toLower();
        return s == QLatin1String("true") || s == QLatin1String("yes") || s.toLongLong() != 0;
    }
    default:
        return false;
    }
}

qint64 Settings::integerForKey(const QString &key) const
{
    const QVariant value = m_values.value(key);
    return value.isValid() ? value.toLongLong() : 0;
}

double Settings::doubleForKey(const QString &key) const
{
    const QVariant value = m_values.value(key);
    return value.isValid() ? value.toDouble() : 0.0;
}

void Settings::setObject(const QString &key, const QVariant &value)
{
    if (!value.isValid()) {
        removeObject(key);
        return;
    }
    QVariant stored = value;
    if (value.metaType().id() == QMetaType::Int || value.metaType().id() == QMetaType::UInt
        || value.metaType().id() == QMetaType::Long || value.metaType().id() == QMetaType::ULongLong)
        stored = QVariant::fromValue(value.toLongLong());
    else if (value.metaType().id() == QMetaType::Float)
        stored = QVariant(value.toDouble());
    m_values.insert(key, stored);
    m_changes.insert(key, stored);
    save();
}

void Settings::removeObject(const QString &key)
{
    // Saved even when absent here: another process may have set it since.
    m_values.remove(key);
    m_changes.insert(key, QVariant());
    save();
}

bool Settings::synchronize()
{
    return save();
}

bool Settings::save()
{
    if (m_batchDepth > 0) {
        m_saveDeferred = true;
        return true;
    }
    m_saveDeferred = false;
    m_soonScheduled = false;
    if (m_changes.isEmpty() && !m_clearAll)
        return true;
    QDir().mkpath(QFileInfo(m_file.path()).absolutePath());
    QLockFile lock(m_file.lockPath());
    if (!lock.tryLock(LockTimeoutMs) && lock.error() == QLockFile::LockFailedError)
        return saveFailed(QStringLiteral("another process holds %1").arg(m_file.lockPath()));
    // Without a lock file (a read-only folder, a full disk) the write below is still
    // tried: it fails too, and its error says why.
    SettingsFile::Values merged = m_file.load(lock.isLocked());
    const QByteArray onDisk = SettingsFile::encode(merged);
    if (m_clearAll)
        merged.clear();
    for (auto it = m_changes.cbegin(); it != m_changes.cend(); ++it) {
        if (it.value().isValid())
            merged.insert(it.key(), it.value());
        else
            merged.remove(it.key());
    }
    m_values = merged;
    if (!m_file.fileIsGood() || SettingsFile::encode(merged) != onDisk) {
        QString error;
        if (!m_file.store(merged, &error))
            return saveFailed(error);
    }
    m_changes.clear();
    m_clearAll = false;
    m_lastSaveError.clear();
    return true;
}

bool Settings::saveFailed(const QString &reason)
{
    // Said once: a read-only folder would otherwise log on every change.
    if (reason != m_lastSaveError) {
        m_lastSaveError = reason;
        CrashLog::log(QStringLiteral("Unable to save settings %1: %2").arg(m_file.path(), reason));
    }
    return false;
}

Settings::Batch::Batch(Settings &settings) : m_settings(settings)
{
    ++m_settings.m_batchDepth;
}

Settings::Batch::~Batch()
{
    if (--m_settings.m_batchDepth == 0 && m_settings.m_saveDeferred)
        m_settings.save();
}

std::optional<bool> strictBool(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::Bool)
        return value.toBool();
    return std::nullopt;
}

namespace Preferences {

QString installedVersion(const Settings &s)
{
    return s.stringForKey(SettingsKeys::InstalledVersion);
}

bool includeEnglish(const Settings &s)
{
    return s.boolForKey(SettingsKeys::IncludeEnglish);
}

QString searchFrom(const Settings &s)
{
    const QString value = s.stringForKey(SettingsKeys::SearchFrom);
    return value.isNull() ? QStringLiteral("S") : value;
}

bool searchFromStart(const Settings &s)
{
    return searchFrom(s) == QLatin1String("S");
}

bool includeConjugations(const Settings &s)
{
    return strictBool(s.objectForKey(SettingsKeys::IncludeConjugations)).value_or(false);
}

bool sortByLang(const Settings &s)
{
    return strictBool(s.objectForKey(SettingsKeys::SortByLang)).value_or(true);
}

bool showTranslated(const Settings &s)
{
    return s.boolForKey(SettingsKeys::ShowTranslated);
}

QString translationLanguage(const Settings &s)
{
    return s.stringForKey(SettingsKeys::TranslationLanguage);
}

bool useHistory(const Settings &s)
{
    return strictBool(s.objectForKey(SettingsKeys::UseHistory)).value_or(true);
}

qint64 numberOfVerbsViewed(const Settings &s)
{
    return s.integerForKey(SettingsKeys::NumberOfVerbsViewed);
}

bool askedForReview(const Settings &s)
{
    return s.boolForKey(SettingsKeys::AskedForReview);
}

QString audioVersion(const Settings &s)
{
    return s.stringForKey(SettingsKeys::AudioVersion);
}

bool analyticsCollectionEnabled(const Settings &s)
{
    return strictBool(s.objectForKey(SettingsKeys::AnalyticsCollectionEnabled)).value_or(true);
}

double audioSpeed(const Settings &s)
{
    const double speed = s.doubleForKey(SettingsKeys::AudioSpeed);
    return speed > 0.0 ? speed : 1.0;
}

QString appearance(const Settings &s)
{
    static const QStringList known{QStringLiteral("system"), QStringLiteral("light"), QStringLiteral("dark")};
    const QVariant value = s.objectForKey(SettingsKeys::Appearance);
    if (!value.isValid())
        return known.first();
    const QString text = value.toString();
    if (value.typeId() != QMetaType::QString || !known.contains(text)) {
        // Once per value: the settings screen reads it on every refresh.
        static QString reported;
        if (reported != text)
            CrashLog::log(QStringLiteral("Unknown appearance \"%1\" in the settings; following the system").arg(text));
        reported = text;
        return known.first();
    }
    return text;
}

bool registerFirstRunValues(Settings &s)
{
    if (s.contains(SettingsKeys::IncludeEnglish))
        return false;
    const Settings::Batch batch(s);
    s.setBool(SettingsKeys::IncludeEnglish, true);
    s.setString(SettingsKeys::SearchFrom, QStringLiteral("S"));
    s.setBool(SettingsKeys::SearchConjugations, false);
    s.setBool(SettingsKeys::SortByLang, true);
    s.setBool(SettingsKeys::ShowTranslated, false);
    return true;
}

} // namespace Preferences

} // namespace norvella
