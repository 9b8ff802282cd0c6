#include "AsciiFold.h"
#include "SearchIndex.h"

#include "Database.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <numeric>

namespace norvella {

namespace {

// Column names in the order of SearchIndex::Column.
constexpr const char *const columnNames[SearchIndex::ColumnCount] = {
        "italian", "simplified_italian", "english", "german", "simplified_german", "french", "simplified_french",
        "spanish", "simplified_spanish", "dutch", "simplified_dutch", "portuguese", "simplified_portuguese",
};

bool isSet(const std::atomic_bool *flag)
{
    return flag && flag->load(std::memory_order_relaxed);
}

// One verb's forms as read, folded and de-duplicated before they join the
// pool: the statement groups by verb, so only whether some form matches counts.
struct VerbForms
{
    QByteArray bytes;
    std::vector<std::pair<quint32, quint32>> spans; // offset, length

    void add(const char *text, int length)
    {
        const auto at = quint32(bytes.size());
        bytes.append(text, length);
        lowerAscii(bytes.data() + at, length);
        spans.emplace_back(at, quint32(length));
    }
    std::string_view at(const std::pair<quint32, quint32> &span) const
    {
        return {bytes.constData() + span.first, span.second};
    }
};

} // namespace

QString SearchIndex::columnName(Column column)
{
    return QString::fromLatin1(columnNames[column]);
}

SearchIndex::Column SearchIndex::columnNamed(const QString &name)
{
    for (int column = 0; column < ColumnCount; ++column) {
        if (name == QLatin1String(columnNames[column]))
            return Column(column);
    }
    return ColumnCount;
}

void SearchIndex::Texts::append(const char *text, int length)
{
    isNull.push_back(!text);
    bytes.append(text, text ? length : 0);
    start.push_back(quint32(bytes.size()));
}

std::string_view SearchIndex::Texts::at(quint32 position, Column column) const
{
    const quint32 number = position * ColumnCount + column;
    return {bytes.constData() + start[number], size_t(start[number + 1] - start[number])};
}

std::shared_ptr<const SearchIndex> SearchIndex::build(Database &db, QString *error, const std::atomic_bool *cancel)
{
    auto cancelled = [cancel] { return isSet(cancel); };
    if (!db.isOpen() && !db.open()) {
        if (error)
            *error = db.lastErrorMessage();
        return nullptr;
    }
    sqlite3 *handle = db.handle();
    // A single step can run long (a sort the table's order does not serve):
    // SQLite asks between instructions whether to go on.
    struct ProgressGuard
    {
        sqlite3 *handle;
        ~ProgressGuard() { sqlite3_progress_handler(handle, 0, nullptr, nullptr); }
    } progressGuard{handle};
    if (cancel) {
        sqlite3_progress_handler(
                handle, 1000, [](void *flag) { return isSet(static_cast<const std::atomic_bool *>(flag)) ? 1 : 0; },
                const_cast<std::atomic_bool *>(cancel));
    }
    auto fail = [&]() -> std::shared_ptr<const SearchIndex> {
        if (error)
            *error = QStringLiteral("%1 (%2)").arg(QString::fromUtf8(sqlite3_errmsg(handle))).arg(sqlite3_errcode(handle));
        return nullptr;
    };
    auto index = std::make_shared<SearchIndex>();
    index->m_likePatternLimit = sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);

    // The statement scans the verb table in rowid order; its sort keeps that
    // order among equal keys, and so does this.
    QByteArray sql = "SELECT _id";
    for (const char *name : columnNames)
        sql += QByteArray(", ") + name;
    sql += ", voice_available FROM verb ORDER BY _id";
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(handle, sql.constData(), -1, &statement, nullptr) != SQLITE_OK)
        return fail();
    int rc;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
        const auto position = quint32(index->m_ids.size());
        if ((position & 0xFF) == 0 && cancelled())
            break;
        index->m_ids.push_back(sqlite3_column_int64(statement, 0));
        index->m_voiceAvailable.push_back(sqlite3_column_int(statement, 1 + ColumnCount) != 0);
        for (int column = 0; column < ColumnCount; ++column) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, 1 + column));
            const int length = sqlite3_column_bytes(statement, 1 + column);
            index->m_texts.append(text, length);
            // A text is matched up to its first NUL, as LIKE reads it.
            Pool &pool = index->m_columns[column];
            pool.closeVerb(position);
            pool.append(text ? text : "", text ? int(qstrnlen(text, uint(length))) : 0);
            pool.isNull.push_back(!text);
        }
    }
    sqlite3_finalize(statement);
    if (cancelled())
        return nullptr;
    if (rc != SQLITE_DONE)
        return fail();

    const auto verbCount = quint32(index->m_ids.size());
    for (Pool &pool : index->m_columns) {
        pool.closeVerb(verbCount);
        pool.bytes.squeeze();
    }
    index->m_texts.bytes.squeeze();
    const Texts &texts = index->m_texts;
    for (int column = 0; column < ColumnCount; ++column) {
        if (cancelled())
            return nullptr;
        auto &order = index->m_orderBy[column];
        order.resize(verbCount);
        std::iota(order.begin(), order.end(), 0u);
        // BINARY collation: NULL first, then bytes compared as unsigned.
        std::stable_sort(order.begin(), order.end(), [&](quint32 a, quint32 b) {
            const bool aNull = texts.null(a, Column(column));
            const bool bNull = texts.null(b, Column(column));
            if (aNull != bNull)
                return aNull;
            return texts.at(a, Column(column)) < texts.at(b, Column(column));
        });
    }

    // The primary key orders the table by verb, so this is one pass in
    // storage order, each verb's rows together.
    if (sqlite3_prepare_v2(handle, "SELECT verbid, verb FROM conjugation ORDER BY verbid", -1, &statement, nullptr)
        != SQLITE_OK)
        return fail();
    Pool &forms = index->m_forms;
    VerbForms current;
    quint32 position = 0;
    auto flush = [&]() {
        std::sort(current.spans.begin(), current.spans.end(),
                  [&](const auto &a, const auto &b) { return current.at(a) < current.at(b); });
        forms.closeVerb(position);
        const std::string_view *previous = nullptr;
        std::string_view last;
        for (const auto &span : current.spans) {
            const std::string_view text = current.at(span);
            if (previous && text == last)
                continue;
            forms.append(text.data(), int(text.size()));
            last = text;
            previous = &last;
        }
        current.bytes.clear();
        current.spans.clear();
    };
    qint64 rows = 0;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
        if ((++rows & 0xFFF) == 0 && cancelled())
            break;
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, 1));
        const qint64 id = sqlite3_column_int64(statement, 0);
        if (!text)
            continue;
        if (position >= verbCount || index->m_ids[position] != id) {
            // Verb ids and form rows both ascend: the verb is ahead, or has no row.
            const auto found = std::lower_bound(index->m_ids.begin() + position, index->m_ids.end(), id);
            if (found == index->m_ids.end() || *found != id)
                continue;
            flush();
            position = quint32(found - index->m_ids.begin());
        }
        current.add(text, int(qstrnlen(text, uint(sqlite3_column_bytes(statement, 1)))));
    }
    sqlite3_finalize(statement);
    if (cancelled())
        return nullptr;
    if (rc != SQLITE_DONE)
        return fail();
    flush();
    forms.closeVerb(verbCount);
    forms.bytes.squeeze();
    if (!forms.buildGrams(cancel))
        return nullptr;
    return index;
}

void SearchIndex::appendRows(const std::vector<quint32> &order, const std::vector<char> *matched,
                             const std::vector<Favourite> &favourites, bool grouped, std::vector<Hit> &hits) const
{
    // The favourite join: one row per favourite row of the verb, or one row
    // without; grouping by verb keeps a single row whose flag comes from the
    // verb's last favourite row. Sorted by verb position, then by row id.
    std::vector<std::pair<quint32, Favourite>> favouriteRows;
    favouriteRows.reserve(favourites.size());
    for (const Favourite &favourite : favourites) {
        const auto found = std::lower_bound(m_ids.begin(), m_ids.end(), favourite.verbId);
        if (found != m_ids.end() && *found == favourite.verbId)
            favouriteRows.emplace_back(quint32(found - m_ids.begin()), favourite);
    }
    std::sort(favouriteRows.begin(), favouriteRows.end(), [](const auto &a, const auto &b) {
        return a.first != b.first ? a.first < b.first : a.second.id < b.second.id;
    });

    hits.reserve(hits.size() + order.size());
    // Read back as a 32-bit integer, as the result column is.
    auto flag = [](const Favourite &favourite) { return int(favourite.id) != 0; };
    for (const quint32 position : order) {
        if (matched && !(*matched)[position])
            continue;
        auto first = std::lower_bound(favouriteRows.begin(), favouriteRows.end(), position,
                                      [](const auto &row, quint32 value) { return row.first < value; });
        auto last = first;
        while (last != favouriteRows.end() && last->first == position)
            ++last;
        if (first == last)
            hits.push_back({position, false});
        else if (grouped)
            hits.push_back({position, flag((last - 1)->second)});
        else
            for (auto it = first; it != last; ++it)
                hits.push_back({position, flag(it->second)});
    }
}

void SearchIndex::everyVerb(Column order, const std::vector<Favourite> &favourites, std::vector<Hit> &hits) const
{
    appendRows(m_orderBy[order], nullptr, favourites, false, hits);
}

VerbPtr SearchIndex::listVerb(const Hit &hit) const
{
    VerbPtr verb = makeVerb(hit);
    verb->italian = text(hit.position, Italian);
    verb->simplified_italian = text(hit.position, SimplifiedItalian);
    verb->simplified_german = text(hit.position, SimplifiedGerman);
    verb->simplified_french = text(hit.position, SimplifiedFrench);
    verb->simplified_spanish = text(hit.position, SimplifiedSpanish);
    verb->simplified_dutch = text(hit.position, SimplifiedDutch);
    verb->simplified_portuguese = text(hit.position, SimplifiedPortuguese);
    verb->voice_available = m_voiceAvailable[hit.position];
    return verb;
}

QString SearchIndex::listSection(const Hit &hit, Column order) const
{
    if (order == ColumnCount)
        return {};
    const QString text = this->text(hit.position, order);
    if (text.isEmpty())
        return {};
    // substr(column, 1, 1) takes one character, which may be two UTF-16 units.
    return text.left(text.at(0).isHighSurrogate() ? 2 : 1).toUpper();
}

QString SearchIndex::text(quint32 position, Column column) const
{
    if (m_texts.null(position, column))
        return {};
    const std::string_view bytes = m_texts.at(position, column);
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

VerbPtr SearchIndex::makeVerb(const Hit &hit) const
{
    auto verb = std::make_shared<Verb>();
    verb->id = m_ids[hit.position];
    verb->english = text(hit.position, English);
    verb->german = text(hit.position, German);
    verb->french = text(hit.position, French);
    verb->spanish = text(hit.position, Spanish);
    verb->dutch = text(hit.position, Dutch);
    verb->portuguese = text(hit.position, Portuguese);
    verb->isFavourite = hit.isFavourite;
    return verb;
}

VerbPtr SearchIndex::verb(const Hit &hit) const
{
    VerbPtr verb = makeVerb(hit);
    // What lower(italian) gives the statement: ASCII letters folded, the
    // whole text kept.
    if (!m_texts.null(hit.position, Italian)) {
        const std::string_view italian = m_texts.at(hit.position, Italian);
        QByteArray lowered(italian.data(), qsizetype(italian.size()));
        lowerAscii(lowered.data(), lowered.size());
        verb->italian = QString::fromUtf8(lowered);
    }
    // Every result counts as having a voice, whatever the column says.
    verb->voice_available = true;
    return verb;
}

bool SearchIndex::readFavourites(Database &db, std::vector<Favourite> &favourites)
{
    auto rows = db.executeQuery(QStringLiteral("SELECT _id, verbid FROM favourite WHERE verbid IS NOT NULL"));
    if (!rows)
        return false;
    while (rows->next())
        favourites.push_back({rows->longLongIntForColumn(QStringLiteral("_id")),
                              rows->longLongIntForColumn(QStringLiteral("verbid"))});
    return !rows->failed();
}

} // namespace norvella
