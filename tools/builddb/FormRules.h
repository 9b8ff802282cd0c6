#pragma once

// Rules that fix the forms of whole classes of verbs, read from small files beside
// forms.tsv and applied to its forms before the paradigms are built:
//   stressed-i.tsv  -iare verbs with a stressed i (tu invii, che loro inviino)
//   isc.tsv         -ire verbs without -isc-, or with both; every other one takes it
//   families.tsv    compounds take the participle and passato remoto of their model,
//                   or every form of it (ridare as dare)
//   defective.tsv   forms defective verbs lack
//   variants.tsv    cells with two standard forms, or with the standard one
// Readers throw SourceError with "file:line: message"; so does applying rules that
// contradict the sources or one another.

#include "Sources.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

enum class IscClass { Isc, Plain, PlainFirst, IscFirst };

struct Family
{
    QString ending; // "cutere"
    QString model;  // "discutere"
    QStringList compounds;
    QStringList whole; // conjugated in every tense like the model (ridare: ridò, ridiedi)
    QStringList own;
    QStringList unrelated;
};

struct DefectiveRule
{
    QString verb;
    QString tense; // a tag of forms.tsv, or "finite"
    QList<int> keep; // slots (persons for "finite") that stay
    QString where;
};

struct VariantRule
{
    QString verb;
    Tense tense = TenseCount;
    QStringList cells; // "=" keeps the source's cell
    QString where;
};

struct FormRules
{
    QStringList stressedI;
    QMap<QString, IscClass> ire; // verbs listed in isc.tsv; the others take -isc-
    QList<Family> families;
    QList<DefectiveRule> defective;
    QList<VariantRule> variants;
};

// How many verbs a rule covers and how many cells of forms.tsv it changed.
struct RuleTally
{
    int verbs = 0;
    int cells = 0;
};

struct RuleReport
{
    RuleTally stressedI;      // listed verbs: tu -ii, che loro -iino
    RuleTally unstressedI;    // every other -iare verb: one i
    RuleTally iareFuture;     // -ciare/-giare: comincerò, but scierò with a stressed i
    RuleTally isc;            // -ire verbs with -isc-
    RuleTally plainIre;       // -ire verbs without it (cells: none are changed)
    RuleTally alternatingIre; // -ire verbs with both
    int families = 0;
    RuleTally compounds;      // family compounds: participle and passato remoto
    RuleTally wholeCompounds; // family compounds conjugated wholly like their model
    RuleTally defective;      // cells: forms removed
    RuleTally twoForms;       // cells: cells showing two standard forms
    RuleTally standardForm;   // cells: a less usual form replaced by the standard one
};

FormRules readFormRules(const QString &folder);
RuleReport applyFormRules(const FormRules &rules, Sources &sources);
