#pragma once

#include "SearchIndex.h"
#include "VerbTableModel.h"

#include <QFutureWatcher>
#include <QPointer>
#include <QVariantList>

#include <atomic>

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

    // Starts building the index for the current queue in the background.
    void prepareIndex();
    // Blocks until the index for the current queue is built; false when it
    // could not be (searches then use the statement).
    bool waitForIndex();

    static Statement statement(const QString &query, const Settings &settings, const QStringList &preferredLanguages);

signals:
    void queryChanged();

private:
    using IndexBuild = QFutureWatcher<std::shared_ptr<const SearchIndex>>;

    const SearchIndex *readyIndex();
    // Takes a finished build's index, if it is still the current queue's.
    void indexBuilt(IndexBuild *build);
    // Cancels the running build and forgets the index: the queue changed or
    // this screen goes.
    void dropIndex();
    VerbPtr createRowVerb(int row) const override;
    const VerbPtr &verbAt(qsizetype position) const;
    void searchStatement(const QString &query, Database &db);
    void searchIndex(const SearchIndex &index, const QString &query, Database &db);

    SearchResultsTableViewControllerDelegate *m_delegate = nullptr;
    Strategy m_strategy = Strategy::Index;
    QString m_query;
    mutable QList<VerbPtr> m_verbs;
    // Where the index put the results not made yet.
    std::vector<SearchIndex::Hit> m_hits;
    std::shared_ptr<const SearchIndex> m_hitsIndex;
    std::shared_ptr<const SearchIndex> m_index;
    // A child of this object, so its hand-back dies with it; replaced (and
    // the old one deleted, with any hand-back still queued) by every build.
    QPointer<IndexBuild> m_indexBuild;
    std::shared_ptr<std::atomic_bool> m_cancelBuild;
    // The queue the index or the running build is for; a new queue needs a
    // new index. Weak: a new queue can be created at a freed one's address.
    std::weak_ptr<DatabaseQueue> m_indexQueue;
};

} // namespace norvella
