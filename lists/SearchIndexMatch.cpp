#include "AsciiFold.h"
#include "SearchIndex.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace norvella {

namespace {

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

// The kinds of n-gram: a run anywhere in a text, and a text's first bytes.
constexpr quint32 AnywhereKind = 0;
constexpr quint32 StartKind = 4;

quint32 gramKey(const unsigned char *bytes, int length, quint32 kind)
{
    quint32 key = (quint32(length) + kind) << 24;
    for (int i = 0; i < length; ++i)
        key |= quint32(bytes[i]) << (16 - 8 * i);
    return key;
}

// Posting lists as gaps between ascending verb positions, seven bits a byte:
// most gaps of a common run are a handful of verbs, one byte each.
void putGap(char *&out, quint32 gap)
{
    while (gap >= 0x80) {
        *out++ = char(0x80 | (gap & 0x7F));
        gap >>= 7;
    }
    *out++ = char(gap);
}

int gapLength(quint32 gap)
{
    int length = 1;
    while (gap >= 0x80) {
        gap >>= 7;
        ++length;
    }
    return length;
}

quint32 takeGap(const unsigned char *&in)
{
    quint32 gap = 0;
    int shift = 0;
    while (*in & 0x80) {
        gap |= quint32(*in++ & 0x7F) << shift;
        shift += 7;
    }
    return gap | (quint32(*in++) << shift);
}

// A key's number while the lists are built: one- and two-byte runs by table,
// three-byte runs by an open-addressed hash of a few tens of thousands.
class GramNumbers
{
public:
    GramNumbers() : m_small(2 * (1 << 16) + 2 * 256, -1), m_table(1 << 16, Empty) {}

    quint32 number(quint32 key)
    {
        const quint32 length = (key >> 24) & 3;
        if (length < 3) {
            const bool atStart = (key >> 24) >= StartKind;
            const quint32 value = (key >> (length == 1 ? 16 : 8)) & (length == 1 ? 0xFF : 0xFFFF);
            const size_t slot = (atStart ? (1 << 16) + 256 : 0) + (length == 1 ? (1 << 16) + value : value);
            if (m_small[slot] < 0)
                m_small[slot] = qint32(add(key));
            return quint32(m_small[slot]);
        }
        size_t mask = m_table.size() - 1;
        for (size_t slot = hash(key) & mask;; slot = (slot + 1) & mask) {
            if (m_table[slot] == Empty) {
                if (2 * (m_bigCount + 1) > m_table.size()) {
                    grow();
                    return number(key);
                }
                ++m_bigCount;
                m_table[slot] = add(key);
                return m_table[slot];
            }
            if (m_keys[m_table[slot]] == key)
                return m_table[slot];
        }
    }
    const std::vector<quint32> &keys() const { return m_keys; }

private:
    static constexpr quint32 Empty = 0xFFFFFFFF;
    static size_t hash(quint32 key) { return size_t((key * 0x9E3779B1u) >> 7); }
    quint32 add(quint32 key)
    {
        m_keys.push_back(key);
        return quint32(m_keys.size() - 1);
    }
    void grow()
    {
        std::vector<quint32> table(m_table.size() * 2, Empty);
        const size_t mask = table.size() - 1;
        for (const quint32 number : m_table) {
            if (number == Empty)
                continue;
            size_t slot = hash(m_keys[number]) & mask;
            while (table[slot] != Empty)
                slot = (slot + 1) & mask;
            table[slot] = number;
        }
        m_table.swap(table);
    }

    std::vector<qint32> m_small;
    std::vector<quint32> m_table;
    std::vector<quint32> m_keys;
    size_t m_bigCount = 0;
};

// Calls `visit` with every n-gram key of a verb's texts, repeats included.
template<typename Visit>
void forEachGram(const char *from, const char *to, Visit visit)
{
    while (from < to) {
        const auto *bytes = reinterpret_cast<const unsigned char *>(from);
        const auto length = int(std::strlen(from));
        for (int n = 1; n <= 3 && n <= length; ++n)
            visit(gramKey(bytes, n, StartKind));
        for (int i = 0; i < length; ++i) {
            for (int n = 1; n <= 3 && i + n <= length; ++n)
                visit(gramKey(bytes + i, n, AnywhereKind));
        }
        from += length + 1;
    }
}

} // namespace

bool SearchIndex::like(const char *loweredPattern, const char *loweredText)
{
    return patternCompare(reinterpret_cast<const unsigned char *>(loweredPattern),
                          reinterpret_cast<const unsigned char *>(loweredText))
            == Match;
}

void SearchIndex::Pool::append(const char *text, int length)
{
    const qsizetype at = bytes.size();
    bytes.append(text, length);
    lowerAscii(bytes.data() + at, length);
    bytes.append('\0');
}

void SearchIndex::Pool::closeVerb(quint32 verb)
{
    while (verbStart.size() <= verb)
        verbStart.push_back(quint32(bytes.size()));
}

bool SearchIndex::Pool::buildGrams(const std::atomic_bool *cancel)
{
    // Twice over the texts, counting and then writing, rather than keeping
    // every (run, verb) pair: the pairs would outweigh the lists several times.
    const auto verbCount = quint32(verbStart.size() - 1);
    GramNumbers numbers;
    std::vector<quint32> last;
    std::vector<quint32> size;
    std::vector<quint32> count;
    for (quint32 verb = 0; verb < verbCount; ++verb) {
        if ((verb & 0x3F) == 0 && isSet(cancel))
            return false;
        forEachGram(bytes.constData() + verbStart[verb], bytes.constData() + verbStart[verb + 1], [&](quint32 key) {
            const quint32 number = numbers.number(key);
            if (number == last.size()) {
                last.push_back(0);
                size.push_back(0);
                count.push_back(0);
            } else if (count[number] && last[number] == verb) {
                return;
            }
            size[number] += quint32(gapLength(verb - last[number]));
            last[number] = verb;
            ++count[number];
        });
    }
    const std::vector<quint32> &keys = numbers.keys();
    std::vector<quint32> byKey(keys.size());
    for (quint32 i = 0; i < byKey.size(); ++i)
        byKey[i] = i;
    std::sort(byKey.begin(), byKey.end(), [&](quint32 a, quint32 b) { return keys[a] < keys[b]; });
    gramKeys.resize(keys.size());
    gramStart.resize(keys.size() + 1);
    gramCount.resize(keys.size());
    // The writing pass keeps each list's cursor where `size` was.
    std::vector<quint32> &cursor = size;
    quint32 offset = 0;
    for (size_t k = 0; k < byKey.size(); ++k) {
        const quint32 number = byKey[k];
        gramKeys[k] = keys[number];
        gramCount[k] = count[number];
        gramStart[k] = offset;
        offset += size[number];
        cursor[number] = gramStart[k];
        count[number] = 0;
    }
    gramStart.back() = offset;
    gramVerbs = QByteArray(qsizetype(offset), Qt::Uninitialized);
    char *out = gramVerbs.data();
    for (quint32 verb = 0; verb < verbCount; ++verb) {
        if ((verb & 0x3F) == 0 && isSet(cancel))
            return false;
        forEachGram(bytes.constData() + verbStart[verb], bytes.constData() + verbStart[verb + 1], [&](quint32 key) {
            const quint32 number = numbers.number(key);
            if (count[number] && last[number] == verb)
                return;
            char *at = out + cursor[number];
            putGap(at, verb - (count[number] ? last[number] : 0));
            cursor[number] = quint32(at - out);
            last[number] = verb;
            ++count[number];
        });
    }
    return true;
}

std::vector<quint32> SearchIndex::Pool::candidates(const QByteArray &literal, const QByteArray &prefix) const
{
    struct List
    {
        const unsigned char *bytes;
        quint32 count;
    };
    std::vector<List> lists;
    auto add = [&](const QByteArray &text, quint32 kind, bool everyRun) {
        const auto *bytes = reinterpret_cast<const unsigned char *>(text.constData());
        const int length = int(text.size());
        const int n = std::min(length, 3);
        for (int i = 0; i + n <= length; i += everyRun ? 1 : length) {
            const quint32 key = gramKey(bytes + i, n, kind);
            const auto found = std::lower_bound(gramKeys.begin(), gramKeys.end(), key);
            if (found == gramKeys.end() || *found != key)
                return false;
            const auto k = size_t(found - gramKeys.begin());
            lists.push_back({reinterpret_cast<const unsigned char *>(gramVerbs.constData()) + gramStart[k],
                             gramCount[k]});
        }
        return true;
    };
    if ((!literal.isEmpty() && !add(literal, AnywhereKind, true)) || (!prefix.isEmpty() && !add(prefix, StartKind, false)))
        return {};
    std::sort(lists.begin(), lists.end(), [](const List &a, const List &b) { return a.count < b.count; });
    std::vector<quint32> verbs;
    verbs.reserve(lists.front().count);
    {
        const unsigned char *in = lists.front().bytes;
        quint32 verb = 0;
        for (quint32 i = 0; i < lists.front().count; ++i)
            verbs.push_back(verb += takeGap(in));
    }
    for (size_t l = 1; l < lists.size() && !verbs.empty(); ++l) {
        const unsigned char *in = lists[l].bytes;
        quint32 remaining = lists[l].count;
        quint32 other = takeGap(in);
        --remaining;
        size_t kept = 0;
        for (const quint32 verb : verbs) {
            while (other < verb && remaining) {
                other += takeGap(in);
                --remaining;
            }
            if (other == verb)
                verbs[kept++] = verb;
            else if (other < verb)
                break;
        }
        verbs.resize(kept);
    }
    return verbs;
}

namespace {
// The texts of [from, to) that hold `literal`, each handed to `visit` until it
// returns true; without a literal, every text.
template<typename Visit>
bool anyTextHolding(const char *from, const char *to, const QByteArray &literal, Visit visit)
{
    if (literal.isEmpty()) {
        for (const char *text = from; text < to; text += std::strlen(text) + 1) {
            if (visit(text))
                return true;
        }
        return false;
    }
    const char *cursor = from;
    while (cursor < to) {
        const auto *hit = static_cast<const char *>(
                memmem(cursor, size_t(to - cursor), literal.constData(), size_t(literal.size())));
        if (!hit)
            return false;
        const char *text = hit;
        while (text > from && text[-1] != '\0')
            --text;
        if (visit(text))
            return true;
        cursor = hit + std::strlen(hit) + 1;
    }
    return false;
}
} // namespace

void SearchIndex::matchPool(const Pool &pool, const Pattern &pattern, std::vector<char> &matched)
{
    const char *base = pool.bytes.constData();
    const QByteArray &prefix = pattern.prefix;
    auto test = [&](const char *text) {
        if (pattern.isContainsOnly)
            return true;
        if (!prefix.isEmpty() && std::strncmp(text, prefix.constData(), size_t(prefix.size())) != 0)
            return false;
        return pattern.isPrefixOnly || like(pattern.bytes.constData(), text);
    };
    auto testVerb = [&](quint32 verb) {
        if (!pool.isNull.empty() && pool.isNull[verb])
            return;
        if (anyTextHolding(base + pool.verbStart[verb], base + pool.verbStart[verb + 1], pattern.literal, test))
            matched[verb] = 1;
    };

    if (!pool.gramKeys.empty() && (!pattern.literal.isEmpty() || !prefix.isEmpty())) {
        const std::vector<quint32> verbs = pool.candidates(pattern.literal, prefix.left(3));
        // The lists are exact for a run of up to three bytes.
        const bool exact = (pattern.isContainsOnly && pattern.literal.size() <= 3)
                || (pattern.isPrefixOnly && prefix.size() <= 3);
        for (const quint32 verb : verbs) {
            if (matched[verb])
                continue;
            if (exact)
                matched[verb] = 1;
            else
                testVerb(verb);
        }
    } else if (!pattern.literal.isEmpty()) {
        // A column is a few hundred kilobytes: one pass over all of it, a
        // verb's block left at its first match.
        const char *end = base + pool.bytes.size();
        const char *cursor = base;
        while (cursor < end) {
            const auto *hit = static_cast<const char *>(
                    memmem(cursor, size_t(end - cursor), pattern.literal.constData(), size_t(pattern.literal.size())));
            if (!hit)
                break;
            const auto verb = quint32(std::upper_bound(pool.verbStart.begin(), pool.verbStart.end(),
                                                       quint32(hit - base))
                                      - pool.verbStart.begin())
                    - 1;
            if (!matched[verb])
                testVerb(verb);
            cursor = base + pool.verbStart[verb + 1];
        }
    } else {
        // Only wildcards: nothing narrows it down.
        for (quint32 verb = 0; verb + 1 < pool.verbStart.size(); ++verb) {
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
    if (pattern.size() > m_likePatternLimit && !m_ids.empty())
        return Outcome::PatternTooLong;
    // LIKE stops reading the pattern at a NUL.
    pattern.truncate(qstrnlen(pattern.constData(), uint(pattern.size())));
    lowerAscii(pattern.data(), pattern.size());
    Pattern compiled{pattern, plainPrefix(pattern), longestLiteral(pattern)};
    const qsizetype wildcards = pattern.count('%') + pattern.count('_');
    compiled.isPrefixOnly = !compiled.prefix.isEmpty() && wildcards == 1 && pattern.endsWith('%');
    compiled.isContainsOnly = !compiled.literal.isEmpty() && wildcards == 2 && pattern.startsWith('%')
            && pattern.endsWith('%');

    std::vector<char> matched(m_ids.size(), 0);
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

} // namespace norvella
