#pragma once

#include "SupportEmailSender.h"
#include "VerbRepository.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QQmlEngine>
#include <QStringList>

#include <functional>
#include <memory>

namespace norvella {

class Settings;

// The settings screen: four sections of rows (search, conjugations, history,
// data collection). Every change is written and saved at once; the screen only
// remembers that something changed and reports it when it closes.
class OptionsTableViewController : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *queue READ queueObject WRITE setQueueObject NOTIFY queueChanged)
    Q_PROPERTY(QObject *delegate READ delegate WRITE setDelegate NOTIFY delegateChanged)
    // The screen that presents mail windows and alerts.
    Q_PROPERTY(QObject *presenter READ presenter WRITE setPresenter NOTIFY presenterChanged)
    Q_PROPERTY(bool fieldsChanged READ fieldsChanged NOTIFY fieldsChangedChanged)
    Q_PROPERTY(norvella::SupportEmailSender *supportEmailSender READ supportEmailSender NOTIFY supportEmailSenderChanged)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString appTitle READ appTitle CONSTANT)
    Q_PROPERTY(QString copyright READ copyright CONSTANT)
    // The verb data's attribution and every licence it and the app carry.
    Q_PROPERTY(QString creditsTitle READ creditsTitle CONSTANT)
    Q_PROPERTY(QString credits READ credits CONSTANT)
    Q_PROPERTY(QString webUrl READ webUrl CONSTANT)
    Q_PROPERTY(QString supportEmail READ supportEmail CONSTANT)
    Q_PROPERTY(QString doneText READ doneText CONSTANT)

public:
    enum Role {
        SectionRole = Qt::UserRole + 1,
        RowInSectionRole,
        CellTypeRole,
        LabelRole,
        CheckedRole,
        SegmentIndexRole,
        SegmentTitlesRole,
        DetailRole,
        DisclosureRole,
        SectionHeaderRole,
        SectionFooterRole,
        FirstInSectionRole,
        LastInSectionRole,
    };
    Q_ENUM(Role)

    // The choice sheets a row can open.
    static inline const QString LanguageSheet = QStringLiteral("language");
    static inline const QString SpeedSheet = QStringLiteral("speed");
    static inline const QString ClearHistorySheet = QStringLiteral("clearHistory");

    // The app's analytics service lives above this library; it plugs in here.
    using CollectionHandler = std::function<void(bool enabled)>;
    using EventHandler = std::function<void(const QString &name, const QVariantMap &parameters)>;
    static void setAnalyticsCollectionHandler(CollectionHandler handler);
    static void setAnalyticsEventHandler(EventHandler handler);

    explicit OptionsTableViewController(QObject *parent = nullptr);
    ~OptionsTableViewController() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // Rows per section as the table has them: 4, 3, 2, 1, then the appearance row.
    static int numberOfRowsInSection(int section);
    static constexpr int numberOfSections() { return 5; }
    static constexpr int AppearanceSection = 4;
    Q_INVOKABLE QString sectionHeader(int section) const;
    Q_INVOKABLE QString sectionFooter(int section) const;

    // The verb repository, which holds the database queue and clears the history.
    QObject *queueObject() const { return m_repository; }
    void setQueueObject(QObject *queue);
    QObject *delegate() const { return m_delegate; }
    void setDelegate(QObject *delegate);
    QObject *presenter() const { return m_presenter; }
    void setPresenter(QObject *presenter);
    bool fieldsChanged() const { return m_fieldsChanged; }
    SupportEmailSender *supportEmailSender() const;
    void setSettings(Settings *settings);

    QString title() const;
    QString appTitle() const;
    QString copyright() const;
    QString creditsTitle() const;
    QString credits() const;
    QString webUrl() const;
    QString supportEmail() const;
    QString doneText() const;

    // Controls report by their place in the table; a place with no such control writes nothing.
    Q_INVOKABLE void switchToggled(int section, int row, bool on);
    Q_INVOKABLE void segmentChanged(int section, int row, int segment);
    Q_INVOKABLE void rowTapped(int section, int row);

    Q_INVOKABLE QString sheetTitle(const QString &sheet) const;
    Q_INVOKABLE QStringList sheetChoices(const QString &sheet) const;
    Q_INVOKABLE QString sheetCancelText(const QString &sheet) const;
    Q_INVOKABLE void choose(const QString &sheet, int index);
    Q_INVOKABLE void clearHistory();

    Q_INVOKABLE void viewWillAppear();
    Q_INVOKABLE void viewDidAppear();
    // Done: asks the view to go away, but only when someone waits to hear of it.
    Q_INVOKABLE bool close();
    // The view has gone; tells the delegate whether anything changed.
    Q_INVOKABLE void didDismiss();
    Q_INVOKABLE void openWebsite();
    Q_INVOKABLE void sendSupportEmail();

signals:
    void queueChanged();
    void delegateChanged();
    void presenterChanged();
    void fieldsChangedChanged();
    void supportEmailSenderChanged();
    void sheetRequested(const QString &sheet, int section, int row);
    void dismissRequested();
    void optionsDidClose(bool fieldsChanged);
    void analyticsCollectionChanged(bool enabled);
    void analyticsEvent(const QString &name, const QVariantMap &parameters);

private:
    struct Place
    {
        int section;
        int row;
    };
    static Place placeOf(int modelRow);
    static int modelRowOf(int section, int row);
    QString rowLabel(const Place &place) const;
    void setAppearance(const QString &choice);
    void changed();
    void setFieldsChanged(bool changed);
    void refreshRows();

    Settings *m_settings;
    QPointer<VerbRepository> m_repository;
    QPointer<QObject> m_delegate;
    QPointer<QObject> m_presenter;
    QPointer<SupportEmailSender> m_supportEmailSender;
    bool m_fieldsChanged = false;
};

} // namespace norvella
