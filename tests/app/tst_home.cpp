#include "Analytics.h"
#include "CrashLog.h"
#include "HomeViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "VerbRef.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

class HomeTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<DatabaseQueue> m_queue;

    std::unique_ptr<HomeViewController> makeHome()
    {
        auto home = std::make_unique<HomeViewController>();
        home->setSettings(m_settings.get());
        home->setQueue(m_queue);
        home->viewDidLoad();
        return home;
    }

    static QList<int> tagsOf(const HomeViewController &home)
    {
        QList<int> tags;
        for (const QVariant &tab : home.tabs())
            tags << tab.toMap().value("tag").toInt();
        return tags;
    }

    static void openTab(const QString &name)
    {
        NotificationCenter::defaultCenter().post(Notifications::TabOpenEvent, QVariant(), {{"SelectedTab", name}});
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString path = m_dir->filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(path, "INSERT INTO history(verbid, timestamp) VALUES (2, 10);"));
        m_settings = std::make_unique<Settings>(m_dir->filePath("settings.json"));
        m_queue = std::make_shared<DatabaseQueue>(path);
        CrashLog::setLogFilePath(m_dir->filePath("norvella.log"));
        PreferredLanguages::setOverride({"it-IT", "en-GB"});
    }

    void cleanup() { PreferredLanguages::clearOverride(); }

    // Only the list exists at first; the other tabs come on first use, with the same queue.
    void tabsAreCreatedOnFirstUseWithTheSameQueue()
    {
        auto home = makeHome();
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1, 2}));
        QCOMPARE(home->tabs().at(1).toMap().value("title").toString(), Strings::text("tabs.favourites"));
        QVERIFY(!home->favouritesTableViewController() && !home->historyTableViewController());
        QCOMPARE(home->verbListTableViewController()->queue(), m_queue);
        QCOMPARE(home->verbListTableViewController()->rowCount(), 5);
        QVERIFY(home->verbListTableViewController()->isVisible());
        QCOMPARE(Analytics::shared().lastEvent(), QStringLiteral("verb_list"));
        QCOMPARE(home->searchResultsController()->queue(), m_queue);
        QCOMPARE(home->searchResultsController()->delegate(), home.get());

        QSignalSpy children(home.get(), &HomeViewController::childrenChanged);
        home->showTab(HomeViewController::FavouritesTab);
        FavouritesTableViewController *favourites = home->favouritesTableViewController();
        QVERIFY(favourites);
        QAbstractItemModelTester tester(favourites, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(favourites->queue(), m_queue);
        QVERIFY(favourites->showsEmptyState());
        QVERIFY(favourites->isVisible());
        QVERIFY(!home->verbListTableViewController()->isVisible());
        QCOMPARE(Analytics::shared().lastEvent(), QStringLiteral("favourites_list"));

        home->showTab(HomeViewController::HistoryTab);
        QCOMPARE(home->historyTableViewController()->queue(), m_queue);
        QCOMPARE(home->historyTableViewController()->rowCount(), 1);
        QVERIFY(!favourites->isVisible());
        home->showTab(HomeViewController::FavouritesTab);
        QCOMPARE(home->favouritesTableViewController(), favourites);
        QCOMPARE(children.count(), 2);
        home->showTab(7);
        QCOMPARE(home->selectedTab(), int(HomeViewController::FavouritesTab));
    }

    void historyRuleHidesTheTabOnlyForAnExplicitFalse()
    {
        auto home = makeHome();
        home->showTab(HomeViewController::FavouritesTab);
        QSignalSpy tabs(home.get(), &HomeViewController::tabsChanged);
        m_settings->setBool(SettingsKeys::UseHistory, false);
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(false), {});
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1}));
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));
        QCOMPARE(tabs.count(), 1);

        m_settings->setString(SettingsKeys::UseHistory, "false");
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(true), {});
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1, 2}));
        m_settings->removeObject(SettingsKeys::UseHistory);
        home->showTab(HomeViewController::HistoryTab);
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(true), {});
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1, 2}));
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));
    }

    void rowsOpenTheDetailWithTheSharedVerb()
    {
        auto home = makeHome();
        QSignalSpy details(home.get(), &HomeViewController::showDetail);
        QSignalSpy resign(home.get(), &HomeViewController::searchFieldShouldResign);
        VerbListTableViewController *list = home->verbListTableViewController();
        list->selectRow(1);
        QCOMPARE(details.count(), 1);
        QCOMPARE(VerbRef::from(home->detailVerb()), list->verbAtRow(1));

        home->updateSearchResults("ess");
        QCOMPARE(home->searchResultsController()->rowCount(), 1);
        home->searchResultsController()->selectRow(0);
        QCOMPARE(details.count(), 2);
        QCOMPARE(VerbRef::from(home->detailVerb())->italian, QStringLiteral("essere"));
        QCOMPARE(home->selectedSearchResult(), home->searchResultsController()->verbs().first());
        // A phone keeps the search field active; a tablet puts the keyboard away.
        QCOMPARE(resign.count(), 0);
        home->setPadIdiom(true);
        home->searchResultsController()->selectRow(0);
        QCOMPARE(resign.count(), 1);
    }

    void closingSettingsRefreshesOnlyAfterChanges()
    {
        auto home = makeHome();
        home->showTab(HomeViewController::HistoryTab);
        home->showTab(HomeViewController::FavouritesTab);
        QSignalSpy listResets(home->verbListTableViewController(), &QAbstractItemModel::modelReset);
        QSignalSpy historyResets(home->historyTableViewController(), &QAbstractItemModel::modelReset);
        QSignalSpy favouriteResets(home->favouritesTableViewController(), &QAbstractItemModel::modelReset);
        int refreshes = 0;
        ObserverSet observers;
        observers.add(Notifications::RefreshConjugations, [&](const Notification &) { ++refreshes; });

        home->optionsDidClose(false);
        QCOMPARE(listResets.count() + historyResets.count() + refreshes, 0);

        m_settings->setString(SettingsKeys::SearchFrom, "W");
        home->optionsDidClose(true);
        QCOMPARE(listResets.count(), 1);
        QCOMPARE(historyResets.count(), 1);
        QCOMPARE(favouriteResets.count(), 0);
        QCOMPARE(refreshes, 1);
        QCOMPARE(CrashLog::customValue("SearchFromStart"), QVariant(false));
    }

    void searchSetUpRecordsTheCrashReportContext()
    {
        m_settings->setBool(SettingsKeys::IncludeEnglish, true);
        m_settings->setString(SettingsKeys::TranslationLanguage, "fr");
        auto home = makeHome();
        QCOMPARE(CrashLog::customValue("IncludeEnglish"), QVariant(true));
        QCOMPARE(CrashLog::customValue("SearchFromStart"), QVariant(true));
        QCOMPARE(CrashLog::customValue("ShowTranslated"), QVariant(false));
        QCOMPARE(CrashLog::customValue("SortByLang"), QVariant(true));
        QCOMPARE(CrashLog::customValue("TranslationLanguage"), QVariant(QStringLiteral("fr")));
        QCOMPARE(CrashLog::customValue("Locale"), QVariant(QStringLiteral("it-IT")));
    }

    void tabsByEventByPositionAndByName()
    {
        auto home = makeHome();
        openTab("History");
        QCOMPARE(home->selectedTab(), int(HomeViewController::HistoryTab));
        openTab("Favourites");
        QCOMPARE(home->selectedTab(), int(HomeViewController::FavouritesTab));
        openTab("history"); // any other name is the list
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));

        m_settings->setBool(SettingsKeys::UseHistory, false);
        auto noHistory = makeHome();
        noHistory->selectTabAt(1);
        QCOMPARE(noHistory->selectedTab(), int(HomeViewController::FavouritesTab));
        QCOMPARE(noHistory->selectedTabIndex(), 1);
        noHistory->selectTabAt(2);
        QCOMPARE(noHistory->selectedTab(), int(HomeViewController::FavouritesTab));
        // With history off there is no history tab: its quick action shows the list.
        openTab("History");
        QCOMPARE(noHistory->selectedTab(), int(HomeViewController::ListTab));
        QCOMPARE(noHistory->selectedTabIndex(), 0);

        const QStringList names{"list", "favourites", "history", "History"};
        const QList<int> tabs{0, 1, 2, -1};
        for (int i = 0; i < names.size(); ++i)
            QCOMPARE(HomeViewController::tabForName(names[i]), tabs[i]);
    }
};

QTEST_GUILESS_MAIN(HomeTest)
#include "tst_home.moc"
