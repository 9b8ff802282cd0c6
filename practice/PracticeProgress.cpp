#include "PracticeProgress.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>
#include <map>

namespace norvella::PracticeProgress {

qint64 dayOf(qint64 time, const QTimeZone &zone)
{
    return QDateTime::fromSecsSinceEpoch(time, zone).date().toJulianDay();
}

int dueCount(const QHash<quint64, PracticeCard> &cards, qint64 today)
{
    return int(std::count_if(cards.cbegin(), cards.cend(), [&](const PracticeCard &c) { return c.due <= today; }));
}

int streak(const QList<PracticeReview> &reviews, qint64 today, const QTimeZone &zone)
{
    QSet<qint64> days;
    for (const PracticeReview &review : reviews)
        days.insert(dayOf(review.time, zone));
    qint64 day = days.contains(today) ? today : today - 1;
    int length = 0;
    while (days.contains(day)) {
        ++length;
        --day;
    }
    return length;
}

QList<TenseAccuracy> accuracyByTense(const QList<PracticeReview> &reviews, const QHash<quint64, PracticeCard> &cards,
                                     qint64 today, int weeks, const QTimeZone &zone)
{
    QHash<qint64, int> tenseOfCard;
    for (const PracticeCard &card : cards)
        tenseOfCard.insert(card.id, card.tense);
    // tense -> week index -> (right, all)
    std::map<int, QList<QPair<int, int>>> counts;
    for (const PracticeReview &review : reviews) {
        const auto tense = tenseOfCard.constFind(review.cardId);
        if (tense == tenseOfCard.cend())
            continue;
        const qint64 daysAgo = today - dayOf(review.time, zone);
        if (daysAgo < 0 || daysAgo >= qint64(weeks) * 7)
            continue;
        auto &perWeek = counts[*tense];
        if (perWeek.isEmpty())
            perWeek.resize(weeks);
        auto &cell = perWeek[weeks - 1 - int(daysAgo / 7)];
        cell.second += 1;
        cell.first += review.result == int(PracticeResult::Correct) ? 1 : 0;
    }
    QList<TenseAccuracy> result;
    for (const auto &[tense, perWeek] : counts) {
        TenseAccuracy accuracy{tense, {}};
        for (const auto &[right, all] : perWeek)
            accuracy.weekly << (all == 0 ? -1.0 : double(right) / all);
        result << accuracy;
    }
    return result;
}

QList<CostlyVerb> costliestVerbs(const QList<PracticeReview> &reviews, const QHash<quint64, PracticeCard> &cards,
                                 int count)
{
    QHash<qint64, qint64> verbOfCard;
    for (const PracticeCard &card : cards)
        verbOfCard.insert(card.id, card.verbId);
    QHash<qint64, CostlyVerb> perVerb;
    for (const PracticeReview &review : reviews) {
        const auto verb = verbOfCard.constFind(review.cardId);
        if (verb == verbOfCard.cend())
            continue;
        CostlyVerb &entry = perVerb[*verb];
        entry.verbId = *verb;
        entry.answers += 1;
        entry.misses += review.result == int(PracticeResult::Correct) ? 0 : 1;
    }
    QList<CostlyVerb> result;
    for (const CostlyVerb &verb : std::as_const(perVerb)) {
        if (verb.misses > 0)
            result << verb;
    }
    std::sort(result.begin(), result.end(), [](const CostlyVerb &a, const CostlyVerb &b) {
        if (a.misses != b.misses)
            return a.misses > b.misses;
        // The same misses out of fewer answers cost more.
        return a.answers != b.answers ? a.answers < b.answers : a.verbId < b.verbId;
    });
    return result.mid(0, count);
}

DayCounts doneOn(const QList<PracticeReview> &reviews, qint64 today, const QTimeZone &zone)
{
    // A card's first answer ever makes it new on that day; answers again the
    // same day (the repeats below grade 4) count once.
    QHash<qint64, qint64> firstDay;
    QSet<qint64> answeredToday;
    for (const PracticeReview &review : reviews) {
        const qint64 day = dayOf(review.time, zone);
        auto first = firstDay.find(review.cardId);
        if (first == firstDay.end())
            firstDay.insert(review.cardId, day);
        else if (day < *first)
            *first = day;
        if (day == today)
            answeredToday.insert(review.cardId);
    }
    DayCounts counts;
    for (qint64 card : std::as_const(answeredToday)) {
        if (firstDay.value(card) == today)
            ++counts.newCards;
        else
            ++counts.reviews;
    }
    return counts;
}

} // namespace norvella::PracticeProgress
