#pragma once

// The forms a verb would have if it followed the regular paradigm of its class,
// spelled by the regular rules. Comparing them with the final forms tells which
// forms are irregular.

#include "FormRules.h"
#include "Sources.h"

#include <QString>

#include <optional>

enum class VerbClass { Are, Ere, Ire, IreIsc };

struct RegularParadigm
{
    VerbClass verbClass = VerbClass::Are;
    // Each cell holds every spelling the rules allow, joined by variantSeparator
    // (credei / credetti, -isco and -o for an -ire verb that takes both).
    VerbForms forms;
};

// The class an -ire verb shows first: -isc- unless isc.tsv says otherwise.
VerbClass ireClass(IscClass ire);

// Nullopt for an infinitive of no class (none is shipped; -rre verbs are read as
// the -ere verbs they come from: porre as ponere, trarre as traere, -durre as -ducere).
std::optional<RegularParadigm> regularParadigm(const QString &infinitive, IscClass ire, bool stressedI);
