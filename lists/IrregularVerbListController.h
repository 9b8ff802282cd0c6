#pragma once

#include "InterstitialTableViewController.h"

namespace norvella {

// The irregular verbs, most frequent first and then alphabetically: the
// verbs a learner meets first and has to learn by heart. Shown in place of
// the alphabetical list when its filter says so; rows open and star like
// the alphabetical list's.
class IrregularVerbListController : public InterstitialTableViewController
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the alphabetical list")
    // False for a working copy from before verbs knew their pattern: there
    // is no such list to offer then.
    Q_PROPERTY(bool available READ isAvailable NOTIFY availableChanged)

public:
    explicit IrregularVerbListController(QObject *parent = nullptr);

    void viewDidLoad() override;
    // Reads the rows; until the list is first shown (`load`), reloads wait.
    void reload() override;
    void load();
    bool isLoaded() const { return m_loaded; }
    SwipeAction *trailingSwipeAction(int row) override;

    bool isAvailable() const { return m_available; }
    // Asks the copy whether verbs have a pattern, without reading any row.
    void checkAvailable();

    const QList<VerbPtr> &verbs() const { return m_verbs; }
    static QString query();

signals:
    void availableChanged();

private:
    void setAvailable(bool available);

    QList<VerbPtr> m_verbs;
    bool m_loaded = false;
    bool m_available = true;
};

} // namespace norvella
