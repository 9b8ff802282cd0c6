#pragma once

// Writes the master database: schema, pronouns, verbs with translations, forms.

#include "IrregularMarks.h"
#include "Paradigm.h"
#include "Sources.h"

#include <QHash>
#include <QString>

// Throws SourceError (bad sources) or std::runtime_error (SQLite failures).
void writeMaster(const QString &path, const QString &schemaSql, const Entries &entries,
                 const QHash<QString, Translation> &translations, const IrregularMarks &marks,
                 const QStringList &ranked);
