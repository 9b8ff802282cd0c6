#pragma once

#include "PracticeTables.h"

#include <QHash>
#include <QList>

#include <functional>

namespace norvella {

class DatabaseQueue;
class Database;
class PracticeStore;

enum class PracticeDeck { Favourites = 0, Top100, Top500, Top1000, Irregular, OneVerb };

struct SessionOptions
{
    PracticeDeck deck = PracticeDeck::Favourites;
    qint64 verbId = 0; // for PracticeDeck::OneVerb
    QList<int> tenses{6}; // conjugation_type_id; the present indicative alone is a fine first deck
    QList<int> persons{1, 2, 3, 4, 5, 6};
    int newPerDay = 10;
    int reviewsPerDay = 100;
    qint64 today = 0; // QDate::toJulianDay
    // Already done today, so a second session the same day keeps to the limits.
    int newDoneToday = 0;
    int reviewsDoneToday = 0;
};

struct SessionCard
{
    PracticeCard card; // id 0 for a form never practised
    bool isNew = false;
    bool operator==(const SessionCard &) const = default;
};

namespace SessionBuilder {

// The deck's verbs, most frequent first (then alphabetical).
QList<qint64> deckVerbs(Database &db, PracticeDeck deck, qint64 verbId);

// The deck of a learner who has not chosen one: their favourites, or the
// most common verbs while they keep none, so a first visit has cards.
PracticeDeck defaultDeck(Database &db);

// Which persons a verb has in a tense (0 for the forms without one).
using PersonsOf = std::function<QList<int>(qint64 verbId, int tense)>;

// Due reviews first, the longest overdue first, up to the day's review limit;
// then forms never practised, in deck order (verb, then the chosen tenses,
// then the persons), up to the day's limit of new cards.
QList<SessionCard> build(const QList<qint64> &deck, const QHash<quint64, PracticeCard> &cards,
                         const SessionOptions &options, const PersonsOf &personsOf);

// The same over the working copy.
QList<SessionCard> build(DatabaseQueue &queue, PracticeStore &store, const SessionOptions &options);

} // namespace SessionBuilder

} // namespace norvella
