#include "Strings.h"

#include "CrashLog.h"
#include "Verb.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace norvella {

Strings &Strings::shared()
{
    static Strings strings;
    return strings;
}

Strings::Strings()
{
    for (const QString &language : availableLanguages()) {
        const QString path = QStringLiteral(":/norvella/strings/%1.json").arg(language);
        QFile file(path);
        QJsonParseError error{};
        const QJsonDocument doc = file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll(), &error)
                                                                 : QJsonDocument();
        if (!doc.isObject()) {
            CrashLog::log(QStringLiteral("Unable to read the string table %1").arg(path));
            continue;
        }
        auto &entries = m_tables[language];
        const QJsonObject object = doc.object();
        for (auto it = object.begin(); it != object.end(); ++it)
            entries.insert(it.key(), it.value().toString());
    }
    const QStringList preferred = PreferredLanguages::get();
    selectLanguage(preferred);
}

void Strings::selectLanguage(const QStringList &preferredLanguages)
{
    m_language = !preferredLanguages.isEmpty() && preferredLanguages.first().startsWith(QLatin1String("it"))
            ? QStringLiteral("it")
            : QStringLiteral("en");
}

QString Strings::lookup(const QString &key) const
{
    const auto chosen = m_tables.constFind(m_language);
    if (chosen != m_tables.constEnd()) {
        const auto it = chosen->constFind(key);
        if (it != chosen->constEnd())
            return *it;
    }
    const auto english = m_tables.constFind(QStringLiteral("en"));
    if (english != m_tables.constEnd()) {
        const auto it = english->constFind(key);
        if (it != english->constEnd())
            return *it;
    }
    return key;
}

QStringList Strings::keys(const QString &language) const
{
    return m_tables.value(language).keys();
}

} // namespace norvella
