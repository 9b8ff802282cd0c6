#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "ListTestSupport.h"
#include "TestSupport.h"
#include "VerbListTableViewController.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace norvella;

namespace {
QStringList sectionsOf(const VerbListTableViewController &list)
{
    return test::roleColumn(list, "section");
}
} // namespace

class VerbListTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;

    std::unique_ptr<VerbListTableViewController> makeList(bool load = true)
    {
        auto list = std::make_unique<VerbListTableViewController>();
        new QAbstractItemModelTester(list.get(), QAbstractItemModelTester::FailureReportingMode::QtTest, list.get());
        list->setSettings(m_fixture->settings.get());
        list->setQueue(m_fixture->queue);
        if (load)
            list->viewDidLoad();
        return list;
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
        auto list = makeList();
        QCOMPARE(list->keys(), (QStringList{"", "A", "B", "C", "E", "M", "O"}));
        // Lower-case "a..." infinitives and the upper-case "Bere" each land under their capital.
        QCOMPARE(test::italianColumn(*list),
                 (QStringList{"", "alzarsi", "amare", "andare", "Bere", "cantare", "essere", "mangiare", "öffnare"}));
        QCOMPARE(sectionsOf(*list), (QStringList{"", "A", "A", "A", "B", "C", "E", "M", "O"}));
        QCOMPARE(list->numberOfRowsInSection(1), 3);
        QCOMPARE(list->numberOfRowsInSection(7), 0);
        // The rows carry everything the list query reads, folded forms included.
        const VerbPtr andare = list->verbs().value("A").at(2);
        QCOMPARE(andare->id, qint64(1));
        QCOMPARE(andare->simplified_french, QStringLiteral("aller"));
        QVERIFY(list->verbs().value("B").at(0)->voice_available);
        QVERIFY(!andare->voice_available);
    }

    void rowsShowInfinitiveTranslationAndFavouriteMark()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (3);"));
        auto list = makeList();
        QCOMPARE(test::roleColumn(*list, "translation").at(3), QStringLiteral("to go"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "de");
        QCOMPARE(test::roleColumn(*list, "translation").at(3), QStringLiteral("gehen"));
        const QStringList favourites = test::roleColumn(*list, "isFavourite");
        QCOMPARE(favourites.count("true"), 1);
        QCOMPARE(favourites.indexOf("true"), test::italianColumn(*list).indexOf("mangiare"));
        QCOMPARE(list->data(list->index(3), Qt::AccessibleTextRole).toString(), QStringLiteral("andare"));
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
        QCOMPARE(list->verbs().value("C").size(), 2);
    }

    void sortColumnFollowsTheSettings_data()
    {
        QTest::addColumn<QVariant>("sortByLang");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("preferred");
        QTest::addColumn<QString>("column");
        QTest::newRow("absent") << QVariant() << "de" << "en" << "simplified_italian";
        QTest::newRow("not a bool") << QVariant(QStringLiteral("no")) << "de" << "en" << "simplified_italian";
        QTest::newRow("de") << QVariant(false) << "de" << "en" << "simplified_german";
        QTest::newRow("es") << QVariant(false) << "es" << "en" << "simplified_spanish";
        QTest::newRow("nl") << QVariant(false) << "nl" << "en" << "simplified_dutch";
        QTest::newRow("pt") << QVariant(false) << "pt" << "en" << "portuguese";
        QTest::newRow("it") << QVariant(false) << "it" << "en" << "simplified_italian";
        QTest::newRow("fr") << QVariant(false) << "fr" << "en" << "simplified_french";
        QTest::newRow("tr") << QVariant(false) << "tr" << "de" << "english";
        QTest::newRow("automatic pt-BR") << QVariant(false) << "" << "pt-BR" << "portuguese";
        QTest::newRow("automatic tr") << QVariant(false) << "" << "tr-TR" << "english";
    }

    void sortColumnFollowsTheSettings()
    {
        QFETCH(QVariant, sortByLang);
        QFETCH(QString, language);
        QFETCH(QString, preferred);
        QFETCH(QString, column);
        Settings &settings = *m_fixture->settings;
        if (sortByLang.isValid())
            settings.setObject(SettingsKeys::SortByLang, sortByLang);
        if (!language.isEmpty())
            settings.setString(SettingsKeys::TranslationLanguage, language);
        QCOMPARE(VerbListTableViewController::sortColumn(settings, {preferred}), column);
    }

    void sectionIndexLookup()
    {
        auto list = makeList();
        QCOMPARE(list->sectionForSectionIndexTitle("O"), 6);
        QCOMPARE(list->sectionForSectionIndexTitle("a"), -1);
        QCOMPARE(list->firstRowForSectionIndexTitle("C"), 5);
        QCOMPARE(list->firstRowForSectionIndexTitle(""), 0);
        QCOMPARE(list->firstRowForSectionIndexTitle("Z"), -1);
    }

    void keysAreInScalarOrder()
    {
        // U+FF21 (fullwidth A) sorts before U+1D400 (mathematical bold A) only by UTF-16 units.
        QStringList keys{QString::fromUcs4(U"\U0001D400"), QStringLiteral("\uFF21"), "B", ""};
        VerbListTableViewController::sortKeys(keys);
        QCOMPARE(keys, (QStringList{"", "B", QStringLiteral("\uFF21"), QString::fromUcs4(U"\U0001D400")}));
    }

    void favouriteToggleReloadsTheOtherListsNotThisOne()
    {
        auto list = makeList();
        auto otherList = makeList();
        FavouritesTableViewController favourites;
        favourites.setSettings(m_fixture->settings.get());
        favourites.setQueue(m_fixture->queue);
        favourites.viewDidLoad();
        HistoryTableViewController history;
        history.setQueue(m_fixture->queue);
        history.viewDidLoad();
        QSignalSpy listResets(list.get(), &QAbstractItemModel::modelReset);
        QSignalSpy otherListResets(otherList.get(), &QAbstractItemModel::modelReset);
        QSignalSpy listChanges(list.get(), &QAbstractItemModel::dataChanged);
        QSignalSpy favouriteResets(&favourites, &QAbstractItemModel::modelReset);
        QSignalSpy historyResets(&history, &QAbstractItemModel::modelReset);
        test::FavouriteNotifications notifications;

        const int row = test::italianColumn(*list).indexOf("andare");
        SwipeAction *action = list->trailingSwipeAction(row);
        QVERIFY(action);
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite"));
        QVERIFY(!action->destructive());
        QVERIFY(action->trigger());
        QVERIFY(!action->trigger());
        delete action;

        QCOMPARE(listResets.count(), 0);
        QCOMPARE(otherListResets.count(), 0);
        QCOMPARE(listChanges.count(), 1);
        QCOMPARE(listChanges.first().at(0).toModelIndex().row(), row);
        QCOMPARE(list->data(list->index(row), VerbTableModel::IsFavouriteRole).toBool(), true);
        QCOMPARE(favouriteResets.count(), 1);
        QCOMPARE(historyResets.count(), 1);
        QCOMPARE(test::italianColumn(favourites), QStringList{"andare"});
        QCOMPARE(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite"), QStringList{"1"});
        QCOMPARE(notifications.posted.size(), 1);
        QCOMPARE(notifications.posted.first().sender(), list.get());
        QCOMPARE(notifications.posted.first().userInfo.value("verb").value<VerbPtr>(), list->verbAtRow(row));

        // Again, now as a favourite: the red "remove" action, and the row leaves the table.
        action = list->trailingSwipeAction(row);
        QCOMPARE(action->titleKey(), QStringLiteral("action.favourite.remove"));
        QCOMPARE(action->backgroundColor(), SwipeAction::destructiveColor());
        QVERIFY(action->trigger());
        delete action;
        QVERIFY(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite").isEmpty());
        QVERIFY(!list->verbAtRow(row)->isFavourite);
        QCOMPARE(listResets.count(), 0);
        QCOMPARE(favourites.rowCount(), 0);
        QVERIFY(favourites.showsEmptyState());
    }

    void favouriteChangesElsewhereReloadTheList()
    {
        auto list = makeList();
        QSignalSpy resets(list.get(), &QAbstractItemModel::modelReset);
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (2);"));
        QObject conjugationScreen;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &conjugationScreen, {});
        QCOMPARE(resets.count(), 1);
        QVERIFY(list->verbs().value("E").at(0)->isFavourite);
    }

    void failedReloadKeepsTheOldTitlesOverNoRows()
    {
        auto list = makeList();
        const QStringList keys = list->keys();
        QVERIFY(m_fixture->breakSchema("DROP TABLE favourite;"));
        list->reload();
        QCOMPARE(list->keys(), keys);
        QCOMPARE(list->rowCount(), 0);
        QCOMPARE(list->numberOfRowsInSection(1), 0);
        QVERIFY(m_fixture->log().contains(
                QStringLiteral("An error occurred when reading list of verbs: no such table: favourite (1)")));
    }

    void failedFavouriteWriteKeepsTheNewFlag()
    {
        auto list = makeList();
        QVERIFY(test::runSql(m_fixture->databasePath, "DROP TABLE favourite; CREATE TABLE favourite(_id INTEGER PRIMARY KEY, verbid INTEGER CHECK (verbid < 0));"));
        test::FavouriteNotifications notifications;
        std::unique_ptr<SwipeAction> action(list->trailingSwipeAction(1));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Unable to update favourite .*CHECK constraint failed"));
        QVERIFY(action->trigger());
        QVERIFY(list->verbAtRow(1)->isFavourite);
        QCOMPARE(notifications.posted.size(), 1);
    }

    void withoutQueueNothingIsReadAndOldRowsStay()
    {
        auto list = makeList();
        const int rows = list->rowCount();
        QSignalSpy resets(list.get(), &QAbstractItemModel::modelReset);
        list->setQueue(nullptr);
        list->reload();
        QCOMPARE(resets.count(), 0);
        QCOMPARE(list->rowCount(), rows);
        QVERIFY(list->verbs().isEmpty());
        // The rows still on screen no longer have data behind them: no swipe action.
        QVERIFY(list->trailingSwipeAction(0) == nullptr);

        auto fresh = makeList(false);
        fresh->setQueue(nullptr);
        fresh->viewDidLoad();
        QCOMPARE(fresh->rowCount(), 0);
        QVERIFY(fresh->keys().isEmpty());
    }

    void appearingLogsTheScreenAndARowOpensItsVerb()
    {
        auto list = makeList();
        QSignalSpy events(list.get(), &InterstitialTableViewController::analyticsEvent);
        list->viewDidAppear();
        QVERIFY(list->isVisible());
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.first().first().toString(), QStringLiteral("verb_list"));
        list->viewDidDisappear();
        QVERIFY(!list->isVisible());

        QSignalSpy details(list.get(), &VerbTableModel::showDetail);
        list->selectRow(3);
        list->selectRow(99);
        QCOMPARE(details.count(), 1);
        QCOMPARE(details.first().first().value<VerbPtr>()->italian, QStringLiteral("andare"));
    }

    void realMasterDatabaseLoads()
    {
        const QString master = qEnvironmentVariable("NORVELLA_MASTER_DB");
        if (master.isEmpty() || !QFile::exists(master))
            QSKIP("NORVELLA_MASTER_DB not set");
        QVERIFY(QFile::copy(master, m_fixture->dir.filePath("master.db")));
        m_fixture->queue = std::make_shared<DatabaseQueue>(m_fixture->dir.filePath("master.db"));
        auto list = makeList();
        QVERIFY(list->rowCount() > 1000);
        QVERIFY(list->keys().contains("A"));
        for (const QString &key : list->keys())
            QCOMPARE(key, key.toUpper());
    }
};

QTEST_GUILESS_MAIN(VerbListTest)
#include "tst_verblist.moc"
