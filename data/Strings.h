#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace norvella {

// Localised texts by dotted key. One table per UI language; a key missing from
// the chosen table falls back to English, and a key missing everywhere shows
// as itself so the gap is visible rather than blank.
class Strings
{
public:
    static Strings &shared();
    static QString text(const QString &key) { return shared().lookup(key); }

    QString lookup(const QString &key) const;
    // "it" when the first preferred language is Italian, otherwise "en".
    QString language() const { return m_language; }
    void selectLanguage(const QStringList &preferredLanguages);
    QStringList keys(const QString &language) const;
    static QStringList availableLanguages() { return {QStringLiteral("en"), QStringLiteral("it")}; }

private:
    Strings();
    QHash<QString, QString> &table(const QString &language);

    QString m_language = QStringLiteral("en");
    QHash<QString, QHash<QString, QString>> m_tables;
};

} // namespace norvella
