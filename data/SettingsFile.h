#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

namespace norvella {

// The settings store as it lies on disk: the JSON file itself, a last-good copy
// beside it ("settings.json.bak") and at most one damaged file kept for
// inspection ("settings.json.corrupt-<time>"). Nothing here keeps values in
// memory; Settings decides what to read and write and when.
class SettingsFile
{
public:
    using Values = QMap<QString, QVariant>;

    explicit SettingsFile(QString path);

    const QString &path() const { return m_path; }
    QString backupPath() const { return m_path + QStringLiteral(".bak"); }
    QString lockPath() const { return m_path + QStringLiteral(".lock"); }

    // The values on disk. A damaged or missing file falls back to the last-good
    // copy; with repair (only while holding the lock) a damaged file is moved aside
    // so the next write starts clean.
    Values load(bool repair);
    // Whether the file is there, readable and whole right now.
    bool isWhole() const;
    // Whether the last load found the file itself readable and whole.
    bool fileIsGood() const { return m_fileIsGood; }

    // Writes the values atomically. The file being replaced becomes the last-good
    // copy when the last load found it whole; otherwise the new file does. On
    // failure the old file is untouched and error holds the reason.
    bool store(const Values &values, QString *error);

    static QByteArray encode(const Values &values);

private:
    void refreshBackup();
    QString moveAside();
    void logOnce(const QString &message);

    QString m_path;
    bool m_fileIsGood = false;
    QString m_lastLogged;
    bool m_movedAside = false;
    bool m_backupFailureLogged = false;
};

} // namespace norvella
