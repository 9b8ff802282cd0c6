#include "SearchResultsTableViewController.h"

#include "CrashLog.h"
#include "Database.h"
#include "Settings.h"

namespace norvella {

namespace {
struct TranslationColumns
{
    QString translation;
    QString folded;
};

TranslationColumns translationColumns(const QString &language)
{
    static const std::pair<const char *, TranslationColumns> byPrefix[] = {
        {"de", {QStringLiteral("german"), QStringLiteral("simplified_german")}},
        {"es", {QStringLiteral("spanish"), QStringLiteral("simplified_spanish")}},
        {"nl", {QStringLiteral("dutch"), QStringLiteral("simplified_dutch")}},
        {"pt", {QStringLiteral("portuguese"), QStringLiteral("simplified_portuguese")}},
        {"it", {QStringLiteral("italian"), QStringLiteral("simplified_italian")}},
        {"fr", {QStringLiteral("french"), QStringLiteral("simplified_french")}},
    };
    for (const auto &[prefix, columns] : byPrefix) {
        if (language.startsWith(QLatin1String(prefix)))
            return columns;
    }
    // English has no folded column of its own.
    return {QStringLiteral("english"), QStringLiteral("english")};
}
} // namespace

SearchResultsTableViewController::SearchResultsTableViewController(QObject *parent) : VerbTableModel(parent) {}

SearchResultsTableViewController::Statement SearchResultsTableViewController::statement(
        const QString &query, const Settings &settings, const QStringList &preferredLanguages)
{
    QString language = Preferences::translationLanguage(settings);
    if (language.isEmpty())
        language = preferredLanguages.value(0);
    const TranslationColumns columns = translationColumns(language);
    // Sorting by the translation uses the folded column, English aside.
    const QString order = Preferences::sortByLang(settings) ? QStringLiteral("simplified_italian") : columns.folded;
    const QString pattern = Preferences::searchFromStart(settings) ? query + QLatin1Char('%')
                                                                   : QLatin1Char('%') + query + QLatin1Char('%');

    const QString selected = QStringLiteral("verb._id, voice_available, english, lower(italian) as italian, "
                                            "simplified_italian, german, simplified_german, french, simplified_french, "
                                            "dutch, simplified_dutch, spanish, simplified_spanish, portuguese, "
                                            "simplified_portuguese, substr(")
            + order + QStringLiteral(", 0, 1) as index_letter, favourite._id as favourite_available");
    QString condition = QStringLiteral("italian LIKE ? OR simplified_italian LIKE ?");
    QVariantList arguments{pattern, pattern};
    if (Preferences::includeEnglish(settings)) {
        condition += QStringLiteral(" OR ") + columns.translation + QStringLiteral(" LIKE ? OR ") + columns.folded
                + QStringLiteral(" LIKE ?");
        arguments << pattern << pattern;
    }
    QString join;
    QString grouping;
    if (Preferences::includeConjugations(settings)) {
        condition += QStringLiteral(" OR conjugation.verb like ?");
        arguments << pattern;
        join = QStringLiteral("LEFT OUTER JOIN conjugation ON verb._id = conjugation.verbid");
        grouping = QStringLiteral("GROUP BY verb._id");
    }
    const QString sql = QStringLiteral("SELECT ") + selected + QStringLiteral(" FROM verb\n") + join
            + QStringLiteral("\nLEFT OUTER JOIN favourite ON verb._id = favourite.verbid\nWHERE ") + condition
            + QLatin1Char('\n') + grouping + QStringLiteral("\nORDER BY ") + order;
    return {sql, arguments};
}

void SearchResultsTableViewController::search(const QString &query)
{
    if (query != m_query || query.isNull() != m_query.isNull()) {
        m_query = query;
        emit queryChanged();
    }
    m_verbs.clear();
    if (!queue())
        return;
    const Statement built = statement(query, settings(), PreferredLanguages::get());
    queue()->inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(built.sql, built.arguments)) {
            while (rows->next()) {
                VerbPtr verb = readListVerb(*rows);
                // Every result counts as having a voice, whatever the column says.
                verb->voice_available = true;
                m_verbs.append(verb);
            }
            rows->close();
        } else {
            reportDatabaseError(DatabaseErrors::PerformingSearch, db);
        }
        reloadData(rowsFor(m_verbs));
    });
}

void SearchResultsTableViewController::selectRow(int row)
{
    const VerbPtr verb = verbAtRow(row);
    if (verb && m_delegate)
        m_delegate->searchResultSelected(verb);
}

} // namespace norvella
