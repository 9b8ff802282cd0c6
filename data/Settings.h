#pragma once

#include "SettingsFile.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

namespace norvella {

// The user's key-value store. Values keep their type across restarts (a bool
// stays a bool, 1 stays an integer and 0.75 a double), and every change is
// written to disk at once through an atomic replace, so a crash never leaves
// half a file behind. Several processes may share the file: a save writes only
// the keys this process changed, on top of what the file holds at that moment.
// A save that fails keeps the change in memory and the next save writes it.
class Settings
{
public:
    explicit Settings(QString filePath);
    ~Settings();
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;

    // The app-wide store in the platform's config folder.
    static Settings &standard();
    static QString standardFilePath();

    const QString &filePath() const { return m_file.path(); }

    // Untyped read: invalid when absent.
    QVariant objectForKey(const QString &key) const;
    bool contains(const QString &key) const { return m_values.contains(key); }
    QString stringForKey(const QString &key) const;
    bool boolForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;

    void setObject(const QString &key, const QVariant &value);
    void setString(const QString &key, const QString &value) { setObject(key, value); }
    void setBool(const QString &key, bool value) { setObject(key, value); }
    void setInteger(const QString &key, qint64 value) { setObject(key, QVariant::fromValue(value)); }
    void setDouble(const QString &key, double value) { setObject(key, value); }
    void removeObject(const QString &key);
    // For a value that changes at every tap (a counter): written within a
    // moment, with whatever else changes by then, so the tap does not wait
    // for the disk. A kill in that moment costs only this value's last step.
    void setIntegerSoon(const QString &key, qint64 value);
    static constexpr int SoonSaveDelayMs = 2000;
    // True once every change of this process is on disk.
    bool synchronize();

    // Drop the in-memory values and read the file again, as a restart would.
    void reload();
    void clear();

    // Changes made while a batch is alive are written once, when the outermost one ends.
    class Batch
    {
    public:
        explicit Batch(Settings &settings);
        ~Batch();
        Batch(const Batch &) = delete;
        Batch &operator=(const Batch &) = delete;

    private:
        Settings &m_settings;
    };

private:
    bool save();
    bool saveFailed(const QString &reason);

    SettingsFile m_file;
    QMap<QString, QVariant> m_values;
    // What this process set, or removed (an invalid value), since it last read the file.
    QMap<QString, QVariant> m_changes;
    bool m_clearAll = false;
    int m_batchDepth = 0;
    std::unique_ptr<QObject> m_soonContext;
    bool m_soonScheduled = false;
    bool m_saveDeferred = false;
    QString m_lastSaveError;
};

// Every key the app stores, with what an absent value reads as. Readers go
// through these functions so the rules live in one place.
namespace SettingsKeys {
inline const QString InstalledVersion = QStringLiteral("installed_version");
inline const QString IncludeEnglish = QStringLiteral("IncludeEnglish");
inline const QString SearchFrom = QStringLiteral("SearchFrom");
inline const QString SearchConjugations = QStringLiteral("SearchConjugations");
inline const QString IncludeConjugations = QStringLiteral("IncludeConjugations");
inline const QString SortByLang = QStringLiteral("SortByLang");
inline const QString ShowTranslated = QStringLiteral("ShowTranslated");
inline const QString TranslationLanguage = QStringLiteral("translation_language");
inline const QString UseHistory = QStringLiteral("UseHistory");
inline const QString AnalyticsCollectionEnabled = QStringLiteral("analytics_collection_enabled");
inline const QString AudioSpeed = QStringLiteral("audio_speed");
inline const QString AudioVersion = QStringLiteral("audio_version");
inline const QString NumberOfVerbsViewed = QStringLiteral("number_of_verbs_viewed");
inline const QString AskedForReview = QStringLiteral("asked_for_review");
inline const QString TimeAudioWarning = QStringLiteral("time_audio_warning");
inline const QString Appearance = QStringLiteral("Appearance");
}

namespace Preferences {
QString installedVersion(const Settings &s);
bool includeEnglish(const Settings &s);
// "S" matches from the start of a word; anything else matches anywhere.
QString searchFrom(const Settings &s);
bool searchFromStart(const Settings &s);
bool includeConjugations(const Settings &s);
bool sortByLang(const Settings &s);
bool showTranslated(const Settings &s);
// Empty means the automatic choice.
QString translationLanguage(const Settings &s);
bool useHistory(const Settings &s);
qint64 numberOfVerbsViewed(const Settings &s);
bool askedForReview(const Settings &s);
QString audioVersion(const Settings &s);
// On unless explicitly switched off.
bool analyticsCollectionEnabled(const Settings &s);
// Speech rate factor; 0, negative or absent means normal speed.
double audioSpeed(const Settings &s);
// "system", "light" or "dark"; anything else stored reads as "system".
QString appearance(const Settings &s);

// First-run values; written only when "IncludeEnglish" has never been set.
bool registerFirstRunValues(Settings &s);
}

// A bool read through the untyped object counts only when it really is a bool.
std::optional<bool> strictBool(const QVariant &value);

} // namespace norvella
