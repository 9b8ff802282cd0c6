#pragma once

// Which forms depart from the regular paradigm of their verb's class, and what each
// verb is as a whole: regular, irregular, or conjugated like a model verb.

#include "FormRules.h"
#include "Paradigm.h"
#include "Sources.h"

#include <QHash>
#include <QList>
#include <QString>

struct VerbPattern
{
    // "are", "ere", "ire" or "isc" for a verb with no irregular form, else "irregular".
    QString pattern;
    // The verb an irregular one conjugates like (venire for convenire), or empty.
    QString model;
};

struct IrregularMarks
{
    // Per verb, parallel to Entry::rows: bit n set when the n-th form of the row's
    // cell ("devo / debbo") is irregular; 0 for a regular row.
    QHash<QString, QList<quint8>> rows;
    QHash<QString, VerbPattern> verbs;
    qsizetype irregularRows = 0;
    qsizetype rowCount = 0;
    QHash<QString, int> verbsByPattern; // "are" ... "irregular", "like a model"
};

IrregularMarks markIrregular(const Entries &entries, const Sources &sources, const FormRules &rules);
