#pragma once

#include "InterstitialTableViewController.h"
#include "IrregularVerbListController.h"
#include "SearchIndex.h"
#include "VerbRowPool.h"

#include <QMap>
#include <QStringList>

namespace norvella {

// The first tab: every verb, in sections by the first letter of the sort
// column, with a section index and a favourite toggle on each row.
class VerbListTableViewController : public InterstitialTableViewController
{
    Q_OBJECT
    QML_ELEMENT
    // The section titles, which are also the section index titles.
    Q_PROPERTY(QStringList keys READ keys NOTIFY keysChanged)
    // The same tab filtered to the irregular verbs, most frequent first.
    Q_PROPERTY(norvella::IrregularVerbListController *irregularVerbs READ irregularVerbs CONSTANT)
    Q_PROPERTY(bool showsIrregular READ showsIrregular WRITE setShowsIrregular NOTIFY showsIrregularChanged)

public:
    explicit VerbListTableViewController(QObject *parent = nullptr);

    void viewDidLoad() override;
    void viewDidAppear() override;
    void viewDidDisappear() override;
    void reload() override;
    SwipeAction *trailingSwipeAction(int row) override;

    // Every row's verb by section, each made when first needed.
    const QMap<QString, QList<VerbPtr>> &verbs() const;
    const QStringList &keys() const { return m_keys; }
    IrregularVerbListController *irregularVerbs() const { return m_irregular; }
    bool showsIrregular() const { return m_showsIrregular; }
    void setShowsIrregular(bool shows);

    Q_INVOKABLE int numberOfRowsInSection(int section) const;
    // The position of the title among the keys, -1 when it is not one.
    Q_INVOKABLE int sectionForSectionIndexTitle(const QString &title) const;
    // The view row that starts the section of that index title, -1 when none.
    Q_INVOKABLE int firstRowForSectionIndexTitle(const QString &title) const;

    // With the search index built, the rows come from memory; off, the list
    // always runs its statement (the reference the index is checked against).
    void setReadsFromIndex(bool reads) { m_readsFromIndex = reads; }

    // The column that orders the list and gives the section letters.
    static QString sortColumn(const Settings &settings, const QStringList &preferredLanguages);
    static QString query(const QString &sortColumn);
    // Section titles in the order the index shows them.
    static void sortKeys(QStringList &keys);

signals:
    void keysChanged();
    void showsIrregularChanged();

private:
    void verbFavouriteToggled(const Notification &notification);

    bool readFromIndex(const QString &column);
    VerbPtr createRowVerb(int row) const override;

    // Where a row finds its verb: in the index when it was read from there,
    // else in the pool the statement's rows were packed into.
    struct RowSource
    {
        SearchIndex::Hit hit;
        quint32 pooled = 0;
        QString section;
        qsizetype inSection = 0;
    };
    void showSections(const QMap<QString, std::vector<RowSource>> &sections);

    mutable QMap<QString, QList<VerbPtr>> m_verbs;
    std::vector<RowSource> m_rowSources;
    std::shared_ptr<const SearchIndex> m_rowIndex;
    VerbRowPool m_rowPool;
    QStringList m_keys;
    bool m_readsFromIndex = true;
    IrregularVerbListController *m_irregular;
    bool m_showsIrregular = false;
};

} // namespace norvella
