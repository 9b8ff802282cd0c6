#pragma once

#include "InterstitialTableViewController.h"

namespace norvella {

// What the favourites and the history lists have in common: one section, an
// empty state, a reload that drops requests made while one runs, and a
// destructive swipe whose row leaves the list data as soon as the action is
// built (the verb itself is only changed once the removal is stored).
class SingleSectionListController : public InterstitialTableViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("A base of the verb lists")
    // True when the view last counted its rows and the list was empty.
    Q_PROPERTY(bool showsEmptyState READ showsEmptyState NOTIFY showsEmptyStateChanged)

public:
    explicit SingleSectionListController(QObject *parent = nullptr);

    void reload() override;
    SwipeAction *trailingSwipeAction(int row) override;

    const QList<VerbPtr> &verbs() const { return m_verbs; }
    bool isReloading() const { return m_isReloading; }
    bool showsEmptyState() const { return m_showsEmptyState; }

signals:
    void showsEmptyStateChanged();

protected:
    virtual QString listQuery() const = 0;
    // The title of the swipe action.
    virtual QString removalTitleKey() const = 0;
    // Takes the verb's rows out of the database through the repository, which
    // tells the other screens; false when that failed, the failure then
    // logged and shown to the user.
    virtual bool removeStored(const VerbPtr &verb) = 0;

private:
    bool remove(const VerbPtr &verb);
    void updateEmptyState();

    QList<VerbPtr> m_verbs;
    bool m_isReloading = false;
    bool m_showsEmptyState = false;
};

} // namespace norvella
