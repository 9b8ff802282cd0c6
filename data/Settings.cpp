#include "Settings.h"

#include "CrashLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace norvella {

namespace {

QJsonObject encode(const QVariant &value)
{
    QJsonObject entry;
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        entry.insert(QStringLiteral("type"), QStringLiteral("bool"));
        entry.insert(QStringLiteral("value"), value.toBool());
        break;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        entry.insert(QStringLiteral("type"), QStringLiteral("int"));
        // As text: a double in JSON would lose integers above 2^53.
        entry.insert(QStringLiteral("value"), QString::number(value.toLongLong()));
        break;
    case QMetaType::Double:
    case QMetaType::Float:
        entry.insert(QStringLiteral("type"), QStringLiteral("double"));
        entry.insert(QStringLiteral("value"), value.toDouble());
        break;
    default:
        entry.insert(QStringLiteral("type"), QStringLiteral("string"));
        entry.insert(QStringLiteral("value"), value.toString());
    }
    return entry;
}

std::optional<QVariant> decode(const QJsonValue &json)
{
    const QJsonObject entry = json.toObject();
    const QString type = entry.value(QStringLiteral("type")).toString();
    const QJsonValue value = entry.value(QStringLiteral("value"));
    if (type == QLatin1String("bool") && value.isBool())
        return QVariant(value.toBool());
    if (type == QLatin1String("int") && value.isString()) {
        bool ok = false;
        const qint64 n = value.toString().toLongLong(&ok);
        if (ok)
            return QVariant::fromValue(n);
    }
    if (type == QLatin1String("double") && value.isDouble())
        return QVariant(value.toDouble());
    if (type == QLatin1String("string") && value.isString())
        return QVariant(value.toString());
    return std::nullopt;
}

} // namespace

Settings::Settings(QString filePath) : m_filePath(std::move(filePath))
{
    reload();
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
    m_values.clear();
    QFile file(m_filePath);
    if (!file.exists())
        return;
    QString problem;
    if (!file.open(QIODevice::ReadOnly)) {
        problem = file.errorString();
    } else {
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(file.readAll(), &error);
        file.close();
        if (error.error != QJsonParseError::NoError || !doc.isObject()) {
            problem = error.error != QJsonParseError::NoError ? error.errorString() : QStringLiteral("not an object");
        } else {
            const QJsonObject root = doc.object();
            for (auto it = root.begin(); it != root.end(); ++it) {
                if (auto value = decode(it.value()))
                    m_values.insert(it.key(), *value);
                else
                    CrashLog::log(QStringLiteral("Settings: ignoring malformed value for \"%1\"").arg(it.key()));
            }
            return;
        }
    }
    // Keep the unreadable file for inspection rather than overwriting it.
    const QString aside = m_filePath + QStringLiteral(".corrupt-")
            + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const bool moved = QFile::rename(m_filePath, aside);
    CrashLog::log(QStringLiteral("Settings file %1 is unreadable (%2); %3, starting with empty settings")
                          .arg(m_filePath, problem, moved ? QStringLiteral("moved to ") + aside
                                                          : QStringLiteral("could not move it aside")));
}

void Settings::clear()
{
    m_values.clear();
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
    save();
}

void Settings::removeObject(const QString &key)
{
    if (m_values.remove(key) > 0)
        save();
}

bool Settings::synchronize()
{
    return save();
}

bool Settings::save()
{
    QJsonObject root;
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
        root.insert(it.key(), encode(it.value()));
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    QSaveFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly)) {
        CrashLog::log(QStringLiteral("Unable to save settings to %1: %2").arg(m_filePath, file.errorString()));
        return false;
    }
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        CrashLog::log(QStringLiteral("Unable to save settings to %1: %2").arg(m_filePath, file.errorString()));
        return false;
    }
    return true;
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

bool registerFirstRunValues(Settings &s)
{
    if (s.contains(SettingsKeys::IncludeEnglish))
        return false;
    s.setBool(SettingsKeys::IncludeEnglish, true);
    s.setString(SettingsKeys::SearchFrom, QStringLiteral("S"));
    s.setBool(SettingsKeys::SearchConjugations, false);
    s.setBool(SettingsKeys::SortByLang, true);
    s.setBool(SettingsKeys::ShowTranslated, false);
    return true;
}

} // namespace Preferences

} // namespace norvella
