#pragma once

#include "PracticeTables.h"

#include <QHash>
#include <QList>
#include <QTimeZone>

namespace norvella {

// What the progress page shows, worked out from the cards and the review log.
namespace PracticeProgress {

struct TenseAccuracy
{
    int tense = 0;
    // One value per week, oldest first, the last being the current week:
    // the share of answers typed right, or -1 for a week without answers.
    QList<double> weekly;
    bool operator==(const TenseAccuracy &) const = default;
};

struct CostlyVerb
{
    qint64 verbId = 0;
    int misses = 0; // answers not right, accents included
    int answers = 0;
    bool operator==(const CostlyVerb &) const = default;
};

// The day (QDate::toJulianDay) a review time falls on, in local time.
qint64 dayOf(qint64 time, const QTimeZone &zone = QTimeZone::systemTimeZone());

int dueCount(const QHash<quint64, PracticeCard> &cards, qint64 today);
// Days in a row with at least one answer, ending today, or yesterday when
// today has none yet (the streak is not lost before the day is over).
int streak(const QList<PracticeReview> &reviews, qint64 today, const QTimeZone &zone = QTimeZone::systemTimeZone());
// Weeks end on `today`; tenses in order of their type id.
QList<TenseAccuracy> accuracyByTense(const QList<PracticeReview> &reviews, const QHash<quint64, PracticeCard> &cards,
                                     qint64 today, int weeks,
                                     const QTimeZone &zone = QTimeZone::systemTimeZone());
// Most misses first; verbs never missed are left out.
QList<CostlyVerb> costliestVerbs(const QList<PracticeReview> &reviews, const QHash<quint64, PracticeCard> &cards,
                                 int count);
// New cards and reviews answered on `today`, for the day's limits.
struct DayCounts
{
    int newCards = 0;
    int reviews = 0;
};
DayCounts doneOn(const QList<PracticeReview> &reviews, qint64 today, const QTimeZone &zone = QTimeZone::systemTimeZone());

} // namespace PracticeProgress

} // namespace norvella
