#pragma once

#include "Verb.h"

#include <QString>
#include <QStringList>

namespace norvella {

// The four moods of the segmented control and the tenses each one shows, in
// display order. Display order is not type-id order on purpose (passato remoto
// before futuro, congiuntivo imperfetto before passato, participle before gerund).
namespace ConjugationGroups {

enum Group { Indicative = 0, Subjunctive = 1, Conditional = 2, Other = 3 };
inline constexpr int GroupCount = 4;

struct Tense
{
    const char *typeId;   // conjugation_type_id as text
    ConjugationList Verb::*list;
    const char *titleKey; // "_italian" is appended when the titles are shown in Italian
};

bool isValidGroup(int group);
// Tense blocks of a group (the grid's items): IND 8, SUB 4, CON 2, OTHER 4; 0 outside 0..3.
int tenseCount(int group);
// The tense at a block index of a group, or null outside the table.
const Tense *tense(int group, int index);
// Title key of a tense block, plain or with "_italian".
QString titleKey(int group, int index, bool showTranslated);
// The group that shows a type id ("8" → Indicative), -1 for none (the infinitive).
int groupOf(const QString &typeId);
// Key of the segment title of a group ("type.indicative.full" ...), empty outside 0..3.
QString groupTitleKey(int group);
// The mood's name as the tense titles show it: in Italian with "ShowTranslated".
QString groupTitleKey(int group, bool showTranslated);
// Analytics value of a segment; any other index gives "CONJUGATIONS_NA".
QString analyticsValue(int segment);

// Sorts forms read in conj_order into the twenty tense lists of the verb,
// replacing what each list held. Forms of any other type are dropped.
void distribute(Verb &verb, const ConjugationList &forms);

} // namespace ConjugationGroups
} // namespace norvella
