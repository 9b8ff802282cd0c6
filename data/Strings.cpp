#include "Strings.h"

#include "CrashLog.h"
#include "Verb.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

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
            CrashLog::log(QStringLiteral("Unable to read the string table %1: %2")
                                  .arg(path, error.error != QJsonParseError::NoError ? error.errorString()
                                                                                     : QStringLiteral("not an object")));
            continue;
        }
        auto &entries = m_tables[language];
        const QJsonObject object = doc.object();
        for (auto it = object.begin(); it != object.end(); ++it) {
            // A blank or non-text entry would show as nothing; without it the English text shows.
            if (!it.value().isString() || it.value().toString().isEmpty()) {
                CrashLog::log(QStringLiteral("String table %1: no text for \"%2\"").arg(path, it.key()));
                continue;
            }
            entries.insert(it.key(), it.value().toString());
        }
    }
    const QStringList preferred = PreferredLanguages::get();
    selectLanguage(preferred);
}

QStringList Strings::availableLanguages()
{
    return {QStringLiteral("en"), QStringLiteral("it"), QStringLiteral("de"), QStringLiteral("fr"),
            QStringLiteral("es"), QStringLiteral("nl"), QStringLiteral("pt"), QStringLiteral("tr")};
}

QString Strings::languageFor(const QStringList &preferredLanguages)
{
    static const QStringList available = availableLanguages();
    for (const QString &preferred : preferredLanguages) {
        const QString language = preferred.section(QRegularExpression(QStringLiteral("[-_.@]")), 0, 0).toLower();
        if (available.contains(language))
            return language;
    }
    return QStringLiteral("en");
}

void Strings::selectLanguage(const QStringList &preferredLanguages)
{
    m_language = languageFor(preferredLanguages);
}

QString Strings::upper(const QString &text, const QString &language)
{
    if (language != QLatin1String("tr"))
        return text.toUpper();
    QString dotted = text;
    dotted.replace(u'i', QChar(0x0130));
    return dotted.toUpper();
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
