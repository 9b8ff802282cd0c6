#include "SearchResultsTableViewController.h"

#include "CrashLog.h"
#include "Database.h"
#include "FormAnalysisSource.h"
#include "SearchFormsModel.h"
#include "Settings.h"
#include "TranslationLanguages.h"


namespace norvella {

namespace {
// What the search settings ask for, shared by the statement and the index.
SearchIndex::Query queryFor(const QString &text, const Settings &settings, const QStringList &preferredLanguages)
{
    const TranslationLanguage &language = TranslationLanguages::listed(settings, preferredLanguages);
    const SearchIndex::Column translation = SearchIndex::columnNamed(QLatin1String(language.column));
    // English has no folded column: its own column stands in.
    const SearchIndex::Column folded = SearchIndex::columnNamed(QLatin1String(language.foldedColumn));
    SearchIndex::Query query;
    query.pattern = Preferences::searchFromStart(settings) ? text + QLatin1Char('%')
                                                           : QLatin1Char('%') + text + QLatin1Char('%');
    query.includeTranslation = Preferences::includeEnglish(settings);
    query.translation = translation;
    query.folded = folded;
    query.includeConjugations = Preferences::includeConjugations(settings);
    // Sorting by the translation uses the folded column, English aside.
    query.order = Preferences::sortByLang(settings) ? SearchIndex::SimplifiedItalian : folded;
    return query;
}

} // namespace

SearchResultsTableViewController::SearchResultsTableViewController(QObject *parent)
    : VerbTableModel(parent), m_forms(new SearchFormsModel(this)), m_formSource(new FormAnalysisSource(this))
{
    // Typing right after launch: the section shows as soon as the analysis is read.
    connect(m_formSource, &FormAnalysisSource::ready, this, &SearchResultsTableViewController::updateForms);
    connect(m_forms, &SearchFormsModel::selected, this, &SearchResultsTableViewController::selectForm);
    connect(this, &VerbTableModel::queueChanged, this, [this] {
        if (!queue())
            m_forms->setReadings({}, false);
    });
}

SearchResultsTableViewController::~SearchResultsTableViewController() = default;

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
    if (repository())
        repository()->buildSearchIndex();
}

bool SearchResultsTableViewController::waitForIndex()
{
    return repository() && repository()->waitForSearchIndex();
}

void SearchResultsTableViewController::prepareForms()
{
    if (const auto q = queue())
        m_formSource->start(q->path());
}

bool SearchResultsTableViewController::waitForForms()
{
    prepareForms();
    return m_formSource->wait();
}

void SearchResultsTableViewController::updateForms()
{
    const auto analysis = queue() ? m_formSource->analysis() : nullptr;
    // Every reading the table shows: "parli" is also the imperative's lui/lei there.
    m_forms->setReadings(analysis ? analysis->analyse(m_query, FormAnalysis::Imperatives::AsShown)
                                  : QList<FormReading>(),
                         Preferences::showTranslated(settings()));
}

void SearchResultsTableViewController::search(const QString &typed)
{
    // A text of spaces is the empty search; QString::trimmed keeps a null text null.
    const QString query = typed.trimmed();
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
    if (queue())
        prepareForms();
    updateForms();
    if (!queue())
        return;
    std::shared_ptr<const SearchIndex> index;
    if (m_strategy == Strategy::Index) {
        // The first search starts the index if the app has not yet.
        prepareIndex();
        index = repository()->searchIndex();
    }
    if (index) {
        queue()->inDatabase([&](Database &db) {
            searchIndex(index, query, db);
            reloadData(rowsFor(m_verbs));
        });
        return;
    }
    const Statement built = statement(query, settings(), PreferredLanguages::get());
    repository()->readVerbs(
            built.sql, built.arguments, VerbRowFields::Shown, DatabaseErrors::PerformingSearch,
            [this](const VerbPtr &verb, const ResultSet &) { m_verbs.append(verb); },
            [this](bool read) {
                if (!read)
                    m_verbs.clear();
                reloadData(rowsFor(m_verbs));
            });
}

void SearchResultsTableViewController::searchIndex(const std::shared_ptr<const SearchIndex> &index,
                                                   const QString &query, Database &db)
{
    // Favourites change under the index, so their rows are read each time.
    std::vector<SearchIndex::Favourite> favourites;
    if (!SearchIndex::readFavourites(db, favourites)) {
        reportDatabaseError(DatabaseErrors::PerformingSearch, db);
        return;
    }
    const auto outcome = index->search(queryFor(query, settings(), PreferredLanguages::get()), favourites, m_hits);
    if (outcome == SearchIndex::Outcome::PatternTooLong) {
        CrashLog::log(errorReport(DatabaseErrors::PerformingSearch, QStringLiteral("LIKE or GLOB pattern too complex"),
                                  1));
        return;
    }
    m_hitsIndex = index;
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

void SearchResultsTableViewController::selectForm(int row)
{
    const FormReading *reading = m_forms->readingAt(row);
    if (!reading || !repository() || !m_delegate)
        return;
    const QList<FormCell> cells = m_forms->cellsFor(row);
    // Read afresh, with its favourite mark, as a result row would hand it over.
    VerbPtr verb;
    repository()->readVerbs(
            QStringLiteral("SELECT verb._id, voice_available, english, german, french, spanish, dutch, "
                           "lower(italian) as italian, portuguese, favourite._id as favourite_available FROM verb "
                           "LEFT OUTER JOIN favourite ON verb._id = favourite.verbid WHERE verb._id = ? LIMIT 1"),
            {reading->verbId}, VerbRowFields::Shown, DatabaseErrors::PerformingSearch,
            [&verb](const VerbPtr &read, const ResultSet &) { verb = read; });
    if (!verb) {
        CrashLog::log(QStringLiteral("The verb of a searched form is not in the database: %1").arg(reading->verbId));
        return;
    }
    m_delegate->searchFormSelected(verb, cells);
}

void SearchResultsTableViewController::selectRow(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (verb && m_delegate)
        m_delegate->searchResultSelected(verb);
}

} // namespace norvella
