#include "IrregularVerbListController.h"
#include "ListTestSupport.h"
#include "SwipeAction.h"
#include "TestSupport.h"
#include "VerbListTableViewController.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace norvella;

namespace {
// Five irregular verbs: two ranked out of order by id, one ranked far down,
// two unranked whose initials differ in case; mangiare stays regular.
const char *patterns = "UPDATE verb SET pattern = 'are';"
                       "UPDATE verb SET pattern = 'irregular' WHERE _id IN (1, 2, 5, 6, 8);"
                       "UPDATE verb SET frequency_rank = 6 WHERE _id = 1;"
                       "UPDATE verb SET frequency_rank = 1 WHERE _id = 2;"
                       "UPDATE verb SET frequency_rank = 40 WHERE _id = 5;"
                       "UPDATE verb SET frequency_rank = 2 WHERE _id = 3;";
} // namespace

class IrregularListTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;

    std::unique_ptr<VerbListTableViewController> makeList()
    {
        auto list = std::make_unique<VerbListTableViewController>();
        new QAbstractItemModelTester(list->irregularVerbs(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     list.get());
        list->setSettings(m_fixture->settings.get());
        list->setQueue(m_fixture->queue);
        list->viewDidLoad();
        return list;
    }

    int rowOf(const QAbstractItemModel &model, const QString &italian)
    {
        return int(test::italianColumn(model).indexOf(italian));
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create(QString::fromUtf8(patterns)));
    }

    void cleanup() { PreferredLanguages::clearOverride(); }

    void mostFrequentFirstThenAlphabeticallyInTheTranslationLanguage()
    {
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "de");
        auto list = makeList();
        IrregularVerbListController &irregular = *list->irregularVerbs();
        QVERIFY(irregular.isAvailable());
        // Nothing is read until the filter is first chosen.
        QCOMPARE(irregular.rowCount(), 0);
        QSignalSpy shown(list.get(), &VerbListTableViewController::showsIrregularChanged);
        list->setShowsIrregular(true);
        QCOMPARE(shown.count(), 1);
        QCOMPARE(test::italianColumn(irregular), (QStringList{"essere", "andare", "alzarsi", "amare", "Bere"}));
        QCOMPARE(test::roleColumn(irregular, "translation").mid(0, 2), (QStringList{"sein", "gehen"}));

        // A new translation language reaches the filtered list with the alphabetical one.
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "fr");
        list->reload();
        QCOMPARE(test::roleColumn(irregular, "translation").mid(0, 2), (QStringList{"être", "aller"}));
    }

    void rowsOpenAndStarLikeTheAlphabeticalList()
    {
        auto list = makeList();
        list->setShowsIrregular(true);
        IrregularVerbListController &irregular = *list->irregularVerbs();

        QSignalSpy opened(list.get(), &VerbTableModel::showDetail);
        irregular.selectRow(rowOf(irregular, "andare"));
        QCOMPARE(opened.count(), 1);
        QCOMPARE(opened.at(0).at(0).value<VerbPtr>()->italian, QStringLiteral("andare"));

        // Starred in the alphabetical list: the filtered one shows it too.
        const int alphabetical = rowOf(*list, "essere");
        QVERIFY(alphabetical >= 0);
        QVERIFY(std::unique_ptr<SwipeAction>(list->trailingSwipeAction(alphabetical))->trigger());
        const QModelIndex essere = irregular.index(rowOf(irregular, "essere"));
        QVERIFY(irregular.data(essere, VerbTableModel::IsFavouriteRole).toBool());

        // And the other way round.
        QVERIFY(std::unique_ptr<SwipeAction>(irregular.trailingSwipeAction(rowOf(irregular, "andare")))->trigger());
        QCOMPARE(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite ORDER BY verbid"),
                 (QStringList{"1", "2"}));
        QVERIFY(list->data(list->index(rowOf(*list, "andare")), VerbTableModel::IsFavouriteRole).toBool());
    }

    void aCopyFromBeforePatternsOffersNoFilterAndKeepsTheUsersData()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, QStringLiteral("INSERT INTO favourite(verbid) VALUES (3);")
                                                               + test::withoutPatternColumnsSql()));
        auto list = makeList();
        QVERIFY(!list->irregularVerbs()->isAvailable());
        QVERIFY(list->rowCount() > 0);
        list->setShowsIrregular(true);
        QCOMPARE(list->irregularVerbs()->rowCount(), 0);
        QCOMPARE(m_fixture->log().count("The irregular verb list is unavailable"), 1);
        QCOMPARE(test::querySingleColumn(m_fixture->databasePath, "SELECT verbid FROM favourite"), QStringList{"3"});
    }
};

QTEST_GUILESS_MAIN(IrregularListTest)
#include "tst_irregularlist.moc"
