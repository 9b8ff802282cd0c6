#pragma once

#include <QList>
#include <QStringList>
#include <QtGlobal>

namespace norvella {

// One drilled form: a verb's tense (conjugation_type_id) and person (pronoun
// id), with the scheduler's state. `due` is a day number (QDate::toJulianDay).
struct PracticeCard
{
    qint64 id = 0;
    qint64 verbId = 0;
    int tense = 0;
    int person = 0;
    int repetitions = 0;
    int interval = 0;
    double easiness = 2.5;
    qint64 due = 0;
    int lapses = 0;
    bool operator==(const PracticeCard &) const = default;
};

// One answer: when (seconds since 1970, UTC), to which card, the grade given
// (0-5) and how the typed answer compared (PracticeResult).
struct PracticeReview
{
    qint64 id = 0;
    qint64 cardId = 0;
    qint64 time = 0;
    int quality = 0;
    int result = 0;
    bool operator==(const PracticeReview &) const = default;
};

enum class PracticeResult { Wrong = 0, Almost = 1, Correct = 2 };

// The learner's practice rows as an update carries them from one working
// copy to the next. `present` tells a copy that never practised from one
// whose tables are empty after a reset.
struct PracticeRows
{
    bool present = false;
    QList<PracticeCard> cards;
    QList<PracticeReview> reviews;
    bool operator==(const PracticeRows &) const = default;
};

// The practice tables live in the user's working copy beside favourite and
// history; the master never has them, so they are created on first use.
namespace PracticeTables {

inline constexpr int SchemaVersion = 1;
inline constexpr char Cards[] = "practice_card";
inline constexpr char Reviews[] = "practice_review";
inline constexpr char Meta[] = "practice_meta";

// CREATE ... IF NOT EXISTS statements, then the one that records the version.
QStringList createStatements();
QStringList tableNames();

} // namespace PracticeTables

} // namespace norvella
