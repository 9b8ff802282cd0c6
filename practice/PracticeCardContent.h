#pragma once

#include "PracticeTables.h"

#include <QList>
#include <QString>

namespace norvella {

class Database;
class FormAnalysis;
class Settings;

// What a drill shows of one card: the verb, the tense and person asked, and
// the cell of the table that answers it.
struct PracticeCardContent
{
    bool found = false;
    QString infinitive;
    QString translation;
    QString pronoun;
    QString cell;      // "devo / debbo"
    int irregular = 0; // bit n: the n-th spelling of the cell is irregular
};

// One option of the Recognise drill: a verb, tense and person.
struct RecogniseOption
{
    qint64 verbId = 0;
    QString infinitive;
    int tense = 0;
    int person = 0;
    bool right = false;
    bool operator==(const RecogniseOption &) const = default;
};

namespace PracticeCards {

PracticeCardContent load(Database &db, const PracticeCard &card, const Settings &settings);

// The cell with its irregular spellings in bold and underlined, as rich text.
QString markedCell(const QString &cell, int irregular);

// The tenses a learner can choose, in the order the conjugation screen shows them.
QList<int> practisableTenses();
// "tense.ind" ... and "tense.ind.presente" ...; empty for another type.
QString moodKey(int tense);
QString tenseKey(int tense);
// The Italian subject pronoun of a person 1-6 ("lui/lei"); empty for 0.
QString personName(int person);

// Four options for the form `shown` of `card`: the card's own reading and
// three others of the same verb (other tenses in the same person, then other
// persons) that the form cannot be, so no wrong option is secretly right.
// `seed` fixes their order.
QList<RecogniseOption> recogniseOptions(Database &db, const FormAnalysis &analysis, const PracticeCard &card,
                                        const QString &infinitive, const QString &shown, quint32 seed);

} // namespace PracticeCards

} // namespace norvella
