#pragma once

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

    explicit SearchResultsTableViewController(QObject *parent = nullptr);

    void setDelegate(SearchResultsTableViewControllerDelegate *delegate) { m_delegate = delegate; }
    SearchResultsTableViewControllerDelegate *delegate() const { return m_delegate; }

    // The text exactly as typed: no trimming and no escaping, so "%" and "_"
    // typed by the user work as wildcards.
    Q_INVOKABLE void search(const QString &query);
    QString query() const { return m_query; }
    const QList<VerbPtr> &verbs() const { return m_verbs; }

    void selectRow(int row) override;

    static Statement statement(const QString &query, const Settings &settings, const QStringList &preferredLanguages);

signals:
    void queryChanged();

private:
    SearchResultsTableViewControllerDelegate *m_delegate = nullptr;
    QString m_query;
    QList<VerbPtr> m_verbs;
};

} // namespace norvella
