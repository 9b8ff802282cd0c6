#pragma once

#include "Verb.h"

#include <QStringList>

namespace norvella {

class Database;
class Settings;

// What happens to the books when the conjugation screen shows a verb: the
// view counter with its one-off review request, the forms read into the
// verb, and the history row written and the history trimmed.
namespace VerbViewBookkeeping {

// At most this many history rows survive a showing; the bound is the row
// after them, and every row sharing its timestamp goes too.
inline constexpr int HistoryPruneRow = 52;
inline constexpr qint64 ReviewRequestThreshold = 21;

// Counts one more verb viewed and asks once for a review from the 21st on.
// Skipped when the launch arguments contain "ui_test". True when it asked.
bool countView(Settings &settings, const QStringList &launchArguments);

// Seconds since 1 January 2001 UTC, the reference date of history timestamps.
double referenceTimestamp();

// Reads every form of the verb in conj_order and sorts them into its tense
// lists. False when the query cannot run (the lists are then untouched).
bool readConjugations(Database &db, Verb &verb);

// Replaces the verb's history row with one at `timestamp` and trims the
// history. Does nothing (and succeeds) when history is switched off.
bool writeHistory(Database &db, const Settings &settings, qint64 verbId, double timestamp);

// The whole database turn of a showing: read, history, error report (a lost
// history entry is also shown to the user), close.
void loadTurn(Database &db, const Settings &settings, Verb &verb);

} // namespace VerbViewBookkeeping
} // namespace norvella
