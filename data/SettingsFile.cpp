#include "SettingsFile.h"

#include "CrashLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cerrno>
#include <unistd.h>

namespace norvella {

namespace {

// Far above any real settings file; it only bounds what a damaged one can make us read.
constexpr qint64 MaxFileSize = 4 * 1024 * 1024;

QJsonObject encodeValue(const QVariant &value)
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

std::optional<QVariant> decodeValue(const QJsonValue &json)
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

struct Parsed
{
    enum Status { Missing, Good, Damaged } status = Missing;
    // For a damaged file, whatever entries could still be read.
    SettingsFile::Values values;
    QString problem;
};

Parsed parse(const QString &path)
{
    Parsed result;
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return result;
    result.status = Parsed::Damaged;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.problem = file.errorString();
        return result;
    }
    const QByteArray bytes = file.read(MaxFileSize + 1);
    if (file.error() != QFileDevice::NoError) {
        result.problem = file.errorString();
        return result;
    }
    if (bytes.isEmpty()) {
        result.problem = QStringLiteral("the file is empty");
        return result;
    }
    if (bytes.size() > MaxFileSize) {
        result.problem = QStringLiteral("the file is larger than %1 bytes").arg(MaxFileSize);
        return result;
    }
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        result.problem = QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset);
        return result;
    }
    if (!doc.isObject()) {
        result.problem = QStringLiteral("not a JSON object");
        return result;
    }
    QStringList malformed;
    const QJsonObject root = doc.object();
    for (auto it = root.begin(); it != root.end(); ++it) {
        if (auto value = decodeValue(it.value()))
            result.values.insert(it.key(), *value);
        else
            malformed << it.key();
    }
    if (!malformed.isEmpty()) {
        result.problem = QStringLiteral("malformed values for %1").arg(malformed.join(QStringLiteral(", ")));
        return result;
    }
    result.status = Parsed::Good;
    return result;
}

bool removeEntry(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        return QDir(path).removeRecursively();
    return QFile::remove(path);
}

} // namespace

SettingsFile::SettingsFile(QString path) : m_path(std::move(path)) {}

QByteArray SettingsFile::encode(const Values &values)
{
    QJsonObject root;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        root.insert(it.key(), encodeValue(it.value()));
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

bool SettingsFile::isWhole() const
{
    return parse(m_path).status == Parsed::Good;
}

SettingsFile::Values SettingsFile::load(bool repair)
{
    const Parsed file = parse(m_path);
    m_fileIsGood = file.status == Parsed::Good;
    if (m_fileIsGood) {
        m_lastLogged.clear();
        m_movedAside = false;
        return file.values;
    }
    const Parsed backup = parse(backupPath());
    const bool backupIsGood = backup.status == Parsed::Good;
    if (file.status == Parsed::Missing) {
        // Right after moving a damaged file aside its absence needs no second line.
        if (m_movedAside)
            return backup.values;
        if (backupIsGood) {
            logOnce(QStringLiteral("Settings file %1 is missing; using the last good copy %2").arg(m_path, backupPath()));
        } else if (backup.status == Parsed::Damaged) {
            logOnce(QStringLiteral("Settings file %1 is missing and its last good copy %2 is damaged (%3); "
                                   "keeping the %4 values it still holds")
                            .arg(m_path, backupPath(), backup.problem)
                            .arg(backup.values.size()));
        }
        return backup.values;
    }

    // Entries that still read from the damaged file are newer than the last-good copy.
    Values values = backup.values;
    for (auto it = file.values.cbegin(); it != file.values.cend(); ++it)
        values.insert(it.key(), it.value());
    QString outcome;
    if (backupIsGood)
        outcome = QStringLiteral("restored from the last good copy %1").arg(backupPath());
    else if (!values.isEmpty())
        outcome = QStringLiteral("kept the %1 values that could still be read").arg(values.size());
    else
        outcome = QStringLiteral("starting with default settings");
    if (backupIsGood && !file.values.isEmpty())
        outcome += QStringLiteral(" and the %1 values that could still be read").arg(file.values.size());
    const QString moved = repair ? moveAside() : QStringLiteral("left in place for now");
    logOnce(QStringLiteral("Settings file %1 is damaged (%2); %3; %4").arg(m_path, file.problem, moved, outcome));
    return values;
}

QString SettingsFile::moveAside()
{
    const QFileInfo info(m_path);
    const QString prefix = info.fileName() + QStringLiteral(".corrupt-");
    const QStringList older = info.dir().entryList({prefix + QLatin1Char('*')},
                                                   QDir::AllEntries | QDir::Hidden | QDir::System);
    const QString stamp = m_path + QStringLiteral(".corrupt-")
            + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = stamp;
    for (int n = 2; QFileInfo::exists(target) || QFileInfo(target).isSymLink(); ++n)
        target = stamp + QLatin1Char('-') + QString::number(n);
    if (::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(target).constData()) != 0)
        return QStringLiteral("could not move it aside (%1)").arg(qt_error_string(errno));
    m_movedAside = true;
    // One damaged copy is enough to look into; more would only pile up.
    for (const QString &name : older)
        removeEntry(info.dir().filePath(name));
    return QStringLiteral("moved to ") + target;
}

bool SettingsFile::store(const Values &values, QString *error)
{
    const QByteArray bytes = encode(values);
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    // commit() can report success after its own final flush failed (a full disk),
    // replacing a good file with an empty one; so every byte must be on disk first.
    bool written = file.write(bytes) == bytes.size() && file.flush() && file.error() == QFileDevice::NoError;
    if (!written) {
        *error = file.errorString();
    } else if (::fsync(file.handle()) != 0) {
        *error = qt_error_string(errno);
        written = false;
    }
    if (!written) {
        file.cancelWriting();
        return false;
    }
    const bool replacingGoodFile = m_fileIsGood;
    if (replacingGoodFile)
        refreshBackup();
    if (!file.commit()) {
        *error = file.errorString();
        return false;
    }
    m_fileIsGood = true;
    // With no good file to keep, the new one is the best last-good copy there is.
    if (!replacingGoodFile)
        refreshBackup();
    return true;
}

void SettingsFile::refreshBackup()
{
    const QByteArray from = QFile::encodeName(m_path);
    const QByteArray to = QFile::encodeName(backupPath());
    // A hard link costs no copy and no space: the file about to be replaced lives
    // on under the second name once the new one is renamed over it.
    ::unlink(to.constData());
    if (::link(from.constData(), to.constData()) == 0)
        return;
    const QString linkError = qt_error_string(errno);
    if (QFile::copy(m_path, backupPath()))
        return;
    if (!m_backupFailureLogged) {
        m_backupFailureLogged = true;
        CrashLog::log(QStringLiteral("Unable to keep a last good copy of the settings at %1: %2")
                              .arg(backupPath(), linkError));
    }
}

void SettingsFile::logOnce(const QString &message)
{
    if (message == m_lastLogged)
        return;
    m_lastLogged = message;
    CrashLog::log(message);
}

} // namespace norvella
