#include "PracticeBench.h"

#include "Database.h"
#include "DatabaseQueue.h"
#include "PracticeStore.h"
#include "SessionBuilder.h"

#include <QElapsedTimer>

#include <algorithm>

namespace norvella::bench {

namespace {
constexpr qint64 Today = 2461000;
constexpr int StoredCards = 2000;
constexpr int DueCards = 30;
} // namespace

PracticeSessionTiming timePracticeSession(const std::shared_ptr<DatabaseQueue> &queue, int runs)
{
    PracticeSessionTiming timing;
    PracticeStore store(queue);
    if (!store.ensureTables() || !store.reset()) {
        timing.error = QStringLiteral("the practice tables could not be prepared");
        return timing;
    }
    bool seeded = false;
    queue->inDatabase([&](Database &db) {
        // Every 66th card is overdue, the others wait up to two months.
        seeded = db.executeUpdate(
                QStringLiteral("INSERT INTO practice_card(verbid, tense, person, repetitions, interval, easiness, due) "
                               "SELECT verbid, 6, pronounid, 2, 6, 2.5, CASE WHEN n % 66 = 0 THEN ? - n % 5 "
                               "ELSE ? + 1 + n % 60 END FROM (SELECT conjugation.verbid, conjugation.pronounid, "
                               "row_number() OVER (ORDER BY verb.frequency_rank, conjugation.pronounid) AS n "
                               "FROM conjugation JOIN verb ON verb._id = conjugation.verbid "
                               "WHERE verb.frequency_rank <= 1000 AND conjugation.conjugation_type_id = 6 "
                               "AND conjugation.pronounid IS NOT NULL) WHERE n <= ?"),
                {Today, Today, StoredCards});
        timing.deckVerbs = int(SessionBuilder::deckVerbs(db, PracticeDeck::Top1000, 0).size());
    });
    if (!seeded) {
        timing.error = QStringLiteral("the practice cards could not be written");
        return timing;
    }
    SessionOptions options;
    options.deck = PracticeDeck::Top1000;
    options.today = Today;
    options.newPerDay = 20;
    options.reviewsPerDay = DueCards;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        const QList<SessionCard> session = SessionBuilder::build(*queue, store, options);
        timing.samples << double(timer.nsecsElapsed()) / 1e6;
        timing.cards = int(session.size());
        timing.reviews = int(std::count_if(session.cbegin(), session.cend(), [](const SessionCard &c) { return !c.isNew; }));
    }
    store.reset();
    return timing;
}

} // namespace norvella::bench
