#pragma once

#include "InterstitialTableViewController.h"

namespace norvella {

// What the favourites and the history lists have in common: one section, an
// empty state, a reload that drops requests made while one runs, and a
// destructive swipe that takes the row out of the list as soon as it is built.
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
    struct Removal
    {
        QString titleKey;
        QString deleteStatement;
        const char *errorMessage;
    };
    virtual QString listQuery() const = 0;
    virtual Removal removal() const = 0;
    // Runs when the swipe action is built, after the verb has left the list.
    virtual void verbWillBeRemoved(Verb &) {}
    // Runs after the row is deleted and the database written.
    virtual void verbWasRemoved(const VerbPtr &) {}

private:
    bool remove(const VerbPtr &verb);
    void updateEmptyState();

    QList<VerbPtr> m_verbs;
    bool m_isReloading = false;
    bool m_showsEmptyState = false;
};

} // namespace norvella
