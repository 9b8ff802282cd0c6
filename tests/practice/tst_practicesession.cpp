// Sessions built from decks, the day's limits and the stored cards, and the
// practice tables written through the app's queue.
#include "CrashLog.h"
#include "Database.h"
#include "DatabaseQueue.h"
#include "PracticeStore.h"
#include "SessionBuilder.h"
#include "Sm2.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {
constexpr qint64 Today = 2461000;

PracticeCard stored(qint64 id, qint64 verb, int tense, int person, qint64 due)
{
    PracticeCard card;
    card.id = id;
    card.verbId = verb;
    card.tense = tense;
    card.person = person;
    card.due = due;
    return card;
}

QList<int> allPersons(qint64, int tense)
{
    // The imperative has no first person, like the real table.
    return tense == 14 ? QList<int>{2, 3, 4, 5, 6} : QList<int>{1, 2, 3, 4, 5, 6};
}

QStringList describe(const QList<SessionCard> &session)
{
    QStringList lines;
    for (const SessionCard &c : session)
        lines << QStringLiteral("%1%2:%3:%4").arg(c.isNew ? "new " : "").arg(c.card.verbId).arg(c.card.tense).arg(c.card.person);
    return lines;
}
} // namespace

class PracticeSessionTest : public QObject
{
    Q_OBJECT

private slots:
    void dueReviewsComeFirstThenNewCards()
    {
        QHash<quint64, PracticeCard> cards;
        for (const PracticeCard &c : {stored(1, 10, 6, 1, Today - 1), stored(2, 10, 6, 2, Today - 5),
                                      stored(3, 11, 6, 1, Today + 3), stored(4, 12, 6, 1, Today)})
            cards.insert(PracticeStore::key(c.verbId, c.tense, c.person), c);
        SessionOptions options;
        options.today = Today;
        options.newPerDay = 3;
        const auto session = SessionBuilder::build({10, 11, 12}, cards, options, allPersons);
        QCOMPARE(describe(session), (QStringList{"10:6:2", "10:6:1", "12:6:1", "new 10:6:3", "new 10:6:4",
                                                 "new 10:6:5"}));
    }

    void limitsCountWhatWasDoneToday()
    {
        QHash<quint64, PracticeCard> cards;
        for (int person = 1; person <= 6; ++person)
            cards.insert(PracticeStore::key(10, 6, person), stored(person, 10, 6, person, Today - person));
        SessionOptions options;
        options.today = Today;
        options.reviewsPerDay = 4;
        options.reviewsDoneToday = 2;
        options.newPerDay = 5;
        options.newDoneToday = 5;
        const auto session = SessionBuilder::build({10, 11}, cards, options, allPersons);
        QCOMPARE(describe(session), (QStringList{"10:6:6", "10:6:5"}));
        options.reviewsDoneToday = 9;
        QVERIFY(SessionBuilder::build({10, 11}, cards, options, allPersons).isEmpty());
    }

    // Cards outside the chosen deck, tenses or persons wait; forms a verb
    // lacks (no imperative "io") are never made into cards.
    void choicesFilterReviewsAndNewCards()
    {
        QHash<quint64, PracticeCard> cards;
        for (const PracticeCard &c : {stored(1, 99, 6, 1, Today - 1), stored(2, 10, 8, 1, Today - 1),
                                      stored(3, 10, 14, 2, Today - 1), stored(4, 10, 14, 4, Today - 1)})
            cards.insert(PracticeStore::key(c.verbId, c.tense, c.person), c);
        SessionOptions options;
        options.today = Today;
        options.tenses = {14};
        options.persons = {1, 2, 3};
        options.newPerDay = 10;
        const auto session = SessionBuilder::build({10}, cards, options, allPersons);
        QCOMPARE(describe(session), (QStringList{"10:14:2", "new 10:14:3"}));
    }

    void decksFromTheDatabase()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(test::createFixtureDatabase(path, QStringLiteral(
                "UPDATE verb SET frequency_rank = 3 WHERE _id = 1; UPDATE verb SET frequency_rank = 1 WHERE _id = 2;"
                "UPDATE verb SET frequency_rank = 700 WHERE _id = 3;"
                "UPDATE verb SET pattern = CASE WHEN _id IN (1, 2) THEN 'irregular' ELSE 'are' END;"
                "INSERT INTO favourite(verbid) VALUES (5), (3), (3);")));
        DatabaseQueue queue(path);
        queue.inDatabase([](Database &db) {
            QCOMPARE(SessionBuilder::deckVerbs(db, PracticeDeck::Top100, 0), (QList<qint64>{2, 1}));
            QCOMPARE(SessionBuilder::deckVerbs(db, PracticeDeck::Top1000, 0), (QList<qint64>{2, 1, 3}));
            QCOMPARE(SessionBuilder::deckVerbs(db, PracticeDeck::Irregular, 0), (QList<qint64>{2, 1}));
            QCOMPARE(SessionBuilder::deckVerbs(db, PracticeDeck::Favourites, 0), (QList<qint64>{3, 5}));
            QCOMPARE(SessionBuilder::deckVerbs(db, PracticeDeck::OneVerb, 5), (QList<qint64>{5}));
        });

        // A new card answered becomes a stored card, due by the scheduler,
        // and the next session of the day no longer offers it as new.
        PracticeStore store(std::make_shared<DatabaseQueue>(path));
        SessionOptions options;
        options.deck = PracticeDeck::OneVerb;
        options.verbId = 1;
        options.today = Today;
        options.newPerDay = 2;
        auto first = SessionBuilder::build(queue, store, options);
        QCOMPARE(describe(first), (QStringList{"new 1:6:1", "new 1:6:2"}));
        PracticeCard card = first.at(0).card;
        const Sm2::State next = Sm2::review({}, 4);
        card.repetitions = next.repetitions;
        card.interval = next.interval;
        card.easiness = next.easiness;
        card.due = Today + next.interval;
        QVERIFY(store.record(card, {0, 0, 1700000000, 4, int(PracticeResult::Correct)}));
        QVERIFY(card.id > 0);
        QCOMPARE(store.card(1, 6, 1)->due, Today + 1);
        QCOMPARE(describe(SessionBuilder::build(queue, store, options)), (QStringList{"new 1:6:2", "new 1:6:3"}));
        options.today = Today + 1;
        QCOMPARE(describe(SessionBuilder::build(queue, store, options)).first(), QStringLiteral("1:6:1"));
        QCOMPARE(store.reviews().size(), 1);
        QCOMPARE(store.reviews(1700000001).size(), 0);
        QCOMPARE(test::querySingleColumn(path, "SELECT value FROM practice_meta WHERE key = 'schema_version'"),
                 QStringList{QString::number(PracticeTables::SchemaVersion)});

        // The same new form graded from a second, older session updates its card.
        PracticeCard again = first.at(0).card;
        again.due = Today + 6;
        QVERIFY(store.record(again, {0, 0, 1700000100, 5, int(PracticeResult::Correct)}));
        QCOMPARE(again.id, card.id);
        QCOMPARE(store.cards().size(), 1);
        QCOMPARE(store.card(1, 6, 1)->due, Today + 6);

        QVERIFY(store.reset());
        QVERIFY(store.cards().isEmpty());
        QVERIFY(store.reviews().isEmpty());
        QCOMPARE(test::querySingleColumn(path, "SELECT count(*) FROM favourite"), QStringList{"3"});
    }

    // A practice table that cannot be read answers empty and is logged; the
    // favourites read through the same queue are unaffected.
    void aBrokenPracticeTableLeavesFavouritesAlone()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(test::createFixtureDatabase(path, QStringLiteral(
                "INSERT INTO favourite(verbid) VALUES (1);"
                "CREATE TABLE practice_card (_id INTEGER PRIMARY KEY, verbid INTEGER);")));
        auto queue = std::make_shared<DatabaseQueue>(path);
        PracticeStore store(queue);
        const QString logPath = dir.filePath(QStringLiteral("log.txt"));
        CrashLog::setLogFilePath(logPath);
        QVERIFY(store.cards().isEmpty());
        CrashLog::setLogFilePath({});
        QFile log(logPath);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("An error occurred when saving practice progress: no such column: tense"));
        QStringList favourites;
        queue->inDatabase([&](Database &db) {
            auto rows = db.executeQuery(QStringLiteral("SELECT verbid FROM favourite"));
            while (rows && rows->next())
                favourites << QString::number(rows->intForColumn(QStringLiteral("verbid")));
        });
        QCOMPARE(favourites, QStringList{"1"});
    }
};

QTEST_GUILESS_MAIN(PracticeSessionTest)
#include "tst_practicesession.moc"
