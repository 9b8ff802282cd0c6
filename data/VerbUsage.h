#pragma once

#include "Verb.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace norvella {

class Database;

// What the screens and exports print about how a verb is used: the notes under
// its name and the dashes in place of persons it is not used in.
namespace VerbUsageNotes {

// Stands for a person or a tense Italian does not use.
inline const QString dash = QStringLiteral("—");

// Reads the verb's row of verb_usage into verb.usage (no row: nothing to say).
// A working copy from before the table existed logs once and reads as no row.
bool read(Database &db, Verb &verb);

// The notes under the verb's name, in the UI language, one line each.
QStringList notes(const Verb &verb);

// The line under the dash of a tense without forms.
QString noFormsNote(const Verb &verb, const QString &typeId);

// One row of a tense as printed: a form of the list, or a dash for a person the
// verb is not used in.
struct Row
{
    QString pronoun;
    QString form;
    int index = -1; // in the tense's list; -1 for a dash
};
// The rows of a tense: the list itself, or for a verb used only in the third
// person every person of a finite tense, the ones it lacks with a dash.
QList<Row> rows(const Verb &verb, const QString &typeId, const ConjugationList &list);

} // namespace VerbUsageNotes
} // namespace norvella
