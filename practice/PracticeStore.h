#pragma once

#include "DatabaseQueue.h"
#include "PracticeTables.h"

#include <QDate>
#include <QHash>

#include <memory>
#include <optional>

namespace norvella {

// The practice tables of the working copy, read and written through the
// app's one queue. Every failure is logged with the fixed messages below and
// answered with an empty result; the favourite and history tables are never
// touched here, so a damaged practice table leaves them working.
class PracticeStore
{
public:
    explicit PracticeStore(std::shared_ptr<DatabaseQueue> queue);

    // Creates the tables on first use; false (logged) when they cannot be.
    bool ensureTables();
    // Every card, keyed by key(verb, tense, person).
    QHash<quint64, PracticeCard> cards();
    std::optional<PracticeCard> card(qint64 verbId, int tense, int person);
    // Writes the card's new state and its review in one transaction; a new
    // card (id 0) is inserted and receives its id.
    bool record(PracticeCard &card, PracticeReview review);
    // Reviews since `since` (seconds since 1970), oldest first.
    QList<PracticeReview> reviews(qint64 since = 0);
    // Empties both tables; only the learner's confirmed "Reset progress" calls it.
    bool reset();

    static quint64 key(qint64 verbId, int tense, int person)
    {
        return (quint64(verbId) << 16) | (quint64(tense & 0xff) << 8) | quint64(person & 0xff);
    }

    static constexpr char ReadingPractice[] = "An error occurred when reading practice progress: %@ (%d)";
    static constexpr char WritingPractice[] = "An error occurred when saving practice progress: %@ (%d)";

private:
    void reportFailure(const char *fixedMessage, const Database &db);

    std::shared_ptr<DatabaseQueue> m_queue;
    bool m_ready = false;
};

} // namespace norvella
