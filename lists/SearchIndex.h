#pragma once

#include "Verb.h"

#include <QByteArray>
#include <QList>

#include <array>
#include <atomic>
#include <memory>
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
    // Many NUL-terminated texts in one buffer, grouped by verb, with two ways
    // to find candidates without reading them all: the texts in byte order
    // (for a pattern that starts with plain text) and, for every run of one
    // to three bytes, the verbs whose texts contain it (for text anywhere).
    struct Pool
    {
        QByteArray bytes;
        std::vector<quint32> start;       // per text
        std::vector<quint32> owner;       // per text: verb position
        std::vector<quint32> firstOfVerb; // per verb, plus one past the end
        std::vector<bool> isNull;         // per text; NULL never matches
        std::vector<quint32> sorted;      // text numbers in byte order
        std::vector<quint32> gramKeys;    // sorted
        std::vector<quint32> gramStart;   // per key, plus one past the end
        std::vector<quint32> gramVerbs;   // verb positions, ascending per key

        void append(quint32 verb, const char *text, int length, bool null);
        // Marks where the texts of every verb up to this one begin.
        void closeVerb(quint32 verb);
        // Builds the two lookups once every text is in; false when `cancel`
        // is set on the way.
        bool finish(const std::atomic_bool *cancel);
        const char *text(quint32 number) const { return bytes.constData() + start[number]; }
        // Verbs with a text containing every byte of `literal` in n-gram
        // terms: a superset of those containing `literal` itself.
        std::vector<quint32> verbsContaining(const QByteArray &literal) const;
    };

    // The fields a search result carries, kept compact: a full Verb is
    // mostly empty form lists, and copying those per row is what a broad
    // search would spend its time on.
    struct VerbRecord
    {
        qint64 id = 0;
        bool voiceAvailable = false;
        // `loweredItalian` is what search results show; the list shows `italian`.
        QString loweredItalian, italian, english, german, french, spanish, dutch, portuguese;
        QString simplifiedItalian, simplifiedGerman, simplifiedFrench, simplifiedSpanish, simplifiedDutch,
                simplifiedPortuguese;
    };
    // The record's text for each column, by the column's position.
    static const QString VerbRecord::*const recordText[ColumnCount];
    static VerbPtr makeVerb(const VerbRecord &record, const Hit &hit);
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

    std::vector<VerbRecord> m_verbs;
    std::array<Pool, ColumnCount> m_columns;
    Pool m_forms;
    // Verb positions in ORDER BY order for each column; ties keep table order.
    std::array<std::vector<quint32>, ColumnCount> m_orderBy;
    int m_likePatternLimit = 50000;
};

} // namespace norvella
