#include "SessionBuilder.h"

#include "CrashLog.h"
#include "Database.h"
#include "DatabaseQueue.h"
#include "PracticeStore.h"

#include <QSet>

#include <algorithm>

namespace norvella::SessionBuilder {

namespace {
constexpr char ReadingDeck[] = "An error occurred when reading the practice deck: %@ (%d)";
}

QList<qint64> deckVerbs(Database &db, PracticeDeck deck, qint64 verbId)
{
    if (deck == PracticeDeck::OneVerb)
        return verbId > 0 ? QList<qint64>{verbId} : QList<qint64>{};
    const QString order = QStringLiteral(" ORDER BY verb.frequency_rank IS NULL, verb.frequency_rank, "
                                         "verb.simplified_italian, verb._id");
    QString sql;
    QVariantList values;
    switch (deck) {
    case PracticeDeck::Favourites:
        sql = QStringLiteral("SELECT DISTINCT verb._id FROM favourite INNER JOIN verb ON favourite.verbid = verb._id");
        break;
    case PracticeDeck::Top100:
    case PracticeDeck::Top500:
    case PracticeDeck::Top1000:
        sql = QStringLiteral("SELECT verb._id FROM verb WHERE verb.frequency_rank <= ?");
        values << (deck == PracticeDeck::Top100 ? 100 : deck == PracticeDeck::Top500 ? 500 : 1000);
        break;
    case PracticeDeck::Irregular:
        sql = QStringLiteral("SELECT verb._id FROM verb WHERE verb.pattern = 'irregular'");
        break;
    case PracticeDeck::OneVerb:
        break;
    }
    QList<qint64> verbs;
    auto rows = db.executeQuery(sql + order, values);
    while (rows && rows->next())
        verbs << rows->longLongIntForColumn(QStringLiteral("_id"));
    if (!rows || rows->failed()) {
        reportDatabaseError(ReadingDeck, db);
        verbs.clear();
    }
    return verbs;
}

PracticeDeck defaultDeck(Database &db)
{
    auto rows = db.executeQuery(QStringLiteral("SELECT 1 FROM favourite LIMIT 1"));
    return rows && rows->next() ? PracticeDeck::Favourites : PracticeDeck::Top100;
}

QList<SessionCard> build(const QList<qint64> &deck, const QHash<quint64, PracticeCard> &cards,
                         const SessionOptions &options, const PersonsOf &personsOf)
{
    QList<SessionCard> session;
    const QSet<qint64> verbs(deck.cbegin(), deck.cend());
    const QSet<int> tenses(options.tenses.cbegin(), options.tenses.cend());
    const QSet<int> persons(options.persons.cbegin(), options.persons.cend());
    // Forms without a person (participles, gerund) belong to every choice of persons.
    auto personWanted = [&](int person) { return person == 0 || persons.contains(person); };

    QList<PracticeCard> due;
    for (const PracticeCard &card : cards) {
        if (card.due <= options.today && verbs.contains(card.verbId) && tenses.contains(card.tense)
            && personWanted(card.person))
            due << card;
    }
    std::sort(due.begin(), due.end(), [](const PracticeCard &a, const PracticeCard &b) {
        return a.due != b.due ? a.due < b.due : a.id < b.id;
    });
    const int reviewRoom = std::max(0, options.reviewsPerDay - options.reviewsDoneToday);
    for (qsizetype i = 0; i < due.size() && i < reviewRoom; ++i)
        session << SessionCard{due.at(i), false};

    int newRoom = std::max(0, options.newPerDay - options.newDoneToday);
    for (qint64 verbId : deck) {
        if (newRoom == 0)
            break;
        for (int tense : options.tenses) {
            if (newRoom == 0)
                break;
            // A learner far into a deck has cards for every person of its
            // first verbs: those are passed without asking the database.
            const bool allStored = std::all_of(options.persons.cbegin(), options.persons.cend(), [&](int person) {
                return cards.contains(PracticeStore::key(verbId, tense, person));
            });
            if (allStored)
                continue;
            for (int person : personsOf(verbId, tense)) {
                if (newRoom == 0)
                    break;
                if (!personWanted(person) || cards.contains(PracticeStore::key(verbId, tense, person)))
                    continue;
                PracticeCard card;
                card.verbId = verbId;
                card.tense = tense;
                card.person = person;
                card.due = options.today;
                session << SessionCard{card, true};
                --newRoom;
            }
        }
    }
    return session;
}

QList<SessionCard> build(DatabaseQueue &queue, PracticeStore &store, const SessionOptions &options)
{
    const QHash<quint64, PracticeCard> cards = store.cards();
    QList<SessionCard> session;
    queue.inDatabase([&](Database &db) {
        const QList<qint64> deck = deckVerbs(db, options.deck, options.verbId);
        const PersonsOf personsOf = [&](qint64 verbId, int tense) {
            QList<int> persons;
            auto rows = db.executeQuery(QStringLiteral("SELECT DISTINCT ifnull(pronounid, 0) AS person FROM conjugation "
                                                       "WHERE verbid = ? AND conjugation_type_id = ? ORDER BY person"),
                                        {verbId, tense});
            while (rows && rows->next())
                persons << rows->intForColumn(QStringLiteral("person"));
            if (!rows || rows->failed())
                reportDatabaseError(ReadingDeck, db);
            return persons;
        };
        session = build(deck, cards, options, personsOf);
    });
    return session;
}

} // namespace norvella::SessionBuilder
