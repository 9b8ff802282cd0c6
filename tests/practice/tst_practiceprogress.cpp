// The progress page's figures from a review log, and the stored choices.
#include "PracticeOptions.h"
#include "PracticeProgress.h"
#include "PracticeStore.h"
#include "Settings.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {
const QTimeZone Utc = QTimeZone::utc();
const qint64 Today = QDate(2026, 11, 24).toJulianDay();

qint64 at(int daysAgo, int hour = 12)
{
    return QDateTime(QDate::fromJulianDay(Today - daysAgo), QTime(hour, 0), Utc).toSecsSinceEpoch();
}

PracticeReview review(qint64 card, qint64 time, PracticeResult result)
{
    return PracticeReview{0, card, time, result == PracticeResult::Correct ? 4 : 1, int(result)};
}

QHash<quint64, PracticeCard> cards(const QList<PracticeCard> &list)
{
    QHash<quint64, PracticeCard> hash;
    for (const PracticeCard &card : list)
        hash.insert(PracticeStore::key(card.verbId, card.tense, card.person), card);
    return hash;
}
} // namespace

class PracticeProgressTest : public QObject
{
    Q_OBJECT

private slots:
    void streakCountsDaysInARow()
    {
        const auto c = PracticeResult::Correct;
        QCOMPARE(PracticeProgress::streak({}, Today, Utc), 0);
        // Today not yet practised: yesterday's run still stands.
        QCOMPARE(PracticeProgress::streak({review(1, at(1), c), review(1, at(2), c), review(1, at(4), c)}, Today, Utc), 2);
        QCOMPARE(PracticeProgress::streak({review(1, at(0, 0), c), review(1, at(1, 23), c), review(1, at(2), c)}, Today,
                                          Utc),
                 3);
        QCOMPARE(PracticeProgress::streak({review(1, at(2), c)}, Today, Utc), 0);
    }

    void dueAndDoneToday()
    {
        const auto due = cards({{1, 10, 6, 1, 0, 0, 2.5, Today - 3, 0}, {2, 10, 6, 2, 0, 0, 2.5, Today, 0},
                                {3, 10, 6, 3, 0, 0, 2.5, Today + 1, 0}});
        QCOMPARE(PracticeProgress::dueCount(due, Today), 2);
        const auto c = PracticeResult::Correct;
        // Card 1 first answered today (twice: a repeat), card 2 answered before.
        const auto counts = PracticeProgress::doneOn(
                {review(2, at(5), c), review(1, at(0, 9), c), review(1, at(0, 10), c), review(2, at(0, 11), c)}, Today,
                Utc);
        QCOMPARE(counts.newCards, 1);
        QCOMPARE(counts.reviews, 1);
    }

    void accuracyPerTensePerWeek()
    {
        const auto all = cards({{1, 10, 6, 1, 0, 0, 2.5, 0, 0}, {2, 10, 8, 1, 0, 0, 2.5, 0, 0}});
        const auto r = PracticeResult::Correct, a = PracticeResult::Almost, w = PracticeResult::Wrong;
        const QList<PracticeReview> log{review(1, at(0), r), review(1, at(1), w), review(1, at(8), r),
                                        review(2, at(2), a), review(2, at(30), r), review(99, at(0), r)};
        const auto accuracy = PracticeProgress::accuracyByTense(log, all, Today, 3, Utc);
        QCOMPARE(accuracy.size(), 2);
        QCOMPARE(accuracy.at(0), (PracticeProgress::TenseAccuracy{6, {-1.0, 1.0, 0.5}}));
        // An accent slip is not counted right; the review 30 days ago is out of range.
        QCOMPARE(accuracy.at(1), (PracticeProgress::TenseAccuracy{8, {-1.0, -1.0, 0.0}}));
    }

    void costliestVerbsFirst()
    {
        const auto all = cards({{1, 10, 6, 1, 0, 0, 2.5, 0, 0}, {2, 11, 6, 1, 0, 0, 2.5, 0, 0},
                                {3, 12, 6, 1, 0, 0, 2.5, 0, 0}, {4, 13, 6, 1, 0, 0, 2.5, 0, 0}});
        const auto r = PracticeResult::Correct, w = PracticeResult::Wrong;
        const QList<PracticeReview> log{review(1, at(0), w), review(1, at(0), r), review(1, at(0), r),
                                        review(2, at(0), w), review(3, at(0), w), review(3, at(0), w),
                                        review(4, at(0), r)};
        const auto costly = PracticeProgress::costliestVerbs(log, all, 2);
        QCOMPARE(costly, (QList<PracticeProgress::CostlyVerb>{{12, 2, 2}, {11, 1, 1}}));
    }

    // Choices written are read back; values a hand-edited or damaged
    // settings file could hold fall back to the defaults, logged.
    void choicesReadBackAndBadValuesFallBack()
    {
        QTemporaryDir dir;
        Settings settings(dir.filePath(QStringLiteral("settings.json")));
        SessionOptions defaults = PracticeOptions::read(settings);
        QCOMPARE(defaults.deck, PracticeDeck::Favourites);
        QCOMPARE(defaults.tenses, QList<int>{6});
        QCOMPARE(defaults.persons, (QList<int>{1, 2, 3, 4, 5, 6}));
        QCOMPARE(defaults.newPerDay, PracticeOptions::DefaultNewPerDay);

        SessionOptions chosen;
        chosen.deck = PracticeDeck::Top500;
        chosen.tenses = {8, 6};
        chosen.persons = {3, 1};
        chosen.newPerDay = 0;
        chosen.reviewsPerDay = 40;
        PracticeOptions::write(settings, chosen);
        const SessionOptions back = PracticeOptions::read(Settings(dir.filePath(QStringLiteral("settings.json"))));
        QCOMPARE(back.deck, PracticeDeck::Top500);
        QCOMPARE(back.tenses, (QList<int>{8, 6}));
        QCOMPARE(back.persons, (QList<int>{1, 3}));
        QCOMPARE(back.newPerDay, 0);
        QCOMPARE(back.reviewsPerDay, 40);

        settings.setInteger(PracticeOptions::Deck, 42);
        settings.setString(PracticeOptions::Tenses, QStringLiteral("1,x,99"));
        settings.setString(PracticeOptions::Persons, QStringLiteral("7"));
        settings.setInteger(PracticeOptions::NewPerDay, -5);
        settings.setInteger(PracticeOptions::ReviewsPerDay, 1000000);
        const SessionOptions bad = PracticeOptions::read(settings);
        QCOMPARE(bad.deck, PracticeDeck::Favourites);
        QCOMPARE(bad.tenses, QList<int>{6});
        QCOMPARE(bad.persons, (QList<int>{1, 2, 3, 4, 5, 6}));
        QCOMPARE(bad.newPerDay, PracticeOptions::DefaultNewPerDay);
        QCOMPARE(bad.reviewsPerDay, PracticeOptions::DefaultReviewsPerDay);
    }
};

QTEST_GUILESS_MAIN(PracticeProgressTest)
#include "tst_practiceprogress.moc"
