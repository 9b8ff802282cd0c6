#include "SearchIndex.h"

#include "Database.h"

#include <sqlite3.h>

#include <QHash>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <numeric>
#include <iterator>
#include <string_view>

namespace norvella {

namespace {

// Column names in the order of SearchIndex::Column.
constexpr const char *const columnNames[SearchIndex::ColumnCount] = {
        "italian", "simplified_italian", "english", "german", "simplified_german", "french", "simplified_french",
        "spanish", "simplified_spanish", "dutch", "simplified_dutch", "portuguese", "simplified_portuguese",
};

// LIKE folds case for ASCII letters only, so folding both sides once up front
// and then comparing exactly gives the same answers.
void lowerAscii(char *text, qsizetype length)
{
    for (qsizetype i = 0; i < length; ++i) {
        if (text[i] >= 'A' && text[i] <= 'Z')
            text[i] = char(text[i] + ('a' - 'A'));
    }
}

// SQLite's own UTF-8 reader: a lead byte swallows every continuation byte that
// follows, and malformed sequences read as U+FFFD. '_' consumes exactly what
// this consumes, so it has to be the same reader.
const unsigned char utf8Trans1[] = {
        0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f,
        0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1a, 0x1b, 0x1c, 0x1d, 0x1e, 0x1f,
        0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f,
        0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x00, 0x01, 0x02, 0x03, 0x00, 0x01, 0x00, 0x00,
};

inline quint32 readChar(const unsigned char *&z)
{
    quint32 c = *z++;
    if (c < 0x80)
        return c;
    if (c >= 0xc0) {
        c = utf8Trans1[c - 0xc0];
        while ((*z & 0xc0) == 0x80)
            c = (c << 6) + (0x3f & *z++);
        if (c < 0x80 || (c & 0xFFFFF800) == 0xD800 || (c & 0xFFFFFFFE) == 0xFFFE)
            c = 0xFFFD;
    }
    return c;
}

enum CompareResult { Match, NoMatch, NoWildcardMatch };

// The same walk as SQLite's LIKE (no ESCAPE), including where it gives up
// early, so the two never disagree on odd patterns such as "%_%_" or "a%%".
CompareResult patternCompare(const unsigned char *pattern, const unsigned char *text)
{
    quint32 c;
    while ((c = readChar(pattern)) != 0) {
        if (c == '%') {
            while ((c = readChar(pattern)) == '%' || c == '_') {
                if (c == '_' && readChar(text) == 0)
                    return NoWildcardMatch;
            }
            if (c == 0)
                return Match;
            if (c < 0x80) {
                for (;;) {
                    text = reinterpret_cast<const unsigned char *>(
                            std::strchr(reinterpret_cast<const char *>(text), int(c)));
                    if (!text)
                        break;
                    ++text;
                    const CompareResult result = patternCompare(pattern, text);
                    if (result != NoMatch)
                        return result;
                }
            } else {
                quint32 c2;
                while ((c2 = readChar(text)) != 0) {
                    if (c2 != c)
                        continue;
                    const CompareResult result = patternCompare(pattern, text);
                    if (result != NoMatch)
                        return result;
                }
            }
            return NoWildcardMatch;
        }
        const quint32 c2 = readChar(text);
        if (c == c2)
            continue;
        if (c == '_' && c2 != 0)
            continue;
        return NoMatch;
    }
    return *text == 0 ? Match : NoMatch;
}

// The longest run of the pattern without wildcards: every matching text
// contains it as is, so a plain substring search finds all candidates.
QByteArray longestLiteral(const QByteArray &pattern)
{
    QByteArray best;
    qsizetype runStart = 0;
    for (qsizetype i = 0; i <= pattern.size(); ++i) {
        if (i == pattern.size() || pattern[i] == '%' || pattern[i] == '_') {
            if (i - runStart > best.size())
                best = pattern.mid(runStart, i - runStart);
            runStart = i + 1;
        }
    }
    return best;
}

QByteArray plainPrefix(const QByteArray &pattern)
{
    qsizetype end = 0;
    while (end < pattern.size() && pattern[end] != '%' && pattern[end] != '_')
        ++end;
    return pattern.left(end);
}

bool isSet(const std::atomic_bool *flag)
{
    return flag && flag->load(std::memory_order_relaxed);
}

// std::sort in blocks, then merges of ever longer runs, looking at `cancel`
// every few thousand comparisons: a sort of every form takes a tenth of a
// second, and quitting waits for the build to notice it is not wanted.
template<typename T, typename Less>
bool sortUnlessCancelled(std::vector<T> &items, Less less, const std::atomic_bool *cancel)
{
    constexpr size_t Block = 1 << 12;
    constexpr size_t CheckEvery = 1 << 14;
    const size_t size = items.size();
    for (size_t from = 0; from < size; from += Block) {
        if (isSet(cancel))
            return false;
        std::sort(items.begin() + std::ptrdiff_t(from), items.begin() + std::ptrdiff_t(std::min(from + Block, size)),
                  less);
    }
    std::vector<T> merged(size);
    size_t steps = 0;
    for (size_t run = Block; run < size; run *= 2) {
        size_t out = 0;
        for (size_t from = 0; from < size; from += 2 * run) {
            const size_t middle = std::min(from + run, size);
            const size_t end = std::min(from + 2 * run, size);
            size_t left = from;
            size_t right = middle;
            while (left < middle && right < end) {
                if (++steps % CheckEvery == 0 && isSet(cancel))
                    return false;
                merged[out++] = less(items[right], items[left]) ? items[right++] : items[left++];
            }
            out = std::copy(items.begin() + std::ptrdiff_t(left), items.begin() + std::ptrdiff_t(middle),
                            merged.begin() + std::ptrdiff_t(out)) - merged.begin();
            out = std::copy(items.begin() + std::ptrdiff_t(right), items.begin() + std::ptrdiff_t(end),
                            merged.begin() + std::ptrdiff_t(out)) - merged.begin();
        }
        items.swap(merged);
    }
    return true;
}

// A column's texts as read, for its ORDER BY: one buffer rather than a string
// per text, so that a build cancelled later has little to free on its way out.
struct OrderTexts
{
    QByteArray bytes;
    std::vector<quint32> start{0};
    std::vector<bool> isNull;

    void append(const char *text, int length)
    {
        isNull.push_back(!text);
        bytes.append(text, text ? length : 0);
        start.push_back(quint32(bytes.size()));
    }
    std::string_view at(quint32 row) const
    {
        return {bytes.constData() + start[row], size_t(start[row + 1] - start[row])};
    }
};

QString textColumn(sqlite3_stmt *statement, int column)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    if (!text)
        return {};
    return QString::fromUtf8(text, sqlite3_column_bytes(statement, column));
}

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

bool SearchIndex::like(const char *loweredPattern, const char *loweredText)
{
    return patternCompare(reinterpret_cast<const unsigned char *>(loweredPattern),
                          reinterpret_cast<const unsigned char *>(loweredText))
            == Match;
}

void SearchIndex::Pool::append(quint32 verb, const char *text, int length, bool null)
{
    start.push_back(quint32(bytes.size()));
    owner.push_back(verb);
    isNull.push_back(null);
    const qsizetype at = bytes.size();
    bytes.append(text, length);
    lowerAscii(bytes.data() + at, length);
    bytes.append('\0');
}

void SearchIndex::Pool::closeVerb(quint32 verb)
{
    while (firstOfVerb.size() <= verb)
        firstOfVerb.push_back(quint32(start.size()));
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
    QByteArray sql = "SELECT _id, lower(italian)";
    for (const char *name : columnNames)
        sql += QByteArray(", ") + name;
    sql += ", voice_available FROM verb ORDER BY _id";
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(handle, sql.constData(), -1, &statement, nullptr) != SQLITE_OK)
        return fail();
    std::array<OrderTexts, ColumnCount> orderTexts;
    QHash<qint64, quint32> positionOfId;
    int rc;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
        const auto position = quint32(index->m_verbs.size());
        if ((position & 0xFF) == 0 && cancelled())
            break;
        VerbRecord record;
        record.id = sqlite3_column_int64(statement, 0);
        record.loweredItalian = textColumn(statement, 1);
        record.italian = textColumn(statement, 2 + Italian);
        record.simplifiedItalian = textColumn(statement, 2 + SimplifiedItalian);
        record.simplifiedGerman = textColumn(statement, 2 + SimplifiedGerman);
        record.simplifiedFrench = textColumn(statement, 2 + SimplifiedFrench);
        record.simplifiedSpanish = textColumn(statement, 2 + SimplifiedSpanish);
        record.simplifiedDutch = textColumn(statement, 2 + SimplifiedDutch);
        record.simplifiedPortuguese = textColumn(statement, 2 + SimplifiedPortuguese);
        record.voiceAvailable = sqlite3_column_int(statement, 2 + ColumnCount) != 0;
        record.english = textColumn(statement, 2 + English);
        record.german = textColumn(statement, 2 + German);
        record.french = textColumn(statement, 2 + French);
        record.spanish = textColumn(statement, 2 + Spanish);
        record.dutch = textColumn(statement, 2 + Dutch);
        record.portuguese = textColumn(statement, 2 + Portuguese);
        for (int column = 0; column < ColumnCount; ++column) {
            const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, 2 + column));
            const int length = sqlite3_column_bytes(statement, 2 + column);
            // A text is matched up to its first NUL, as LIKE reads it.
            const int matchedLength = text ? int(qstrnlen(text, uint(length))) : 0;
            index->m_columns[column].closeVerb(position);
            index->m_columns[column].append(position, text ? text : "", matchedLength, !text);
            orderTexts[column].append(text, length);
        }
        positionOfId.insert(record.id, position);
        index->m_verbs.push_back(std::move(record));
    }
    sqlite3_finalize(statement);
    if (cancelled())
        return nullptr;
    if (rc != SQLITE_DONE)
        return fail();

    const auto verbCount = quint32(index->m_verbs.size());
    for (Pool &pool : index->m_columns)
        pool.closeVerb(verbCount);
    for (int column = 0; column < ColumnCount; ++column) {
        if (cancelled())
            return nullptr;
        auto &order = index->m_orderBy[column];
        order.resize(verbCount);
        std::iota(order.begin(), order.end(), 0u);
        const OrderTexts &texts = orderTexts[column];
        // BINARY collation: NULL first, then bytes compared as unsigned.
        std::stable_sort(order.begin(), order.end(), [&](quint32 a, quint32 b) {
            if (texts.isNull[a] != texts.isNull[b])
                return bool(texts.isNull[a]);
            return texts.at(a) < texts.at(b);
        });
        orderTexts[column] = {};
    }

    // Forms, a verb's duplicates kept once: the statement groups by verb, so
    // only whether some form matches counts.
    if (sqlite3_prepare_v2(handle, "SELECT verbid, verb FROM conjugation ORDER BY verbid", -1, &statement, nullptr)
        != SQLITE_OK)
        return fail();
    // Rows come clustered by verb and verb positions follow ids, so each
    // verb's forms are folded and de-duplicated as soon as the next begins.
    Pool &forms = index->m_forms;
    std::vector<QByteArray> texts;
    quint32 current = 0;
    auto flush = [&]() {
        std::sort(texts.begin(), texts.end());
        texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
        forms.closeVerb(current);
        for (const QByteArray &text : texts)
            forms.append(current, text.constData(), int(text.size()), false);
        texts.clear();
    };
    qint64 rows = 0;
    while ((rc = sqlite3_step(statement)) == SQLITE_ROW) {
        if ((++rows & 0xFFF) == 0 && cancelled())
            break;
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, 1));
        const auto found = positionOfId.constFind(sqlite3_column_int64(statement, 0));
        if (!text || found == positionOfId.constEnd())
            continue;
        if (*found != current) {
            flush();
            current = *found;
        }
        QByteArray folded(text, qsizetype(qstrnlen(text, uint(sqlite3_column_bytes(statement, 1)))));
        lowerAscii(folded.data(), folded.size());
        texts.push_back(std::move(folded));
    }
    sqlite3_finalize(statement);
    if (cancelled())
        return nullptr;
    if (rc != SQLITE_DONE)
        return fail();
    flush();
    forms.closeVerb(verbCount);
    forms.bytes.squeeze();
    if (!forms.finish(cancel))
        return nullptr;
    for (Pool &pool : index->m_columns) {
        if (!pool.finish(cancel))
            return nullptr;
    }
    return index;
}

namespace {
quint32 gramKey(const unsigned char *bytes, int length)
{
    quint32 key = quint32(length) << 24;
    for (int i = 0; i < length; ++i)
        key |= quint32(bytes[i]) << (16 - 8 * i);
    return key;
}
} // namespace

bool SearchIndex::Pool::finish(const std::atomic_bool *cancel)
{
    const auto textCount = quint32(start.size());
    sorted.resize(textCount);
    std::iota(sorted.begin(), sorted.end(), 0u);
    if (!sortUnlessCancelled(sorted, [this](quint32 a, quint32 b) { return std::strcmp(text(a), text(b)) < 0; },
                             cancel))
        return false;

    std::vector<std::pair<quint32, quint32>> pairs;
    std::vector<quint32> keys;
    const auto verbCount = quint32(firstOfVerb.size() - 1);
    // The heaviest loop of the build, about a tenth of a millisecond a verb
    // with all its forms.
    for (quint32 verb = 0; verb < verbCount; ++verb) {
        if (isSet(cancel))
            return false;
        keys.clear();
        for (quint32 number = firstOfVerb[verb]; number < firstOfVerb[verb + 1]; ++number) {
            const auto *bytes = reinterpret_cast<const unsigned char *>(text(number));
            const auto length = int(std::strlen(text(number)));
            for (int i = 0; i < length; ++i) {
                for (int n = 1; n <= 3 && i + n <= length; ++n)
                    keys.push_back(gramKey(bytes + i, n));
            }
        }
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        for (const quint32 key : keys)
            pairs.emplace_back(key, verb);
    }
    // Posting lists by counting rather than by sorting the pairs: a few
    // thousand distinct keys over a million pairs. The pairs come in verb
    // order, so each list fills in ascending order.
    constexpr size_t CheckEvery = 1 << 16;
    QHash<quint32, quint32> slotOf;
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (i % CheckEvery == 0 && isSet(cancel))
            return false;
        ++slotOf[pairs[i].first];
    }
    gramKeys.assign(slotOf.keyBegin(), slotOf.keyEnd());
    std::sort(gramKeys.begin(), gramKeys.end());
    gramStart.resize(gramKeys.size() + 1);
    quint32 offset = 0;
    for (size_t k = 0; k < gramKeys.size(); ++k) {
        gramStart[k] = offset;
        quint32 &slot = slotOf[gramKeys[k]];
        offset += slot;
        slot = gramStart[k];
    }
    gramStart.back() = offset;
    gramVerbs.resize(pairs.size());
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (i % CheckEvery == 0 && isSet(cancel))
            return false;
        gramVerbs[slotOf[pairs[i].first]++] = pairs[i].second;
    }
    return true;
}

std::vector<quint32> SearchIndex::Pool::verbsContaining(const QByteArray &literal) const
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(literal.constData());
    const int length = int(literal.size());
    const int n = std::min(length, 3);
    std::vector<std::pair<const quint32 *, const quint32 *>> postings;
    for (int i = 0; i + n <= length; ++i) {
        const quint32 key = gramKey(bytes + i, n);
        const auto found = std::lower_bound(gramKeys.begin(), gramKeys.end(), key);
        if (found == gramKeys.end() || *found != key)
            return {};
        const auto k = size_t(found - gramKeys.begin());
        postings.emplace_back(gramVerbs.data() + gramStart[k], gramVerbs.data() + gramStart[k + 1]);
    }
    std::sort(postings.begin(), postings.end(),
              [](const auto &a, const auto &b) { return a.second - a.first < b.second - b.first; });
    std::vector<quint32> verbs(postings.front().first, postings.front().second);
    std::vector<quint32> narrowed;
    for (size_t i = 1; i < postings.size() && !verbs.empty(); ++i) {
        narrowed.clear();
        std::set_intersection(verbs.begin(), verbs.end(), postings[i].first, postings[i].second,
                              std::back_inserter(narrowed));
        verbs.swap(narrowed);
    }
    return verbs;
}

void SearchIndex::matchPool(const Pool &pool, const Pattern &pattern, std::vector<char> &matched)
{
    auto test = [&](quint32 number) { return !pool.isNull[number] && like(pattern.bytes.constData(), pool.text(number)); };
    auto testVerb = [&](quint32 verb) {
        for (quint32 number = pool.firstOfVerb[verb]; number < pool.firstOfVerb[verb + 1]; ++number) {
            if (test(number)) {
                matched[verb] = 1;
                return;
            }
        }
    };

    if (!pattern.prefix.isEmpty()) {
        // A match starts with the prefix: one range of the sorted texts.
        const char *prefix = pattern.prefix.constData();
        const auto length = size_t(pattern.prefix.size());
        const auto from = std::lower_bound(pool.sorted.begin(), pool.sorted.end(), prefix,
                                           [&](quint32 number, const char *value) {
                                               return std::strncmp(pool.text(number), value, length) < 0;
                                           });
        const auto to = std::upper_bound(from, pool.sorted.end(), prefix, [&](const char *value, quint32 number) {
            return std::strncmp(value, pool.text(number), length) < 0;
        });
        for (auto it = from; it != to; ++it) {
            const quint32 verb = pool.owner[*it];
            if (!matched[verb] && (pattern.isPrefixOnly || test(*it)))
                matched[verb] = 1;
        }
    } else if (!pattern.literal.isEmpty()) {
        const std::vector<quint32> candidates = pool.verbsContaining(pattern.literal);
        // Up to three bytes the n-gram lookup is exact.
        const bool exact = pattern.isContainsOnly && pattern.literal.size() <= 3;
        const auto textCount = quint32(pool.start.size());
        for (const quint32 verb : candidates) {
            if (matched[verb])
                continue;
            if (exact) {
                matched[verb] = 1;
                continue;
            }
            // The verb's texts lie side by side: look for the literal there
            // and test only the texts that hold it.
            const quint32 first = pool.firstOfVerb[verb];
            const quint32 last = pool.firstOfVerb[verb + 1];
            if (first == last)
                continue;
            const char *begin = pool.text(first);
            const char *end = last < textCount ? pool.text(last) : pool.bytes.constData() + pool.bytes.size();
            const char *from = begin;
            while (const auto *hit = static_cast<const char *>(
                           memmem(from, size_t(end - from), pattern.literal.constData(), size_t(pattern.literal.size())))) {
                const auto after = std::upper_bound(pool.start.begin() + first, pool.start.begin() + last,
                                                    quint32(hit - pool.bytes.constData()));
                const auto number = quint32(after - pool.start.begin()) - 1;
                if (pattern.isContainsOnly || test(number)) {
                    matched[verb] = 1;
                    break;
                }
                from = pool.text(number) + std::strlen(pool.text(number)) + 1;
                if (from >= end)
                    break;
            }
        }
    } else {
        // Only wildcards: nothing narrows it down.
        for (quint32 verb = 0; verb < matched.size(); ++verb) {
            if (!matched[verb])
                testVerb(verb);
        }
    }
}

SearchIndex::Outcome SearchIndex::search(const Query &query, const std::vector<Favourite> &favourites,
                                         std::vector<Hit> &hits) const
{
    QByteArray pattern = query.pattern.toUtf8();
    // Evaluated on the first row, so an empty table never sees the limit.
    if (pattern.size() > m_likePatternLimit && !m_verbs.empty())
        return Outcome::PatternTooLong;
    // LIKE stops reading the pattern at a NUL.
    pattern.truncate(qstrnlen(pattern.constData(), uint(pattern.size())));
    lowerAscii(pattern.data(), pattern.size());
    Pattern compiled{pattern, plainPrefix(pattern), longestLiteral(pattern)};
    const qsizetype wildcards = pattern.count('%') + pattern.count('_');
    compiled.isPrefixOnly = !compiled.prefix.isEmpty() && wildcards == 1 && pattern.endsWith('%');
    compiled.isContainsOnly = !compiled.literal.isEmpty() && wildcards == 2 && pattern.startsWith('%')
            && pattern.endsWith('%');

    std::vector<char> matched(m_verbs.size(), 0);
    matchPool(m_columns[Italian], compiled, matched);
    matchPool(m_columns[SimplifiedItalian], compiled, matched);
    if (query.includeTranslation) {
        matchPool(m_columns[query.translation], compiled, matched);
        if (query.folded != query.translation)
            matchPool(m_columns[query.folded], compiled, matched);
    }
    if (query.includeConjugations)
        matchPool(m_forms, compiled, matched);

    appendRows(m_orderBy[query.order], &matched, favourites, query.includeConjugations, hits);
    return Outcome::Rows;
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
        const auto found = std::lower_bound(m_verbs.begin(), m_verbs.end(), favourite.verbId,
                                            [](const VerbRecord &record, qint64 id) { return record.id < id; });
        if (found != m_verbs.end() && found->id == favourite.verbId)
            favouriteRows.emplace_back(quint32(found - m_verbs.begin()), favourite);
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
    const VerbRecord &record = m_verbs[hit.position];
    VerbPtr verb = makeVerb(record, hit);
    verb->italian = record.italian;
    verb->simplified_italian = record.simplifiedItalian;
    verb->simplified_german = record.simplifiedGerman;
    verb->simplified_french = record.simplifiedFrench;
    verb->simplified_spanish = record.simplifiedSpanish;
    verb->simplified_dutch = record.simplifiedDutch;
    verb->simplified_portuguese = record.simplifiedPortuguese;
    verb->voice_available = record.voiceAvailable;
    return verb;
}

const QString SearchIndex::VerbRecord::*const SearchIndex::recordText[ColumnCount] = {
        &VerbRecord::italian,           &VerbRecord::simplifiedItalian,   &VerbRecord::english,
        &VerbRecord::german,            &VerbRecord::simplifiedGerman,    &VerbRecord::french,
        &VerbRecord::simplifiedFrench,  &VerbRecord::spanish,             &VerbRecord::simplifiedSpanish,
        &VerbRecord::dutch,             &VerbRecord::simplifiedDutch,     &VerbRecord::portuguese,
        &VerbRecord::simplifiedPortuguese,
};

QString SearchIndex::listSection(const Hit &hit, Column order) const
{
    if (order == ColumnCount)
        return {};
    const QString &text = m_verbs[hit.position].*recordText[order];
    if (text.isEmpty())
        return {};
    // substr(column, 1, 1) takes one character, which may be two UTF-16 units.
    return text.left(text.at(0).isHighSurrogate() ? 2 : 1).toUpper();
}

VerbPtr SearchIndex::makeVerb(const VerbRecord &record, const Hit &hit)
{
    auto verb = std::make_shared<Verb>();
    verb->id = record.id;
    verb->english = record.english;
    verb->german = record.german;
    verb->french = record.french;
    verb->spanish = record.spanish;
    verb->dutch = record.dutch;
    verb->portuguese = record.portuguese;
    verb->isFavourite = hit.isFavourite;
    return verb;
}

VerbPtr SearchIndex::verb(const Hit &hit) const
{
    const VerbRecord &record = m_verbs[hit.position];
    VerbPtr verb = makeVerb(record, hit);
    verb->italian = record.loweredItalian;
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
