#pragma once

#include "Verb.h"

#include <QByteArray>
#include <QList>

#include <array>
#include <atomic>
#include <memory>
#include <string_view>
#include <vector>

namespace norvella {

class Database;

// The search statement answered from memory. The statement with conjugated
// forms scans some 600,000 rows with LIKE at every keystroke (up to a second
// on a phone); this keeps the same texts, ASCII-lower-cased once, in flat
// buffers and runs the same LIKE matching over them, so the rows, their order
// and their fields are exactly the statement's.
class SearchIndex
{
public:
    // The verb table's text columns the statement can match or order by.
    enum Column {
        Italian,
        SimplifiedItalian,
        English,
        German,
        SimplifiedGerman,
        French,
        SimplifiedFrench,
        Spanish,
        SimplifiedSpanish,
        Dutch,
        SimplifiedDutch,
        Portuguese,
        SimplifiedPortuguese,
        ColumnCount
    };

    struct Query
    {
        // The LIKE pattern exactly as the statement would bind it.
        QString pattern;
        // Also match these two columns (the translation and its folded form).
        bool includeTranslation = false;
        Column translation = English;
        Column folded = English;
        bool includeConjugations = false;
        Column order = SimplifiedItalian;
    };

    // One row of the favourite table.
    struct Favourite
    {
        qint64 id = 0;
        qint64 verbId = 0;
    };

    enum class Outcome {
        Rows,
        // SQLite refuses patterns longer than its limit; the statement fails.
        PatternTooLong,
    };

    static QString columnName(Column column);
    // The column of that name, or ColumnCount when there is none.
    static Column columnNamed(const QString &name);

    // Reads every verb and form through the connection; null, with the
    // reason in `error`, when a read fails, and null when `cancel` is set
    // while it runs.
    static std::shared_ptr<const SearchIndex> build(Database &db, QString *error = nullptr,
                                                    const std::atomic_bool *cancel = nullptr);

    // One row of the statement's result: which verb, and its favourite flag.
    struct Hit
    {
        quint32 position = 0;
        bool isFavourite = false;
    };

    // The statement's rows for the query, given the favourite table as it is
    // now, appended to `hits` in the statement's order.
    Outcome search(const Query &query, const std::vector<Favourite> &favourites, std::vector<Hit> &hits) const;
    // The record the statement reads for a row, made when it is needed.
    VerbPtr verb(const Hit &hit) const;

    // The alphabetical list's rows: every verb once per favourite row (once
    // when it has none), ordered by the column as its statement orders them.
    void everyVerb(Column order, const std::vector<Favourite> &favourites, std::vector<Hit> &hits) const;
    // The record the alphabetical list reads for a row, and its section
    // title (the first character of the order column, upper-cased).
    VerbPtr listVerb(const Hit &hit) const;
    QString listSection(const Hit &hit, Column order) const;
    // The favourite table as the statements join it; false when it cannot be read.
    static bool readFavourites(Database &db, std::vector<Favourite> &favourites);

    // LIKE as SQLite evaluates it without an ESCAPE clause, on text that is
    // already ASCII-lower-cased on both sides. Exposed for tests.
    static bool like(const char *loweredPattern, const char *loweredText);

private:
    // NUL-terminated texts, ASCII-lower-cased, in one buffer, each verb's
    // texts side by side: no per-text offsets, a text ends at its NUL and the
    // verb's block at the next verb's start.
    struct Pool
    {
        QByteArray bytes;
        std::vector<quint32> verbStart; // per verb, plus one past the end
        std::vector<bool> isNull;       // per verb, where a verb has one text; NULL never matches
        // For every run of one to three bytes (and, apart, for every text's
        // first one to three bytes) the verbs whose texts hold it: ascending
        // verb positions as variable-length gaps. Only the forms have them;
        // a column is small enough to search whole.
        std::vector<quint32> gramKeys;  // sorted
        std::vector<quint32> gramStart; // per key: offset in gramVerbs, plus the end
        std::vector<quint32> gramCount; // per key: how many verbs
        QByteArray gramVerbs;

        void append(const char *text, int length);
        // Marks where the texts of every verb up to this one begin.
        void closeVerb(quint32 verb);
        // Builds the n-gram lists once every text is in; false when `cancel`
        // is set on the way.
        bool buildGrams(const std::atomic_bool *cancel);
        // Verbs whose texts hold every n-gram of `literal` (and, with a
        // `prefix`, a text starting with its first bytes): a superset of those
        // with a text that does.
        std::vector<quint32> candidates(const QByteArray &literal, const QByteArray &prefix) const;
    };

    // The verb table's texts as read, one buffer for all: search results and
    // list rows make their records from it when they are shown.
    struct Texts
    {
        QByteArray bytes;
        std::vector<quint32> start{0}; // per verb and column, plus the end
        std::vector<bool> isNull;      // per verb and column

        void append(const char *text, int length);
        std::string_view at(quint32 position, Column column) const;
        bool null(quint32 position, Column column) const { return isNull[position * ColumnCount + column]; }
    };
    QString text(quint32 position, Column column) const;
    VerbPtr makeVerb(const Hit &hit) const;
    void appendRows(const std::vector<quint32> &order, const std::vector<char> *matched,
                    const std::vector<Favourite> &favourites, bool grouped, std::vector<Hit> &hits) const;

    struct Pattern
    {
        QByteArray bytes;   // lower-cased, up to the first NUL
        QByteArray prefix;  // the plain text it starts with
        QByteArray literal; // its longest run of plain text
        // "text%": every text starting with the prefix matches.
        bool isPrefixOnly = false;
        // "%text%": every text containing the literal matches.
        bool isContainsOnly = false;
    };
    static void matchPool(const Pool &pool, const Pattern &pattern, std::vector<char> &matched);

    std::vector<qint64> m_ids; // ascending, as the verb table's rowids
    std::vector<bool> m_voiceAvailable;
    Texts m_texts;
    std::array<Pool, ColumnCount> m_columns;
    Pool m_forms;
    // Verb positions in ORDER BY order for each column; ties keep table order.
    std::array<std::vector<quint32>, ColumnCount> m_orderBy;
    int m_likePatternLimit = 50000;
};

} // namespace norvella
