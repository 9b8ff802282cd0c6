#pragma once

#include "Verb.h"

#include <QList>
#include <QString>

namespace norvella {

class Database;

// The irregular marks the master stores, as every view of the forms shows
// them: the screens, the exports and the command line split a cell and read
// its bitmask the same way.
namespace IrregularMarks {

// One variant of a cell ("devo" of "devo / debbo").
struct Variant
{
    QString text;
    bool irregular = false;
};

// The cell's " / " variants, each with its bit of `mask`.
QList<Variant> variants(const QString &cell, int mask);

// The plain-text marking: each irregular variant followed by a star, "devo* / debbo*".
QString starred(const QString &cell, int mask);
inline constexpr char16_t Star = u'*';

// Reads the marks of the verb's forms (in conj_order, as the forms were read)
// and its pattern. A working copy from before the columns existed logs once
// and reads as no marks; false then.
bool read(Database &db, Verb &verb, ConjugationList &formsInOrder);

// "regular (-are)", "regular (-ire, -isc-)", "irregular" or "conjugates like
// venire" in the UI language; empty when the pattern is unknown.
QString patternText(const VerbPattern &pattern);

// The pattern as the verb row shows it: the text around the model verb, which
// is a link; `sentence` is the whole line, for a screen reader.
struct PatternLine
{
    QString before;
    QString model;
    QString after;
    QString sentence;
};
PatternLine patternLine(const VerbPattern &pattern);

} // namespace IrregularMarks
} // namespace norvella
