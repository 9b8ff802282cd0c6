#pragma once

#include "SingleSectionListController.h"

namespace norvella {

// The history tab: the verbs opened, newest first.
class HistoryTableViewController : public SingleSectionListController
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit HistoryTableViewController(QObject *parent = nullptr);

    void viewDidLoad() override;

    static QString query();

protected:
    QString listQuery() const override { return query(); }
    QString removalTitleKey() const override;
    bool removeStored(const VerbPtr &verb) override;
};

} // namespace norvella
