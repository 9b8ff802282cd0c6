#pragma once

#include "SingleSectionListController.h"

namespace norvella {

// The favourites tab: the marked verbs in the order of the sort column.
class FavouritesTableViewController : public SingleSectionListController
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit FavouritesTableViewController(QObject *parent = nullptr);

    void viewDidLoad() override;
    void viewDidAppear() override;
    void viewDidDisappear() override;

    static QString query(const QString &sortColumn);

protected:
    QString listQuery() const override;
    QString removalTitleKey() const override;
    bool removeStored(const VerbPtr &verb) override;

private:
    void verbFavouriteToggled(const Notification &notification);
};

} // namespace norvella
