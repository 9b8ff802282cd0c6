#include "CrashLog.h"

#include "Database.h"
#include "VerbStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>
#include <QTextStream>

#include <cstdio>

namespace norvella {

namespace {
struct LogState
{
    bool pathChosen = false;
    QString path;
    QHash<QString, QVariant> customValues;
};

LogState &state()
{
    static LogState s;
    return s;
}
} // namespace

void CrashLog::setLogFilePath(const QString &path)
{
    state().pathChosen = true;
    state().path = path;
}

QString CrashLog::logFilePath()
{
    auto &s = state();
    if (!s.pathChosen) {
        const QString dir = VerbStore::documentsDirectory();
        s.path = dir.isEmpty() ? QString() : dir + QStringLiteral("/norvella.log");
        s.pathChosen = true;
    }
    return s.path;
}

void CrashLog::log(const QString &message)
{
    const QByteArray line = message.toUtf8();
    std::fprintf(stderr, "%s\n", line.constData());
    const QString path = logFilePath();
    if (path.isEmpty())
        return;
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::Append | QIODevice::Text)) {
        file.write(QDateTime::currentDateTimeUtc().toString(Qt::ISODate).toUtf8());
        file.write(" ");
        file.write(line);
        file.write("\n");
    }
}

void CrashLog::setCustomValue(const QString &key, const QVariant &value)
{
    state().customValues.insert(key, value);
}

QVariant CrashLog::customValue(const QString &key)
{
    return state().customValues.value(key);
}

QString errorReport(const char *fixedMessage, const QString &errorMessage, int errorCode)
{
    QString text = QString::fromUtf8(fixedMessage);
    text.replace(QStringLiteral("%@"), errorMessage);
    text.replace(QStringLiteral("%d"), QString::number(errorCode));
    return text;
}

void reportDatabaseError(const char *fixedMessage, const Database &db)
{
    CrashLog::log(errorReport(fixedMessage, db.lastErrorMessage(), db.lastErrorCode()));
}

} // namespace norvella
