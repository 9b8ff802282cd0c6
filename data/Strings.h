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
    // The first of the preferred languages ("de-AT", "pt_BR", "tr") that has a
    // table, matched by its language part; English when none has one.
    QString language() const { return m_language; }
    void selectLanguage(const QStringList &preferredLanguages);
    static QString languageFor(const QStringList &preferredLanguages);
    QStringList keys(const QString &language) const;
    static QStringList availableLanguages();
    // Upper case as the chosen language writes it: Turkish dotted i becomes İ.
    // Qt's own upper-casing of text (and the font's AllUppercase) knows no locale.
    static QString upper(const QString &text, const QString &language);

private:
    Strings();
    QHash<QString, QString> &table(const QString &language);

    QString m_language = QStringLiteral("en");
    QHash<QString, QHash<QString, QString>> m_tables;
};

} // namespace norvella
