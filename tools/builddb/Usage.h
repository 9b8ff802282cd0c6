#pragma once

// How verbs are used beyond their forms, read from small files beside forms.tsv:
//   third-person.tsv     verbs used only in the third person (piove, accade)
//   auxiliary-notes.tsv  why a verb takes both auxiliaries, for the note beside its forms
//   homographs.tsv       verbs spelled alike with two paradigms, and verbs spelled two ways
// Readers throw SourceError with "file:line: message"; so does applying rules that
// contradict the other sources.

#include "FormRules.h"
#include "Paradigm.h"
#include "Sources.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

struct ThirdPersonVerb
{
    QString verb;
    QString kind; // weather, impersonal, things
    QString where;
};

struct AuxiliaryNote
{
    QString kind;
    QString examples;
    QString where;
};

// A cell of a homograph's second sense that differs from the first (ripartisco, not riparto).
struct SenseCells
{
    QString key; // "ripartire²"
    Tense tense = TenseCount;
    QStringList cells; // "=" keeps the first sense's cell
    QString where;
};

struct UsageRules
{
    QList<ThirdPersonVerb> thirdPerson;
    QHash<QString, AuxiliaryNote> auxiliaryNotes;
    QList<SenseCells> senses;
    QList<QPair<QString, QString>> spellings; // fuoriuscire, fuoruscire
};

struct UsageReport
{
    int thirdPerson = 0;
    int weather = 0;
    int formsRemoved = 0; // persons and imperatives the third-person rule took out
    int bothAuxiliaries = 0;
    QMap<QString, int> auxiliaryNotes; // kind -> verbs
    QStringList homographs;            // keys of the second senses
    int spellings = 0;
};

// The kinds of auxiliary-notes.tsv; the app has a note text for each.
const QStringList &auxiliaryNoteKinds();

UsageRules readUsageRules(const QString &folder);
// Adds the second sense of each homograph to the forms: a copy of the first sense with
// the cells homographs.tsv gives. Runs after the form rules, which see only the first.
void addHomographs(const UsageRules &rules, Sources &sources, UsageReport &report);
// Keeps only the third persons of the third-person verbs and gives every entry its usage.
void applyUsage(const UsageRules &rules, const FormRules &formRules, const Sources &sources, Entries &entries,
                UsageReport &report);
