#pragma once

#include "SearchIndex.h"
#include "VerbTableModel.h"

#include <QVariantList>

namespace norvella {

class SearchResultsTableViewControllerDelegate
{
public:
    virtual ~SearchResultsTableViewControllerDelegate() = default;
    virtual void searchResultSelected(const VerbPtr &verb) = 0;
};

// The results under the home screen's search field: one query per change of
// the text, built from the text and the search settings.
class SearchResultsTableViewController : public VerbTableModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString query READ query NOTIFY queryChanged)

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

    // The text exactly as typed: no trimming and no escaping, so "%" and "_"
    // typed by the user work as wildcards.
    Q_INVOKABLE void search(const QString &query);
    QString query() const { return m_query; }
    // The results, each made when first needed.
    const QList<VerbPtr> &verbs() const;

    void selectRow(int row) override;

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

    SearchResultsTableViewControllerDelegate *m_delegate = nullptr;
    Strategy m_strategy = Strategy::Index;
    QString m_query;
    mutable QList<VerbPtr> m_verbs;
    // Where the index put the results not made yet.
    std::vector<SearchIndex::Hit> m_hits;
    // The index the hits point into, kept with them: the repository may be
    // replaced while they are on screen.
    std::shared_ptr<const SearchIndex> m_hitsIndex;
};

} // namespace norvella
