#pragma once

#include "PracticeTables.h"

#include <QString>
#include <QStringList>

namespace norvella {

struct AnswerVerdict
{
    PracticeResult result = PracticeResult::Wrong;
    // The spelling of the cell the answer matched (or came nearest to, for
    // an accent slip); empty when wrong.
    QString matched;
};

namespace AnswerCheck {

// Every spelling a cell of the table stands for: its " / " variants, each
// with both endings of a gender slash ("mi sono alzato/a" gives "mi sono
// alzato" and "mi sono alzata"), so both auxiliaries and both genders count.
QStringList acceptedSpellings(const QString &cell);

// Case, spacing and the typographic apostrophe never matter; a leading
// subject pronoun ("io vado") is allowed. Right but for accents ("e" for
// "è") is Almost.
AnswerVerdict check(const QString &typed, const QString &cell);

} // namespace AnswerCheck

} // namespace norvella
