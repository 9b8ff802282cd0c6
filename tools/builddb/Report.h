#pragma once

// The figures printed after a build. They inform; none of them fails the build.

#include "FormRules.h"
#include "IrregularMarks.h"
#include "Paradigm.h"
#include "Sources.h"
#include "Translations.h"
#include "Usage.h"

#include <QStringList>
#include <QTextStream>

void printReport(QTextStream &out, const Entries &entries, const Sources &sources, const RuleReport &rules,
                 const UsageReport &usage, const TranslationPlan &translations, const QStringList &frequency,
                 const QString &masterPath);
void printIrregular(QTextStream &out, const IrregularMarks &marks);
