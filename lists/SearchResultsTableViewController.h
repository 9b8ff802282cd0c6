#pragma once

#include "SearchIndex.h"
#include "VerbRef.h"
#include "VerbTableModel.h"

#include <QVariantList>

namespace norvella {

class SearchResultsTableViewControllerDelegate
{
public:
    virtual ~SearchResultsTableViewControllerDelegate() = default;
    virtual void searchResultSelected(const VerbPtr &verb) = 0;
    // A reading of the typed form: the verb, and its cells that are this form,
    // the chosen one first.
    virtual void searchFormSelected(const VerbPtr &verb, const QList<FormCell> &cells)
    {
        Q_UNUSED(cells);
        searchResultSelected(verb);
    }
};

class FormAnalysisSource;
class SearchFormsModel;

// The results under the home screen's search field: one query per change of
// the text, built from the text and the search settings.
class SearchResultsTableViewController : public VerbTableModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString query READ query NOTIFY queryChanged)
    // The readings of the text as a conjugated form, shown above the results.
    Q_PROPERTY(norvella::SearchFormsModel *forms READ forms CONSTANT)

public:
    struct Statement
    {
        QString sql;
        QVariantList arguments;
    };

    // Index: the in-memory search index, same rows as the statement but within a
    // frame. Statement: the plain SQL statement, kept as the reference.
    enum class Strategy { Index, Statement };

    explicit SearchResultsTableViewController(QObject *parent = nullptr);
    ~SearchResultsTableViewController() override;

    void setStrategy(Strategy strategy) { m_strategy = strategy; }
    Strategy strategy() const { return m_strategy; }

    void setDelegate(SearchResultsTableViewControllerDelegate *delegate) { m_delegate = delegate; }
    SearchResultsTableViewControllerDelegate *delegate() const { return m_delegate; }

    // The text as typed less its surrounding spaces (phone keyboards add one
    // after a word), with no escaping, so "%" and "_" work as wildcards.
    Q_INVOKABLE void search(const QString &query);
    QString query() const { return m_query; }
    // The results, each made when first needed.
    const QList<VerbPtr> &verbs() const;

    void selectRow(int row) override;
    // A row of the forms section: the delegate opens its verb at the form.
    Q_INVOKABLE void selectForm(int row);
    SearchFormsModel *forms() const { return m_forms; }

    // Starts reading the form analysis (a search does too); blocks until it
    // is read with `waitForForms`, false when it could not be.
    void prepareForms();
    bool waitForForms();

    // Asks the repository to start reading the index (a search does too).
    void prepareIndex();
    // Blocks until the repository's index is read; false when it could not
    // be (searches then use the statement).
    bool waitForIndex();

    static Statement statement(const QString &query, const Settings &settings, const QStringList &preferredLanguages);

signals:
    void queryChanged();

private:
    VerbPtr createRowVerb(int row) const override;
    const VerbPtr &verbAt(qsizetype position) const;
    void searchIndex(const std::shared_ptr<const SearchIndex> &index, const QString &query, Database &db);
    void updateForms();

    SearchResultsTableViewControllerDelegate *m_delegate = nullptr;
    Strategy m_strategy = Strategy::Index;
    QString m_query;
    mutable QList<VerbPtr> m_verbs;
    // Where the index put the results not made yet.
    std::vector<SearchIndex::Hit> m_hits;
    // The index the hits point into, kept with them: the repository may be
    // replaced while they are on screen.
    std::shared_ptr<const SearchIndex> m_hitsIndex;
    SearchFormsModel *m_forms;
    FormAnalysisSource *m_formSource;
};

} // namespace norvella
