#pragma once

#include <QList>
#include <QString>

#include <memory>

namespace norvella {
class DatabaseQueue;
}

namespace norvella::bench {

struct PracticeSessionTiming
{
    QList<double> samples; // ms per session built
    int cards = 0;
    int reviews = 0;
    int deckVerbs = 0;
    QString error;
};

// A learner 2,000 cards into the 1,000 most frequent verbs, 30 of them due:
// times building a session of 30 reviews and 20 new cards, `runs` times, and
// leaves the practice tables empty again.
PracticeSessionTiming timePracticeSession(const std::shared_ptr<DatabaseQueue> &queue, int runs);

} // namespace norvella::bench
