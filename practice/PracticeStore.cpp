#include "PracticeStore.h"

#include "CrashLog.h"
#include "VerbStore.h"

#include <sqlite3.h>

namespace norvella {

namespace {
constexpr char CardColumns[] = "_id, verbid, tense, person, repetitions, interval, easiness, due, lapses";

PracticeCard readCard(const ResultSet &row)
{
    PracticeCard card;
    card.id = row.longLongIntForColumn(QStringLiteral("_id"));
    card.verbId = row.longLongIntForColumn(QStringLiteral("verbid"));
    card.tense = row.intForColumn(QStringLiteral("tense"));
    card.person = row.intForColumn(QStringLiteral("person"));
    card.repetitions = row.intForColumn(QStringLiteral("repetitions"));
    card.interval = row.intForColumn(QStringLiteral("interval"));
    card.easiness = row.doubleForColumn(QStringLiteral("easiness"));
    card.due = row.longLongIntForColumn(QStringLiteral("due"));
    card.lapses = row.intForColumn(QStringLiteral("lapses"));
    return card;
}
} // namespace

PracticeStore::PracticeStore(std::shared_ptr<DatabaseQueue> queue)
    : m_queue(std::move(queue))
{
}

void PracticeStore::reportFailure(const char *fixedMessage, const Database &db)
{
    reportDatabaseError(fixedMessage, db);
    // Damage found here is repaired by the next launch, which rebuilds the
    // copy with every row still readable.
    const int code = db.lastErrorCode() & 0xff;
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB)
        VerbStore::markDamaged(db.path(), db.lastErrorMessage());
}

bool PracticeStore::ensureTables()
{
    if (m_ready)
        return true;
    if (!m_queue)
        return false;
    m_queue->inDatabase([&](Database &db) {
        m_ready = db.inTransaction([&] {
            for (const QString &statement : PracticeTables::createStatements()) {
                if (!db.executeUpdate(statement))
                    return false;
            }
            return true;
        });
        if (!m_ready)
            reportFailure(WritingPractice, db);
    });
    return m_ready;
}

QHash<quint64, PracticeCard> PracticeStore::cards()
{
    QHash<quint64, PracticeCard> result;
    if (!ensureTables())
        return result;
    m_queue->inDatabase([&](Database &db) {
        auto rows = db.executeQuery(QStringLiteral("SELECT %1 FROM practice_card").arg(QLatin1String(CardColumns)));
        while (rows && rows->next()) {
            const PracticeCard card = readCard(*rows);
            result.insert(key(card.verbId, card.tense, card.person), card);
        }
        if (!rows || rows->failed()) {
            result.clear();
            reportFailure(ReadingPractice, db);
        }
    });
    return result;
}

std::optional<PracticeCard> PracticeStore::card(qint64 verbId, int tense, int person)
{
    std::optional<PracticeCard> result;
    if (!ensureTables())
        return result;
    m_queue->inDatabase([&](Database &db) {
        auto rows = db.executeQuery(
                QStringLiteral("SELECT %1 FROM practice_card WHERE verbid = ? AND tense = ? AND person = ?")
                        .arg(QLatin1String(CardColumns)),
                {verbId, tense, person});
        if (rows && rows->next())
            result = readCard(*rows);
        if (!rows || rows->failed())
            reportFailure(ReadingPractice, db);
    });
    return result;
}

bool PracticeStore::record(PracticeCard &card, PracticeReview review)
{
    if (!ensureTables())
        return false;
    bool ok = false;
    m_queue->inDatabase([&](Database &db) {
        qint64 id = card.id;
        ok = db.inTransaction([&] {
            const QVariantList state{card.repetitions, card.interval, card.easiness, card.due, card.lapses};
            // A form offered as new in a session built before another one
            // stored it already has its card.
            if (id == 0) {
                auto existing = db.executeQuery(QStringLiteral("SELECT _id FROM practice_card WHERE verbid = ? AND "
                                                               "tense = ? AND person = ?"),
                                                {card.verbId, card.tense, card.person});
                if (!existing)
                    return false;
                if (existing->next())
                    id = existing->longLongIntForColumn(QStringLiteral("_id"));
                if (existing->failed())
                    return false;
            }
            if (id == 0) {
                if (!db.executeUpdate(QStringLiteral("INSERT INTO practice_card(repetitions, interval, easiness, due, "
                                                     "lapses, verbid, tense, person) VALUES(?, ?, ?, ?, ?, ?, ?, ?)"),
                                      state + QVariantList{card.verbId, card.tense, card.person}))
                    return false;
                id = sqlite3_last_insert_rowid(db.handle());
            } else if (!db.executeUpdate(QStringLiteral("UPDATE practice_card SET repetitions = ?, interval = ?, "
                                                        "easiness = ?, due = ?, lapses = ? WHERE _id = ?"),
                                         state + QVariantList{id})) {
                return false;
            }
            return db.executeUpdate(QStringLiteral("INSERT INTO practice_review(cardid, time, quality, result) "
                                                   "VALUES(?, ?, ?, ?)"),
                                    {id, review.time, review.quality, review.result});
        });
        if (ok)
            card.id = id;
        else
            reportFailure(WritingPractice, db);
    });
    return ok;
}

QList<PracticeReview> PracticeStore::reviews(qint64 since)
{
    QList<PracticeReview> result;
    if (!ensureTables())
        return result;
    m_queue->inDatabase([&](Database &db) {
        auto rows = db.executeQuery(QStringLiteral("SELECT _id, cardid, time, quality, result FROM practice_review "
                                                   "WHERE time >= ? ORDER BY time, _id"),
                                    {since});
        while (rows && rows->next()) {
            result << PracticeReview{rows->longLongIntForColumn(QStringLiteral("_id")),
                                     rows->longLongIntForColumn(QStringLiteral("cardid")),
                                     rows->longLongIntForColumn(QStringLiteral("time")),
                                     rows->intForColumn(QStringLiteral("quality")),
                                     rows->intForColumn(QStringLiteral("result"))};
        }
        if (!rows || rows->failed()) {
            result.clear();
            reportFailure(ReadingPractice, db);
        }
    });
    return result;
}

bool PracticeStore::reset()
{
    if (!ensureTables())
        return false;
    bool ok = false;
    m_queue->inDatabase([&](Database &db) {
        ok = db.inTransaction([&] {
            return db.executeUpdate(QStringLiteral("DELETE FROM practice_review"))
                    && db.executeUpdate(QStringLiteral("DELETE FROM practice_card"));
        });
        if (!ok)
            reportFailure(WritingPractice, db);
        else
            CrashLog::log(QStringLiteral("Practice progress was reset by the learner"));
    });
    return ok;
}

} // namespace norvella
