#include "SearchResultsTableViewController.h"

#include "CrashLog.h"
#include "Database.h"
#include "Settings.h"

#include <QtConcurrent/QtConcurrentRun>

namespace norvella {

namespace {
struct TranslationColumns
{
    SearchIndex::Column translation;
    SearchIndex::Column folded;
};

TranslationColumns translationColumns(const QString &language)
{
    static const std::pair<const char *, TranslationColumns> byPrefix[] = {
        {"de", {SearchIndex::German, SearchIndex::SimplifiedGerman}},
        {"es", {SearchIndex::Spanish, SearchIndex::SimplifiedSpanish}},
        {"nl", {SearchIndex::Dutch, SearchIndex::SimplifiedDutch}},
        {"pt", {SearchIndex::Portuguese, SearchIndex::SimplifiedPortuguese}},
        {"it", {SearchIndex::Italian, SearchIndex::SimplifiedItalian}},
        {"fr", {SearchIndex::French, SearchIndex::SimplifiedFrench}},
    };
    for (const auto &[prefix, columns] : byPrefix) {
        if (language.startsWith(QLatin1String(prefix)))
            return columns;
    }
    // English has no folded column of its own.
    return {SearchIndex::English, SearchIndex::English};
}

// What the search settings ask for, shared by the statement and the index.
SearchIndex::Query queryFor(const QString &text, const Settings &settings, const QStringList &preferredLanguages)
{
    QString language = Preferences::translationLanguage(settings);
    if (language.isEmpty())
        language = preferredLanguages.value(0);
    const TranslationColumns columns = translationColumns(language);
    SearchIndex::Query query;
    query.pattern = Preferences::searchFromStart(settings) ? text + QLatin1Char('%')
                                                           : QLatin1Char('%') + text + QLatin1Char('%');
    query.includeTranslation = Preferences::includeEnglish(settings);
    query.translation = columns.translation;
    query.folded = columns.folded;
    query.includeConjugations = Preferences::includeConjugations(settings);
    // Sorting by the translation uses the folded column, English aside.
    query.order = Preferences::sortByLang(settings) ? SearchIndex::SimplifiedItalian : columns.folded;
    return query;
}

std::shared_ptr<const SearchIndex> buildIndex(const QString &path, const std::shared_ptr<std::atomic_bool> &cancel)
{
    Database db(path);
    QString error;
    auto index = SearchIndex::build(db, &error, cancel.get());
    if (!index && !*cancel)
        CrashLog::log(QStringLiteral("The search index could not be built, searching with the statement: ") + error);
    return index;
}
} // namespace

SearchResultsTableViewController::SearchResultsTableViewController(QObject *parent) : VerbTableModel(parent)
{
    // A build for a queue that is gone only holds up the CPU and, at quit,
    // the thread pool that waits for it.
    connect(this, &VerbTableModel::queueChanged, this, &SearchResultsTableViewController::dropIndex);
}

SearchResultsTableViewController::~SearchResultsTableViewController()
{
    dropIndex();
}

void SearchResultsTableViewController::dropIndex()
{
    if (m_cancelBuild)
        *m_cancelBuild = true;
    m_cancelBuild.reset();
    delete m_indexBuild;
    m_index.reset();
    m_indexQueue.reset();
}

SearchResultsTableViewController::Statement SearchResultsTableViewController::statement(
        const QString &query, const Settings &settings, const QStringList &preferredLanguages)
{
    const SearchIndex::Query built = queryFor(query, settings, preferredLanguages);
    const QString order = SearchIndex::columnName(built.order);
    const QString selected = QStringLiteral("verb._id, voice_available, english, lower(italian) as italian, "
                                            "simplified_italian, german, simplified_german, french, simplified_french, "
                                            "dutch, simplified_dutch, spanish, simplified_spanish, portuguese, "
                                            "simplified_portuguese, substr(")
            + order + QStringLiteral(", 0, 1) as index_letter, favourite._id as favourite_available");
    QString condition = QStringLiteral("italian LIKE ? OR simplified_italian LIKE ?");
    QVariantList arguments{built.pattern, built.pattern};
    if (built.includeTranslation) {
        condition += QStringLiteral(" OR ") + SearchIndex::columnName(built.translation) + QStringLiteral(" LIKE ? OR ")
                + SearchIndex::columnName(built.folded) + QStringLiteral(" LIKE ?");
        arguments << built.pattern << built.pattern;
    }
    QString join;
    QString grouping;
    if (built.includeConjugations) {
        condition += QStringLiteral(" OR conjugation.verb like ?");
        arguments << built.pattern;
        join = QStringLiteral("LEFT OUTER JOIN conjugation ON verb._id = conjugation.verbid");
        grouping = QStringLiteral("GROUP BY verb._id");
    }
    const QString sql = QStringLiteral("SELECT ") + selected + QStringLiteral(" FROM verb\n") + join
            + QStringLiteral("\nLEFT OUTER JOIN favourite ON verb._id = favourite.verbid\nWHERE ") + condition
            + QLatin1Char('\n') + grouping + QStringLiteral("\nORDER BY ") + order;
    return {sql, arguments};
}

void SearchResultsTableViewController::prepareIndex()
{
    if (!queue() || m_indexQueue.lock() == queue())
        return;
    dropIndex();
    m_indexQueue = queue();
    m_cancelBuild = std::make_shared<std::atomic_bool>(false);
    // Built on its own connection so the first frames are not held up; the
    // statement answers until it is ready.
    auto *build = new IndexBuild(this);
    // Handed to the other lists as soon as it is there, not at the next search.
    connect(build, &IndexBuild::finished, this, [this, build] { indexBuilt(build); });
    build->setFuture(QtConcurrent::run(buildIndex, queue()->path(), m_cancelBuild));
    m_indexBuild = build;
}

void SearchResultsTableViewController::indexBuilt(IndexBuild *build)
{
    if (build != m_indexBuild)
        return;
    const auto index = build->future().result();
    m_indexBuild = nullptr;
    build->deleteLater();
    m_cancelBuild.reset();
    if (index && queue() && m_indexQueue.lock() == queue()) {
        m_index = index;
        SearchIndex::publish(queue(), index);
    }
}

bool SearchResultsTableViewController::waitForIndex()
{
    prepareIndex();
    if (!m_index && m_indexBuild) {
        m_indexBuild->waitForFinished();
        indexBuilt(m_indexBuild);
    }
    return m_index != nullptr;
}

const SearchIndex *SearchResultsTableViewController::readyIndex()
{
    prepareIndex();
    // Finished but not handed back yet: the event loop has been busy.
    if (!m_index && m_indexBuild && m_indexBuild->future().isFinished())
        indexBuilt(m_indexBuild);
    return m_index.get();
}

void SearchResultsTableViewController::search(const QString &query)
{
    if (query != m_query || query.isNull() != m_query.isNull()) {
        m_query = query;
        emit queryChanged();
    }
    if (!queue()) {
        // The rows stay on screen: make them before their source goes.
        for (int row = 0; row < rowCount(); ++row)
            verbAtRow(row);
    }
    m_verbs.clear();
    m_hits.clear();
    m_hitsIndex.reset();
    if (!queue())
        return;
    const SearchIndex *index = m_strategy == Strategy::Index ? readyIndex() : nullptr;
    queue()->inDatabase([&](Database &db) {
        if (index)
            searchIndex(*index, query, db);
        else
            searchStatement(query, db);
        reloadData(rowsFor(m_verbs));
    });
}

void SearchResultsTableViewController::searchStatement(const QString &query, Database &db)
{
    const Statement built = statement(query, settings(), PreferredLanguages::get());
    if (auto rows = db.executeQuery(built.sql, built.arguments)) {
        while (rows->next()) {
            VerbPtr verb = readListVerb(*rows);
            // Every result counts as having a voice, whatever the column says.
            verb->voice_available = true;
            m_verbs.append(verb);
        }
        // A step can fail too, for one a pattern over SQLite's length limit.
        if (rows->failed()) {
            m_verbs.clear();
            reportDatabaseError(DatabaseErrors::PerformingSearch, db);
        }
        rows->close();
    } else {
        reportDatabaseError(DatabaseErrors::PerformingSearch, db);
    }
}

void SearchResultsTableViewController::searchIndex(const SearchIndex &index, const QString &query, Database &db)
{
    // Favourites change under the index, so their rows are read each time.
    std::vector<SearchIndex::Favourite> favourites;
    if (!SearchIndex::readFavourites(db, favourites)) {
        reportDatabaseError(DatabaseErrors::PerformingSearch, db);
        return;
    }
    const auto outcome = index.search(queryFor(query, settings(), PreferredLanguages::get()), favourites, m_hits);
    if (outcome == SearchIndex::Outcome::PatternTooLong) {
        CrashLog::log(errorReport(DatabaseErrors::PerformingSearch, QStringLiteral("LIKE or GLOB pattern too complex"),
                                  1));
        return;
    }
    m_hitsIndex = m_index;
    m_verbs = QList<VerbPtr>(qsizetype(m_hits.size()));
}

const VerbPtr &SearchResultsTableViewController::verbAt(qsizetype position) const
{
    VerbPtr &verb = m_verbs[position];
    if (!verb && m_hitsIndex && size_t(position) < m_hits.size())
        verb = m_hitsIndex->verb(m_hits[size_t(position)]);
    return verb;
}

const QList<VerbPtr> &SearchResultsTableViewController::verbs() const
{
    for (qsizetype position = 0; position < m_verbs.size(); ++position)
        verbAt(position);
    return m_verbs;
}

VerbPtr SearchResultsTableViewController::createRowVerb(int row) const
{
    return row >= 0 && row < m_verbs.size() ? verbAt(row) : nullptr;
}

void SearchResultsTableViewController::selectRow(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (verb && m_delegate)
        m_delegate->searchResultSelected(verb);
}

} // namespace norvella
