#include "PracticeTables.h"

namespace norvella::PracticeTables {

QStringList createStatements()
{
    return {
        QStringLiteral("CREATE TABLE IF NOT EXISTS practice_meta (key TEXT PRIMARY KEY, value INTEGER)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS practice_card (_id INTEGER PRIMARY KEY, verbid INTEGER NOT NULL, "
                       "tense INTEGER NOT NULL, person INTEGER NOT NULL, repetitions INTEGER NOT NULL DEFAULT 0, "
                       "interval INTEGER NOT NULL DEFAULT 0, easiness REAL NOT NULL DEFAULT 2.5, "
                       "due INTEGER NOT NULL DEFAULT 0, lapses INTEGER NOT NULL DEFAULT 0)"),
        // One card per form: a second row for the same form would be drilled twice.
        QStringLiteral("CREATE UNIQUE INDEX IF NOT EXISTS practice_card_form ON practice_card(verbid, tense, person)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS practice_card_due ON practice_card(due)"),
        QStringLiteral("CREATE TABLE IF NOT EXISTS practice_review (_id INTEGER PRIMARY KEY, cardid INTEGER NOT NULL, "
                       "time INTEGER NOT NULL, quality INTEGER NOT NULL, result INTEGER NOT NULL)"),
        QStringLiteral("CREATE INDEX IF NOT EXISTS practice_review_time ON practice_review(time)"),
        QStringLiteral("INSERT OR REPLACE INTO practice_meta(key, value) VALUES('schema_version', %1)").arg(SchemaVersion),
    };
}

QStringList tableNames()
{
    return {QLatin1String(Cards), QLatin1String(Reviews), QLatin1String(Meta)};
}

} // namespace norvella::PracticeTables
