#pragma once

// A verb's whole conjugation as plain text, irregular forms marked, for the
// command line.

#include <QString>

struct sqlite3;

namespace norvella {

struct ConjugationText
{
    bool found = false;
    QString text;
    QString error; // the database could not be read
};

// The verb by its infinitive, compared as FormAnalysis::fold compares forms.
ConjugationText conjugationText(sqlite3 *db, const QString &infinitive);

// "regular (-are)", "irregular", "conjugates like venire".
QString patternSummary(const QString &pattern, const QString &model);

} // namespace norvella
