#pragma once

#include "Verb.h"

#include <QString>
#include <QStringList>

namespace norvella {

class Settings;

// Every translation language in one table: which field of a Verb holds it,
// which columns of the verb table the lists order and search by. The verb
// row, the alphabetical list, the favourites and the search all choose from
// here, so a language cannot map to one column on one screen and another
// elsewhere.
struct TranslationLanguage
{
    const char *code;
    QString Verb::*text;
    // The column of the translation and its folded form; English has no
    // folded column and searches and orders by its own.
    const char *column;
    const char *foldedColumn;
    // What the alphabetical list and the favourites order by when sorting by
    // the translation: the folded column, except for Portuguese, whose plain
    // column gives an accented initial a section of its own.
    const char *listOrderColumn;
    // Chosen when the device's language starts with the code. Turkish is
    // only ever chosen by the setting.
    bool automatic;
    // The list and search statements read its columns; the others fall
    // back to English there.
    bool inListStatements;
};

namespace TranslationLanguages {

const TranslationLanguage &english();
// The entry whose code is exactly `code`, or null.
const TranslationLanguage *withCode(const QString &code);

// The translation shown beside the infinitive: the setting when it names a
// language, else the first preferred language's prefix among the automatic
// ones, else English. No preferred language at all is a fatal error.
const TranslationLanguage &shown(const Settings &settings, const QStringList &preferredLanguages);

// The language whose columns the lists and the search read: the setting, or
// the first preferred language when it is empty, by prefix; English when
// neither names one the statements read.
const TranslationLanguage &listed(const Settings &settings, const QStringList &preferredLanguages);

} // namespace TranslationLanguages
} // namespace norvella
