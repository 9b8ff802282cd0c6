// The app's controllers without a window: the launch (database, settings, old settings
// file), quick actions, the home screen's tabs and rows, the drawer.
#include "Analytics.h"
#include "AppDelegate.h"
#include "CrashLog.h"
#include "HomeViewController.h"
#include "MoreAppsTableViewController.h"
#include "NavigationDrawerTableTableViewController.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbRef.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

#include <plist/plist.h>

using namespace norvella;

class LaunchTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<DatabaseQueue> m_queue; // on the master itself, for the home screen
    LaunchEnvironment m_env;

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

    static void writeLegacyPlist(const QString &path, const QString &format)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (format == QLatin1String("malformed")) {
            file.write("<plist><dict><key>IncludeEnglish</key>");
            return;
        }
        plist_t dict = plist_new_dict();
        plist_dict_set_item(dict, "IncludeEnglish", plist_new_bool(0));
        plist_dict_set_item(dict, "SearchFrom", plist_new_string("W"));
        char *data = nullptr;
        uint32_t length = 0;
        plist_to_bin(dict, &data, &length);
        file.write(data, length);
        free(data);
        plist_free(dict);
    }

private slots:
    void initTestCase() { Analytics::shared().start(); }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_env = {m_dir->filePath("docs"), m_dir->filePath("master.db"), QStringLiteral("3.0")};
        QVERIFY(test::createFixtureDatabase(m_env.masterPath, "INSERT INTO history(verbid, timestamp) VALUES (2, 10);"));
        QVERIFY(QDir().mkpath(m_env.documentsDirectory));
        m_settings = std::make_unique<Settings>(m_dir->filePath("settings.json"));
        m_queue = std::make_shared<DatabaseQueue>(m_env.masterPath);
        CrashLog::setLogFilePath(m_dir->filePath("norvella.log"));
        PreferredLanguages::setOverride({"it-IT", "en-GB"});
    }

    void cleanup() { PreferredLanguages::clearOverride(); }

    // A missing master database is fatal with a clear message; a working copy that
    // cannot be made is logged, and the app runs without a queue.
    void failedPreparation()
    {
        const LaunchEnvironment env = m_env;
        m_env.masterPath.clear();
        AppDelegate missing(m_env, *m_settings);
        missing.didFinishLaunching();
        QCOMPARE(missing.status(), AppDelegate::Status::FatalError);
        QVERIFY(missing.fatalError().contains(QStringLiteral("verbs.db")));

        m_env = env;
        m_env.documentsDirectory = QStringLiteral("/proc/norvella-test");
        AppDelegate unwritable(m_env, *m_settings);
        QVERIFY(unwritable.didFinishLaunching());
        QCOMPARE(unwritable.status(), AppDelegate::Status::Running);
        QVERIFY(!unwritable.queue());
        QVERIFY(test::readFile(CrashLog::logFilePath()).contains("Unable to initialise database "));
    }

    // The window is built once the queue is open. An old settings file wins over the
    // first-run values and is deleted; a malformed one is moved aside, unread (the
    // shapes a file may take are tst_settingsondisk's).
    void launchPreparesDatabaseAndSettings_data()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("first run") << "";
        QTest::newRow("binary") << "binary";
        QTest::newRow("malformed") << "malformed";
    }

    void launchPreparesDatabaseAndSettings()
    {
        QFETCH(QString, format);
        const bool used = format == QLatin1String("binary");
        const QString path = m_env.documentsDirectory + QStringLiteral("/norvella.plist");
        if (!format.isEmpty())
            writeLegacyPlist(path, format);
        AppDelegate delegate(m_env, *m_settings);
        int windowsBuilt = 0;
        delegate.setWindowFactory([&](AppDelegate &d) { windowsBuilt += d.queue() ? 1 : 100; });
        QVERIFY(delegate.didFinishLaunching());
        QCOMPARE(windowsBuilt, 1);
        QCOMPARE(delegate.status(), AppDelegate::Status::Running);
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("3.0"));
        QVERIFY(!QFile::exists(path));
        QCOMPARE(QFile::exists(path + QStringLiteral(".corrupt")), format == QLatin1String("malformed"));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(!used));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant(used ? QStringLiteral("W") : QStringLiteral("S")));
        // Keys absent from the old file keep their first-run values.
        QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchConjugations), QVariant(false));
    }

    // The delegate's repository reads the index by itself, and every screen
    // the home screen makes reads that one repository: the list has the index
    // without anyone typing a search.
    void theLaunchReadsTheIndexForEveryScreen()
    {
        AppDelegate delegate(m_env, *m_settings);
        std::unique_ptr<HomeViewController> home;
        delegate.setWindowFactory([&](AppDelegate &d) {
            home = std::make_unique<HomeViewController>();
            home->setSettings(m_settings.get());
            home->setQueueObject(d.queueObject());
            home->viewDidLoad();
        });
        QVERIFY(delegate.didFinishLaunching());
        VerbRepository *repository = delegate.repository();
        QVERIFY(repository);
        QCOMPARE(home->repository(), repository);
        QCOMPARE(home->verbListTableViewController()->repository(), repository);
        QCOMPARE(home->searchResultsController()->repository(), repository);
        QSignalSpy ready(repository, &VerbRepository::searchIndexReady);
        QVERIFY(ready.wait(60000));
        QVERIFY(repository->searchIndex());
        home->showTab(HomeViewController::FavouritesTab);
        QCOMPARE(home->favouritesTableViewController()->repository(), repository);
    }

    // At a cold launch the action is handled once; the search action only acts on the phone layout.
    void quickActions()
    {
        QStringList tabs;
        ObserverSet observers;
        observers.add(Notifications::TabOpenEvent, [&](const Notification &n) {
            tabs << n.userInfo.value(QStringLiteral("SelectedTab")).toString();
        });
        AppDelegate delegate(m_env, *m_settings);
        QVERIFY(!delegate.didFinishLaunching(QStringLiteral("com.quorbel.shortcut.favourite")));

        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("history")));
        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.list")));
        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.unknown")));
        QCOMPARE(tabs, (QStringList{QStringLiteral("Favourites"), QStringLiteral("History"), QStringLiteral("List")}));

        QSignalSpy focus(&delegate, &AppDelegate::focusSearchRequested);
        delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.search"));
        QCOMPARE(focus.count(), 0);
        delegate.setCollapsed(true);
        delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.search"));
        QCOMPARE(focus.count(), 1);
    }

    // Switching history off takes its tab away (showing the list if it was shown); on brings it back.
    void historyTabFollowsTheSetting()
    {
        auto home = makeHome();
        home->showTab(HomeViewController::HistoryTab);
        m_settings->setBool(SettingsKeys::UseHistory, false);
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(false), {});
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1}));
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));
        m_settings->removeObject(SettingsKeys::UseHistory);
        NotificationCenter::defaultCenter().post(Notifications::HistoryFeatureToggled, QVariant(true), {});
        QCOMPARE(tagsOf(*home), (QList<int>{0, 1, 2}));
    }

    void rowsOpenTheDetailWithTheSharedVerb()
    {
        auto home = makeHome();
        QSignalSpy details(home.get(), &HomeViewController::showDetail);
        QSignalSpy resign(home.get(), &HomeViewController::searchFieldShouldResign);
        home->verbListTableViewController()->selectRow(1);
        QCOMPARE(VerbRef::from(home->detailVerb()), home->verbListTableViewController()->verbAtRow(1));
        home->updateSearchResults("ess");
        home->searchResultsController()->selectRow(0);
        QCOMPARE(details.count(), 2);
        QCOMPARE(VerbRef::from(home->detailVerb())->italian, QStringLiteral("essere"));
        // A phone keeps the search field active; a tablet puts the keyboard away.
        QCOMPARE(resign.count(), 0);
        home->setPadIdiom(true);
        home->searchResultsController()->selectRow(0);
        QCOMPARE(resign.count(), 1);
    }

    // The other tabs are made on first use, once, with the same queue; closing the
    // settings reloads every list and the conjugations, only after a change.
    void tabsAreMadeOnceAndRefreshedAfterSettingsChange()
    {
        auto home = makeHome();
        QVERIFY(!home->favouritesTableViewController() && !home->historyTableViewController());
        QSignalSpy children(home.get(), &HomeViewController::childrenChanged);
        home->showTab(HomeViewController::HistoryTab);
        QCOMPARE(home->historyTableViewController()->rowCount(), 1);
        home->showTab(HomeViewController::FavouritesTab);
        FavouritesTableViewController *favourites = home->favouritesTableViewController();
        QAbstractItemModelTester tester(favourites, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(favourites->showsEmptyState() && !home->verbListTableViewController()->isVisible());
        home->showTab(HomeViewController::HistoryTab);
        home->showTab(HomeViewController::FavouritesTab);
        QCOMPARE(home->favouritesTableViewController(), favourites);
        QCOMPARE(children.count(), 2);
        home->showTab(7);
        QCOMPARE(home->selectedTab(), int(HomeViewController::FavouritesTab));

        QSignalSpy listResets(home->verbListTableViewController(), &QAbstractItemModel::modelReset);
        QSignalSpy historyResets(home->historyTableViewController(), &QAbstractItemModel::modelReset);
        QSignalSpy favouriteResets(favourites, &QAbstractItemModel::modelReset);
        int refreshes = 0;
        ObserverSet observers;
        observers.add(Notifications::RefreshConjugations, [&](const Notification &) { ++refreshes; });
        home->optionsDidClose(false);
        QCOMPARE(listResets.count() + historyResets.count() + refreshes, 0);
        m_settings->setString(SettingsKeys::SearchFrom, "W");
        home->optionsDidClose(true);
        QCOMPARE(listResets.count(), 1);
        QCOMPARE(historyResets.count(), 1);
        QCOMPARE(favouriteResets.count(), 1);
        QCOMPARE(refreshes, 1);
        QCOMPARE(CrashLog::customValue("SearchFromStart"), QVariant(false));
    }

    // Quick actions name a tab; without history its action shows the list.
    void tabsByEventAndByPosition()
    {
        auto home = makeHome();
        openTab("History");
        QCOMPARE(home->selectedTab(), int(HomeViewController::HistoryTab));
        openTab("history"); // any other name is the list
        QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));

        m_settings->setBool(SettingsKeys::UseHistory, false);
        auto noHistory = makeHome();
        noHistory->selectTabAt(1);
        QCOMPARE(noHistory->selectedTab(), int(HomeViewController::FavouritesTab));
        noHistory->selectTabAt(2);
        QCOMPARE(noHistory->selectedTabIndex(), 1);
        openTab("History");
        QCOMPARE(noHistory->selectedTab(), int(HomeViewController::ListTab));
    }

    // Four rows, each acting only once the drawer has closed, and only once.
    void rowsActAfterTheDrawerHasClosed()
    {
        NavigationDrawerTableTableViewController drawer;
        QAbstractItemModelTester tester(&drawer);
        QStringList keys;
        for (int row = 0; row < drawer.rowCount(); ++row)
            keys << drawer.data(drawer.index(row), NavigationDrawerTableTableViewController::TitleKeyRole).toString();
        QCOMPARE(keys, (QStringList{"options.button", "moreapps", "contact", "privacy"}));
        const QList<const char *> actions{SIGNAL(openSettings()), SIGNAL(openMoreApps()), SIGNAL(composeSupportMail()),
                                          SIGNAL(openPrivacyPage())};
        for (int row = 0; row < 4; ++row) {
            drawer.setPresented(true);
            QSignalSpy close(&drawer, &NavigationDrawerTableTableViewController::closeRequested);
            QSignalSpy action(&drawer, actions[row]);
            drawer.selectRow(1, row);
            QCOMPARE(close.count(), 1);
            QCOMPARE(action.count(), 0);
            drawer.drawerDidClose();
            drawer.drawerDidClose(); // a swipe, say, closing it again
            QCOMPARE(action.count(), 1);
        }
    }

    void badSelectionsAreLoggedAndDoNothing()
    {
        NavigationDrawerTableTableViewController drawer;
        QSignalSpy close(&drawer, &NavigationDrawerTableTableViewController::closeRequested);
        drawer.selectRow(1, 0);
        drawer.setPresented(true);
        drawer.selectRow(0, 0);
        drawer.selectRow(1, 4);
        QCOMPARE(close.count(), 0);
        const QByteArray text = test::readFile(CrashLog::logFilePath());
        QVERIFY(text.contains("Unable to get navigation controller"));
        QCOMPARE(text.count("Navigation option not available"), 2);
    }

    void choosingAnotherAppLogsAndOpensItsStorePage()
    {
        MoreAppsTableViewController apps;
        QAbstractItemModelTester tester(&apps);
        QList<QUrl> opened;
        apps.setUrlOpener([&](const QUrl &url) { opened << url; });
        apps.setCountryCode(QStringLiteral("DE"));
        apps.setOtherApps({{{"appid", "7"}, {"storedesc", "one"}, {"name", "One"}},
                           {{"storedesc", "broken"}, {"name", "No id"}}});
        QCOMPARE(apps.rowCount(), 2);
        apps.selectRow(0);
        QCOMPARE(opened.size(), 1);
        QVERIFY(opened.first().toString().contains(QStringLiteral("/de/app/one/id7?mt=8&uo=4&at=")));
        QCOMPARE(Analytics::shared().lastParameters().value(QStringLiteral("select")).toString(), QStringLiteral("one"));
        apps.selectRow(1); // no id, no page
        QCOMPARE(opened.size(), 1);
    }
};

QTEST_MAIN(LaunchTest)
#include "tst_launch.moc"
