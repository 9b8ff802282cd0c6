#pragma once

// Matches the rows of the translation files to the verbs of the database.

#include "Paradigm.h"
#include "Sources.h"

#include <QHash>
#include <QStringList>

struct TranslationPlan
{
    QHash<QString, Translation> byVerb;
    // Rows for package entries left out on purpose, and for verbs used only with a
    // clitic whose pronominal verb has its own translation or is not listed.
    QStringList ignored;
    QStringList moved;   // "accorgere -> accorgersi"
};

// Throws SourceError listing every row whose verb is not in the database.
TranslationPlan planTranslations(const Entries &entries, const Sources &sources);
