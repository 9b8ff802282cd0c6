#pragma once

// Verbs the imported lexicon lacks, conjugated by rule instead of typed cell by cell:
// derived.tsv lists each with "regular" (the -are, -ere or -ire endings) or the verb
// whose every form it shares but for the prefix (sottoridere like ridere). The class
// rules of FormRules (-isc-, stressed i, families) then apply to them as to the others.

#include "Sources.h"

#include <QString>

// The simple tenses of a regular verb; throws SourceError for an infinitive whose
// spelling the endings alone cannot give (vincere: vinco but vinci).
VerbForms regularForms(const QString &infinitive);

// Adds the verbs of derived.tsv to sources.forms; returns how many it added.
int addDerivedVerbs(const QString &path, Sources &sources);
