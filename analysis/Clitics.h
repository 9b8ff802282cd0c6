#pragma once

// The verb inside a form a learner types with its object pronouns: "lo mangio",
// "non te lo dico", "l'ho visto" before the verb; "dimmi", "mangiarlo",
// "dandoglielo" after it. The table holds the forms without them.

#include <QList>
#include <QString>

namespace norvella::Clitics {

// Which forms can carry the pronouns where they were found: before the verb only
// a finite form; joined after it an infinitive, a gerund or an imperative.
enum class Host { Finite, Infinitive, Gerund, Imperative };

struct Candidate
{
    QString form; // folded, as FormAnalysis looks it up
    Host host;
};

// The forms a folded text may be with its pronouns taken off, most likely
// first; empty when it has none.
QList<Candidate> hostsOf(const QString &folded);

// Whether a reading of a candidate is one its pronouns can go with.
bool accepts(Host host, int type, int pronoun);

} // namespace norvella::Clitics
