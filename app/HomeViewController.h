#pragma once

#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "NotificationCenter.h"
#include "SearchResultsTableViewController.h"
#include "VerbListTableViewController.h"

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QQmlParserStatus>

#include <memory>

namespace norvella {

class Settings;
class VerbRef;

// The primary column: the tab bar with the three lists, created on first use,
// and the search whose results cover them. It hands its queue to every
// screen it creates and tells the window which verb to show.
class HomeViewController : public QObject, public QQmlParserStatus, public SearchResultsTableViewControllerDelegate
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    // The verb repository, which holds the database queue, handed on to every list.
    Q_PROPERTY(QObject *queue READ queueObject WRITE setQueueObject NOTIFY queueChanged)
    Q_PROPERTY(int selectedTab READ selectedTab NOTIFY selectedTabChanged)
    // The selected tab's position in the tab bar, -1 when it has no item there.
    Q_PROPERTY(int selectedTabIndex READ selectedTabIndex NOTIFY selectedTabChanged)
    // The tab bar's items: {tag, title, icon}, in order.
    Q_PROPERTY(QVariantList tabs READ tabs NOTIFY tabsChanged)
    Q_PROPERTY(norvella::VerbListTableViewController *verbListTableViewController READ verbListTableViewController
                       NOTIFY childrenChanged)
    // Typed as their base for QML, whose views take any one-section list.
    Q_PROPERTY(norvella::SingleSectionListController *favouritesTableViewController READ
                       favouritesTableViewController NOTIFY childrenChanged)
    Q_PROPERTY(norvella::SingleSectionListController *historyTableViewController READ historyTableViewController
                       NOTIFY childrenChanged)
    Q_PROPERTY(norvella::SearchResultsTableViewController *searchResultsController READ searchResultsController
                       NOTIFY searchResultsControllerChanged)
    // The verb for the detail column (a VerbRef), null until one is chosen.
    Q_PROPERTY(QObject *detailVerb READ detailVerb NOTIFY detailVerbChanged)
    // True on a tablet-sized window: picking a search result then puts the keyboard away.
    Q_PROPERTY(bool padIdiom READ padIdiom WRITE setPadIdiom NOTIFY padIdiomChanged)

public:
    enum Tab { ListTab = 0, FavouritesTab = 1, HistoryTab = 2 };
    Q_ENUM(Tab)

    explicit HomeViewController(QObject *parent = nullptr);
    ~HomeViewController() override;

    QObject *queueObject() const { return m_repository; }
    void setQueueObject(QObject *object) { setRepository(VerbRepository::from(object)); }
    VerbRepository *repository() const { return m_repository; }
    void setRepository(VerbRepository *repository);
    // A repository of the home screen's own over the queue, for a home screen
    // used without the app delegate.
    void setQueue(std::shared_ptr<DatabaseQueue> queue);
    std::shared_ptr<DatabaseQueue> queue() const { return m_repository ? m_repository->queue() : nullptr; }
    // Null goes back to the app-wide store; the children get the same.
    void setSettings(Settings *settings);

    int selectedTab() const { return m_selectedTab; }
    int selectedTabIndex() const { return int(tabTags().indexOf(m_selectedTab)); }
    QVariantList tabs() const;
    QList<int> tabTags() const;
    bool historyTabVisible() const { return m_historyTabVisible; }

    VerbListTableViewController *verbListTableViewController() const { return m_verbList; }
    FavouritesTableViewController *favouritesTableViewController() const { return m_favourites; }
    HistoryTableViewController *historyTableViewController() const { return m_history; }
    SearchResultsTableViewController *searchResultsController() const { return m_searchResults; }
    InterstitialTableViewController *currentChild() const { return m_currentChild; }

    QObject *detailVerb() const;
    // Opens the detail column (or page) with this verb, as a tap on a row does.
    void showVerb(const VerbPtr &verb);
    // The same, opened at the cells of a searched form (the chosen one first).
    void showVerb(const VerbPtr &verb, const QList<FormCell> &cells);
    // The same for a verb handed over from QML (a VerbRef): a link between verbs.
    Q_INVOKABLE void showVerbRef(QObject *verb);
    VerbPtr selectedSearchResult() const { return m_selectedSearchResult; }
    bool padIdiom() const { return m_padIdiom; }
    void setPadIdiom(bool pad);

    // Set-up: observers, search results, the list tab, the history rule. Runs
    // once; QML runs it when the component is complete.
    Q_INVOKABLE void viewDidLoad();
    // A tab chosen by its tag (0 list, 1 favourites, 2 history).
    Q_INVOKABLE void showTab(int tag);
    // A tab chosen by its position in the tab bar.
    Q_INVOKABLE void selectTabAt(int index);
    // The search field's text, on every change.
    Q_INVOKABLE void updateSearchResults(const QString &text);
    // The settings screen closed; with changes the lists and the conjugation screen refresh.
    Q_INVOKABLE void optionsDidClose(bool fieldsChanged);

    void searchResultSelected(const VerbPtr &verb) override;
    void searchFormSelected(const VerbPtr &verb, const QList<FormCell> &cells) override;

    // "list", "favourites" or "history" → its tag; -1 for anything else.
    static int tabForName(const QString &name);

    void classBegin() override {}
    void componentComplete() override { viewDidLoad(); }

signals:
    void queueChanged();
    void selectedTabChanged();
    void tabsChanged();
    void childrenChanged();
    void searchResultsControllerChanged();
    void detailVerbChanged();
    void padIdiomChanged();
    // Open the detail column with detailVerb.
    void showDetail();
    // The search field should give up the keyboard (its text stays).
    void searchFieldShouldResign();

private:
    InterstitialTableViewController *childForTab(int tag);
    template<typename T> T *makeChild();
    void openTab(const Notification &notification);
    void applyHistoryRule();
    void updateCrashReportContext();
    Settings &settings() const;

    QPointer<VerbRepository> m_repository;
    QPointer<VerbRepository> m_ownRepository;
    Settings *m_settings = nullptr;
    ObserverSet m_observers;
    bool m_loaded = false;
    int m_selectedTab = ListTab;
    bool m_historyTabVisible = true;
    bool m_padIdiom = false;
    VerbListTableViewController *m_verbList = nullptr;
    FavouritesTableViewController *m_favourites = nullptr;
    HistoryTableViewController *m_history = nullptr;
    SearchResultsTableViewController *m_searchResults = nullptr;
    InterstitialTableViewController *m_currentChild = nullptr;
    VerbPtr m_selectedSearchResult;
    void updateHighlight();

    VerbRef *m_detailVerb = nullptr;
};

} // namespace norvella
