#include "FavouritesTableViewController.h"
#include "ListTestSupport.h"
#include "Strings.h"
#include "TestSupport.h"
#include "UserMessages.h"
#include "VerbListTableViewController.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace norvella;

class VerbListTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;

    std::unique_ptr<VerbListTableViewController> makeList()
    {
        return m_fixture->makeList<VerbListTableViewController>();
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create());
    }

    void cleanup() { PreferredLanguages::clearOverride(); }

    void sectionsUseUpperCaseInitialsWithTheEmptySortColumnFirst()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (3);"));
        auto list = makeList();
        QCOMPARE(list->keys(), (QStringList{"", "A", "B", "C", "E", "M", "O"}));
        // Lower-case "a..." infinitives and the upper-case "Bere" each land under their capital.
        QCOMPARE(test::italianColumn(*list),
                 (QStringList{"", "alzarsi", "amare", "andare", "Bere", "cantare", "essere", "mangiare", "öffnare"}));
        QCOMPARE(test::roleColumn(*list, "section"), (QStringList{"", "A", "A", "A", "B", "C", "E", "M", "O"}));
        QCOMPARE(list->numberOfRowsInSection(1), 3);
        QCOMPARE(list->firstRowForSectionIndexTitle("C"), 5);
        QCOMPARE(list->sectionForSectionIndexTitle("a"), -1);
        QCOMPARE(list->firstRowForSectionIndexTitle("Z"), -1);

        // Each row: infinitive, translation in the chosen language, favourite mark.
        QCOMPARE(test::roleColumn(*list, "translation").at(3), QStringLiteral("to go"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "de");
        QCOMPARE(test::roleColumn(*list, "translation").at(3), QStringLiteral("gehen"));
        QCOMPARE(test::roleColumn(*list, "isFavourite").indexOf("true"), test::italianColumn(*list).indexOf("mangiare"));
        QCOMPARE(test::roleColumn(*list, "isFavourite").count("true"), 1);

        QSignalSpy details(list.get(), &VerbTableModel::showDetail);
        list->selectRow(3);
        list->selectRow(99);
        QCOMPARE(details.count(), 1);
        QCOMPARE(details.first().first().value<VerbPtr>()->italian, QStringLiteral("andare"));
    }

    void portugueseSortsByTheUnfoldedColumn()
    {
        m_fixture->settings->setBool(SettingsKeys::SortByLang, false);
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "pt");
        auto list = makeList();
        // "ábrir" and "ámar" form a section of their own, after the plain letters.
        QCOMPARE(list->keys(), (QStringList{"", "B", "C", "I", "L", "S", "Á"}));
        QCOMPARE(list->verbs().value("Á").size(), 2);
        QCOMPARE(list->verbs().value("Á").at(0)->italian, QStringLiteral("öffnare"));
    }

    void sortColumnFollowsTheSettings()
    {
        // SortByLang (absent or not a bool reads as true: Italian), chosen language, preferred language.
        const QList<std::tuple<QVariant, QString, QString, QString>> cases{
                {QVariant(), "de", "en", "simplified_italian"},
                {QVariant("no"), "de", "en", "simplified_italian"},
                {QVariant(false), "de", "en", "simplified_german"},
                {QVariant(false), "pt", "en", "portuguese"},
                {QVariant(false), "tr", "de", "english"},
                {QVariant(false), "", "pt-BR", "portuguese"}};
        for (const auto &[sortByLang, language, preferred, column] : cases) {
            Settings settings(m_fixture->dir.filePath("sort.json"));
            settings.setObject(SettingsKeys::SortByLang, sortByLang);
            settings.setObject(SettingsKeys::TranslationLanguage, language.isEmpty() ? QVariant() : QVariant(language));
            QCOMPARE(VerbListTableViewController::sortColumn(settings, {preferred}), column);
        }
    }

    void favouriteToggleUpdatesTheRowAndReloadsTheOtherLists()
    {
        auto list = makeList();
        FavouritesTableViewController favourites;
        favourites.setSettings(m_fixture->settings.get());
        favourites.setQueue(m_fixture->queue);
        favourites.viewDidLoad();
        QSignalSpy listResets(list.get(), &QAbstractItemModel::modelReset);
        QSignalSpy listChanges(list.get(), &QAbstractItemModel::dataChanged);
        test::FavouriteNotifications notifications;

        const int row = test::italianColumn(*list).indexOf("andare");
        std::unique_ptr<SwipeAction> action(list->trailingSwipeAction(row));
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite"));
        QVERIFY(action->trigger());
        QVERIFY(!action->trigger());
        QCOMPARE(listResets.count(), 0);
        QCOMPARE(listChanges.count(), 1);
        QCOMPARE(listChanges.first().at(0).toModelIndex().row(), row);
        QVERIFY(list->verbAtRow(row)->isFavourite);
        QCOMPARE(test::italianColumn(favourites), QStringList{"andare"});
        QCOMPARE(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite"), QStringList{"1"});
        QCOMPARE(notifications.posted.size(), 1);
        QCOMPARE(notifications.posted.first().sender(), list.get());

        // Again, now as a favourite: the red "remove" action.
        action.reset(list->trailingSwipeAction(row));
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite.remove"));
        QCOMPARE(action->backgroundColor(), SwipeAction::destructiveColor());
        QVERIFY(action->trigger());
        QVERIFY(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite").isEmpty());
        QVERIFY(!list->verbAtRow(row)->isFavourite);
        QVERIFY(favourites.showsEmptyState());

        // A change made elsewhere reloads the list.
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (2);"));
        QObject conjugationScreen;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &conjugationScreen, {});
        QCOMPARE(listResets.count(), 1);
        QVERIFY(list->verbs().value("E").at(0)->isFavourite);
    }

    void failuresAreLoggedAndKeepWhatTheUserSees()
    {
        auto list = makeList();
        // A failed write puts the mark back, redraws the row and says why, and tells nobody else.
        QVERIFY(test::runSql(m_fixture->databasePath, "DROP TABLE favourite; CREATE TABLE favourite(_id INTEGER PRIMARY KEY, verbid INTEGER CHECK (verbid < 0));"));
        QStringList messages;
        UserMessages::setListener([&](const QString &text) { messages << text; });
        test::FavouriteNotifications notifications;
        QSignalSpy changes(list.get(), &QAbstractItemModel::dataChanged);
        std::unique_ptr<SwipeAction> action(list->trailingSwipeAction(1));
        QVERIFY(action->trigger());
        UserMessages::setListener({});
        QVERIFY(!list->verbAtRow(1)->isFavourite);
        QCOMPARE(changes.count(), 2);
        QCOMPARE(messages, QStringList{Strings::text("common.save_failed")});
        QVERIFY(notifications.posted.isEmpty());
        QVERIFY(m_fixture->log().contains("Unable to update favourite CHECK constraint failed"));

        // A failed reload keeps the section titles over no rows.
        const QStringList keys = list->keys();
        QVERIFY(m_fixture->breakSchema("DROP TABLE favourite;"));
        list->reload();
        QCOMPARE(list->keys(), keys);
        QCOMPARE(list->rowCount(), 0);
        QVERIFY(m_fixture->log().contains(
                QStringLiteral("An error occurred when reading list of verbs: no such table: favourite (1)")));
    }
};

QTEST_GUILESS_MAIN(VerbListTest)
#include "tst_verblist.moc"
