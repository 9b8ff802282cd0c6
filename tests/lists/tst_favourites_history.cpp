#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "ListTestSupport.h"
#include "TestSupport.h"
#include "VerbListTableViewController.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace norvella;

class FavouritesHistoryTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;

    template<typename List> std::unique_ptr<List> makeList(bool load = true)
    {
        auto list = std::make_unique<List>();
        new QAbstractItemModelTester(list.get(), QAbstractItemModelTester::FailureReportingMode::QtTest, list.get());
        list->setSettings(m_fixture->settings.get());
        list->setQueue(m_fixture->queue);
        if (load)
            list->viewDidLoad();
        return list;
    }

    QStringList favouriteIds() const
    {
        return test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite ORDER BY verbid");
    }
    QStringList historyIds() const
    {
        return test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM history ORDER BY verbid");
    }

    template<typename List> void checkReloadGuard()
    {
        auto list = makeList<List>();
        QSignalSpy resets(list.get(), &QAbstractItemModel::modelReset);
        int nestedCalls = 0;
        // A reload asked for while one runs (here: from the view's reset) is dropped, not queued.
        // Only the first reset asks, so a missing guard shows as a second reset instead of
        // recursing without end.
        connect(list.get(), &QAbstractItemModel::modelReset, this, [&] {
            if (++nestedCalls > 1)
                return;
            QVERIFY(list->isReloading());
            list->reload();
        });
        list->reload();
        QCOMPARE(nestedCalls, 1);
        QCOMPARE(resets.count(), 1);
        QVERIFY(!list->isReloading());
        disconnect(list.get(), &QAbstractItemModel::modelReset, this, nullptr);

        // Without a queue the guard stays set: no later reload runs, even with a queue again.
        list->setQueue(nullptr);
        list->reload();
        QVERIFY(list->isReloading());
        list->setQueue(m_fixture->queue);
        list->reload();
        QVERIFY(list->verbs().isEmpty());
        QCOMPARE(resets.count(), 1);
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create(QStringLiteral(
                "INSERT INTO history(verbid, timestamp) VALUES (1, 100.5), (3, 300.25), (1, 90), (2, 200), (404, 500);")));
    }

    void cleanup() { PreferredLanguages::clearOverride(); }

    void favouritesAreInSortOrder()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (3), (1), (6);"));
        auto favourites = makeList<FavouritesTableViewController>();
        QCOMPARE(test::italianColumn(*favourites), (QStringList{"Bere", "andare", "mangiare"}));
        QVERIFY(!favourites->showsEmptyState());
        QVERIFY(favourites->verbAtRow(2)->isFavourite && favourites->verbAtRow(2)->voice_available);
        m_fixture->settings->setBool(SettingsKeys::SortByLang, false);
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "de");
        favourites->reload();
        QCOMPARE(test::italianColumn(*favourites), (QStringList{"mangiare", "andare", "Bere"}));
        QCOMPARE(test::roleColumn(*favourites, "translation"), (QStringList{"essen", "gehen", "trinken"}));
    }

    void swipeTakesTheFavouriteOutBeforeTheTap()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (1), (3);"));
        auto favourites = makeList<FavouritesTableViewController>();
        auto verbList = makeList<VerbListTableViewController>();
        QSignalSpy favouriteResets(favourites.get(), &QAbstractItemModel::modelReset);
        QSignalSpy verbListResets(verbList.get(), &QAbstractItemModel::modelReset);
        test::FavouriteNotifications notifications;

        const VerbPtr andare = favourites->verbAtRow(0);
        std::unique_ptr<SwipeAction> action(favourites->trailingSwipeAction(0));
        QVERIFY(action);
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite.remove"));
        // Building the action already changed the data, but not the view or the database.
        QCOMPARE(favourites->verbs().size(), 1);
        QVERIFY(!andare->isFavourite);
        QCOMPARE(favourites->rowCount(), 2);
        QCOMPARE(favouriteIds(), (QStringList{"1", "3"}));
        QVERIFY(notifications.posted.isEmpty());

        QStringList idsWhenRowLeft;
        connect(favourites.get(), &QAbstractItemModel::rowsRemoved, this, [&] { idsWhenRowLeft = favouriteIds(); });
        QVERIFY(action->trigger());
        // The row went first, the database after.
        QCOMPARE(idsWhenRowLeft, (QStringList{"1", "3"}));
        QCOMPARE(favouriteIds(), QStringList{"3"});
        QCOMPARE(test::italianColumn(*favourites), QStringList{"mangiare"});
        QCOMPARE(notifications.posted.size(), 1);
        QCOMPARE(notifications.posted.first().sender(), favourites.get());
        QCOMPARE(notifications.posted.first().userInfo.value("verb").value<VerbPtr>(), andare);
        QCOMPARE(favouriteResets.count(), 0);
        QCOMPARE(verbListResets.count(), 1);

        // The last one: the table is reloaded so the empty state shows.
        action.reset(favourites->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(favouriteIds().isEmpty());
        QCOMPARE(favouriteResets.count(), 1);
        QCOMPARE(favourites->rowCount(), 0);
        QVERIFY(favourites->showsEmptyState());
    }

    void dismissedSwipeLeavesTheVerbOutUntilTheNextReload()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (1), (3);"));
        auto favourites = makeList<FavouritesTableViewController>();
        delete favourites->trailingSwipeAction(1);
        QCOMPARE(favourites->verbs().size(), 1);
        QCOMPARE(favouriteIds(), (QStringList{"1", "3"}));
        favourites->reload();
        QCOMPARE(favourites->verbs().size(), 2);
    }

    void favouritesIgnoreTheirOwnKindOfPoster()
    {
        auto favourites = makeList<FavouritesTableViewController>();
        FavouritesTableViewController another;
        QSignalSpy resets(favourites.get(), &QAbstractItemModel::modelReset);
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &another, {});
        QCOMPARE(resets.count(), 0);
        VerbListTableViewController verbList;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &verbList, {});
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, QVariant(), {});
        QCOMPARE(resets.count(), 2);
        // Only favourite changes reload it.
        NotificationCenter::defaultCenter().post(Notifications::VerbViewed, QVariant(), {});
        QCOMPARE(resets.count(), 2);
    }

    void favouritesFailuresAreLogged()
    {
        QVERIFY(test::runSql(m_fixture->databasePath,
                             "INSERT INTO favourite(verbid) VALUES (1);"
                             "CREATE TRIGGER keep BEFORE DELETE ON favourite BEGIN SELECT RAISE(ABORT, 'kept'); END;"));
        auto favourites = makeList<FavouritesTableViewController>();
        std::unique_ptr<SwipeAction> action(favourites->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(m_fixture->log().contains("An error occurred when removing the favourite: kept (19)"));
        // Gone from the screen; back at the next reload.
        QCOMPARE(favourites->rowCount(), 0);
        favourites->reload();
        QCOMPARE(favourites->rowCount(), 1);

        QVERIFY(m_fixture->breakSchema("DROP TABLE verb;"));
        favourites->reload();
        QVERIFY(favourites->showsEmptyState());
        QVERIFY(m_fixture->log().contains("An error occurred when reading list of verbs: no such table: verb (1)"));
    }

    void favouritesAppearanceIsLogged()
    {
        auto favourites = makeList<FavouritesTableViewController>();
        QSignalSpy events(favourites.get(), &InterstitialTableViewController::analyticsEvent);
        favourites->viewDidAppear();
        QVERIFY(favourites->isVisible());
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.first().first().toString(), QStringLiteral("favourites_list"));
    }

    void reloadGuard_favourites() { checkReloadGuard<FavouritesTableViewController>(); }
    void reloadGuard_history() { checkReloadGuard<HistoryTableViewController>(); }

    void historyIsNewestFirstWithEachVerbOnce()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (2);"));
        auto history = makeList<HistoryTableViewController>();
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "essere", "andare"}));
        QCOMPARE(test::roleColumn(*history, "isFavourite"), (QStringList{"false", "true", "false"}));
        QVERIFY(history->verbAtRow(2)->voice_available);
        QVERIFY(!history->showsEmptyState());
    }

    void historyReloadsOnEveryRelatedNotification()
    {
        auto history = makeList<HistoryTableViewController>();
        QSignalSpy resets(history.get(), &QAbstractItemModel::modelReset);
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO history(verbid, timestamp) VALUES (5, 900);"));
        NotificationCenter::defaultCenter().post(Notifications::VerbViewed, QVariant(), {});
        QCOMPARE(resets.count(), 1);
        QCOMPARE(test::italianColumn(*history).first(), QStringLiteral("alzarsi"));
        NotificationCenter::defaultCenter().post(Notifications::RefreshHistory, QVariant(), {});
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, history.get(), {});
        HistoryTableViewController another;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &another, {});
        QCOMPARE(resets.count(), 4);
        NotificationCenter::defaultCenter().post(Notifications::TabOpenEvent, QVariant(), {});
        QCOMPARE(resets.count(), 4);
    }

    void historySwipeRemovesEveryRowOfTheVerbWithoutNotifying()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (1);"));
        auto history = makeList<HistoryTableViewController>();
        test::FavouriteNotifications notifications;
        const VerbPtr andare = history->verbAtRow(2);
        std::unique_ptr<SwipeAction> action(history->trailingSwipeAction(2));
        QCOMPARE(action->titleKey(), QStringLiteral("action.remove"));
        QCOMPARE(history->verbs().size(), 2);
        QCOMPARE(history->rowCount(), 3);
        QVERIFY(andare->isFavourite);

        QStringList idsWhenRowLeft;
        connect(history.get(), &QAbstractItemModel::rowsRemoved, this, [&] { idsWhenRowLeft = historyIds(); });
        QVERIFY(action->trigger());
        QCOMPARE(idsWhenRowLeft, (QStringList{"1", "1", "2", "3", "404"}));
        QCOMPARE(historyIds(), (QStringList{"2", "3", "404"}));
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "essere"}));
        QVERIFY(notifications.posted.isEmpty());
        QVERIFY(andare->isFavourite);

        for (int i = 0; i < 2; ++i) {
            action.reset(history->trailingSwipeAction(0));
            QVERIFY(action->trigger());
        }
        QCOMPARE(history->rowCount(), 0);
        QVERIFY(history->showsEmptyState());
        QCOMPARE(historyIds(), QStringList{"404"});
    }

    void historyFailuresAreLoggedAndItNeverReportsAppearing()
    {
        QVERIFY(test::runSql(m_fixture->databasePath,
                             "CREATE TRIGGER keep BEFORE DELETE ON history BEGIN SELECT RAISE(ABORT, 'kept'); END;"));
        auto history = makeList<HistoryTableViewController>();
        std::unique_ptr<SwipeAction> action(history->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(m_fixture->log().contains("An error occurred when removing the item from history: kept (19)"));

        QSignalSpy events(history.get(), &InterstitialTableViewController::analyticsEvent);
        history->viewDidAppear();
        QVERIFY(!history->isVisible());
        QCOMPARE(events.count(), 0);
    }
};

QTEST_GUILESS_MAIN(FavouritesHistoryTest)
#include "tst_favourites_history.moc"
