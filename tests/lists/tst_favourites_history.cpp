#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "ListTestSupport.h"
#include "Strings.h"
#include "TestSupport.h"
#include "UserMessages.h"
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
    QStringList m_messages;

    template<typename List> std::unique_ptr<List> makeList() { return m_fixture->makeList<List>(); }

    QStringList ids(const char *table) const
    {
        return test::querySingleColumn(m_fixture->databasePath, QStringLiteral("SELECT verbid FROM %1 ORDER BY verbid").arg(table));
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create(QStringLiteral(
                "INSERT INTO history(verbid, timestamp) VALUES (1, 100.5), (3, 300.25), (1, 90), (2, 200), (404, 500);")));
        m_messages.clear();
        UserMessages::setListener([this](const QString &text) { m_messages << text; });
    }

    void cleanup()
    {
        UserMessages::setListener({});
        PreferredLanguages::clearOverride();
    }

    void favouritesAreInSortOrder()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (3), (1), (6);"));
        auto favourites = makeList<FavouritesTableViewController>();
        QCOMPARE(test::italianColumn(*favourites), (QStringList{"Bere", "andare", "mangiare"}));
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

        // A swipe dismissed without a tap leaves the verb out until the next reload.
        delete favourites->trailingSwipeAction(1);
        QCOMPARE(favourites->verbs().size(), 1);
        favourites->reload();
        QCOMPARE(favourites->verbs().size(), 2);

        const VerbPtr andare = favourites->verbAtRow(0);
        std::unique_ptr<SwipeAction> action(favourites->trailingSwipeAction(0));
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite.remove"));
        // Building the action already changed the data, but not the verb, the view or the database.
        QCOMPARE(favourites->verbs().size(), 1);
        QVERIFY(andare->isFavourite);
        QCOMPARE(favourites->rowCount(), 2);
        QCOMPARE(ids("favourite"), (QStringList{"1", "3"}));

        QStringList idsWhenRowLeft;
        connect(favourites.get(), &QAbstractItemModel::rowsRemoved, this, [&] { idsWhenRowLeft = ids("favourite"); });
        QVERIFY(action->trigger());
        // The row went first, the database after.
        QCOMPARE(idsWhenRowLeft, (QStringList{"1", "3"}));
        QCOMPARE(ids("favourite"), QStringList{"3"});
        QCOMPARE(test::italianColumn(*favourites), QStringList{"mangiare"});
        QCOMPARE(notifications.posted.size(), 1);
        QCOMPARE(notifications.posted.first().userInfo.value("verb").value<VerbPtr>(), andare);
        QVERIFY(!andare->isFavourite);
        QCOMPARE(favouriteResets.count(), 1); // the reload above only
        QCOMPARE(verbListResets.count(), 1);

        // The last one: the table is reloaded so the empty state shows.
        action.reset(favourites->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(ids("favourite").isEmpty());
        QVERIFY(favourites->showsEmptyState());
    }

    // A removal the database refuses is logged and shown, and its row comes back, still a favourite.
    void favouritesFailuresAreLogged()
    {
        QVERIFY(test::runSql(m_fixture->databasePath,
                             "INSERT INTO favourite(verbid) VALUES (1);"
                             "CREATE TRIGGER keep BEFORE DELETE ON favourite BEGIN SELECT RAISE(ABORT, 'kept'); END;"));
        auto favourites = makeList<FavouritesTableViewController>();
        test::FavouriteNotifications notifications;
        std::unique_ptr<SwipeAction> action(favourites->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(m_fixture->log().contains("An error occurred when removing the favourite: kept (19)"));
        QCOMPARE(m_messages, QStringList{Strings::text("common.save_failed")});
        QCOMPARE(test::italianColumn(*favourites), QStringList{"andare"});
        QVERIFY(action->verb()->isFavourite && favourites->verbAtRow(0)->isFavourite);
        QVERIFY(notifications.posted.isEmpty());
        QCOMPARE(ids("favourite"), QStringList{"1"});
    }

    void reloadAskedForDuringAReloadIsDropped()
    {
        auto list = makeList<HistoryTableViewController>();
        QSignalSpy resets(list.get(), &QAbstractItemModel::modelReset);
        int nestedCalls = 0;
        // Only the first reset asks, so a missing guard shows as a second reset instead of
        // recursing without end.
        connect(list.get(), &QAbstractItemModel::modelReset, this, [&] {
            if (++nestedCalls == 1)
                list->reload();
        });
        list->reload();
        QCOMPARE(nestedCalls, 1);
        QCOMPARE(resets.count(), 1);
        QVERIFY(!list->isReloading());
    }

    void historyIsNewestFirstWithEachVerbOnce()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (2);"));
        auto history = makeList<HistoryTableViewController>();
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "essere", "andare"}));
        QCOMPARE(test::roleColumn(*history, "isFavourite"), (QStringList{"false", "true", "false"}));

        QSignalSpy resets(history.get(), &QAbstractItemModel::modelReset);
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO history(verbid, timestamp) VALUES (5, 900);"));
        NotificationCenter::defaultCenter().post(Notifications::VerbViewed);
        QCOMPARE(test::italianColumn(*history).first(), QStringLiteral("alzarsi"));
        NotificationCenter::defaultCenter().post(Notifications::RefreshHistory);
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, history.get(), {});
        NotificationCenter::defaultCenter().post(Notifications::TabOpenEvent);
        QCOMPARE(resets.count(), 3);
    }

    void historySwipeRemovesEveryRowOfTheVerbWithoutNotifying()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (1);"));
        auto history = makeList<HistoryTableViewController>();
        test::FavouriteNotifications notifications;
        std::unique_ptr<SwipeAction> action(history->trailingSwipeAction(2));
        QCOMPARE(action->titleKey(), QStringLiteral("action.remove"));
        QCOMPARE(history->rowCount(), 3);

        QStringList idsWhenRowLeft;
        connect(history.get(), &QAbstractItemModel::rowsRemoved, this, [&] { idsWhenRowLeft = ids("history"); });
        QVERIFY(action->trigger());
        QCOMPARE(idsWhenRowLeft, (QStringList{"1", "1", "2", "3", "404"}));
        QCOMPARE(ids("history"), (QStringList{"2", "3", "404"}));
        QCOMPARE(test::italianColumn(*history), (QStringList{"mangiare", "essere"}));
        // Still a favourite: only its history went.
        QCOMPARE(ids("favourite"), QStringList{"1"});
        QVERIFY(notifications.posted.isEmpty());
        for (int i = 0; i < 2; ++i) {
            action.reset(history->trailingSwipeAction(0));
            QVERIFY(action->trigger());
        }
        QVERIFY(history->showsEmptyState());
        QCOMPARE(ids("history"), QStringList{"404"});

        // A failed removal is logged and shown, and the row comes back.
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO history(verbid, timestamp) VALUES (2, 1);"
                                                      "CREATE TRIGGER keep BEFORE DELETE ON history BEGIN SELECT RAISE(ABORT, 'kept'); END;"));
        history->reload();
        action.reset(history->trailingSwipeAction(0));
        QVERIFY(action->trigger());
        QVERIFY(m_fixture->log().contains("An error occurred when removing the item from history: kept (19)"));
        QCOMPARE(m_messages, QStringList{Strings::text("common.save_failed")});
        QCOMPARE(test::italianColumn(*history), QStringList{"essere"});
    }
};

QTEST_GUILESS_MAIN(FavouritesHistoryTest)
#include "tst_favourites_history.moc"
