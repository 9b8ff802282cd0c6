#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QUrl>

namespace norvella {

// The side menu's rows. Choosing one closes the drawer first; the action
// runs once the drawer has gone, as the matching signal.
class NavigationDrawerTableTableViewController : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool presented READ presented WRITE setPresented NOTIFY presentedChanged)
    Q_PROPERTY(QUrl privacyAddress READ privacyAddress CONSTANT)

public:
    enum Role { IconRole = Qt::UserRole + 1, TitleRole, TitleKeyRole };
    enum Destination { Settings, MoreApps, Contact, Privacy };
    Q_ENUM(Destination)

    explicit NavigationDrawerTableTableViewController(QObject *parent = nullptr);

    static constexpr int sectionCount = 2;
    // Section 0 is kept empty on purpose; every other section has the four rows.
    static int numberOfRowsInSection(int section) { return section == 0 ? 0 : 4; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    bool presented() const { return m_presented; }
    static QUrl privacyAddress();
    void setPresented(bool presented);

    // A row was tapped: ask the view to close, and remember what to open.
    Q_INVOKABLE void selectRow(int section, int row);
    // The view reports that the drawer has finished closing.
    Q_INVOKABLE void drawerDidClose();

signals:
    void presentedChanged();
    void closeRequested();
    void openSettings();
    void openMoreApps();
    void composeSupportMail();
    void openPrivacyPage();

private:
    bool m_presented = false;
    int m_pending = -1;
};

} // namespace norvella
