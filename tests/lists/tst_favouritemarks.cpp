// The favourite mark across the screens that set it (the alphabetical list's swipe, the
// favourites list's swipe, the conjugation screen's star): whatever the sequence, the
// table holds a verb at most once and every record a screen shows agrees with it.
#include "FavouritesTableViewController.h"
#include "ListTestSupport.h"
#include "TestSupport.h"
#include "VerbDetailTableViewController.h"
#include "VerbListTableViewController.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace norvella;

// A failed check inside the helper ends the test there.
#define EXPECT_IN_STEP(verb)            \
    do {                                \
        expectInStep(verb, __LINE__);   \
        if (QTest::currentTestFailed()) \
            return;                     \
    } while (false)

class FavouriteMarksTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;
    std::unique_ptr<VerbListTableViewController> m_list;
    std::unique_ptr<FavouritesTableViewController> m_favourites;
    std::unique_ptr<VerbDetailTableViewController> m_screen;

    template<typename List> std::unique_ptr<List> makeList() { return m_fixture->makeList<List>(); }

    // The conjugation screen, opened on the record a list row holds, as a tap does.
    VerbDetailTableViewController &open(const VerbPtr &verb)
    {
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_fixture->settings);
        m_screen->setQueue(m_fixture->queue);
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        return *m_screen;
    }

    int storedRows(qint64 id) const
    {
        return int(test::querySingleColumn(m_fixture->databasePath,
                                           QStringLiteral("SELECT _id FROM favourite WHERE verbid = %1").arg(id))
                           .size());
    }

    VerbPtr listed(const VerbTableModel &model, const QString &italian) const
    {
        const int row = int(test::italianColumn(model).indexOf(italian));
        return row < 0 ? nullptr : model.verbAtRow(row);
    }

    // The table holds the verb at most once; the alphabetical list shows it once and the
    // favourites list only while it is stored; every record shown has the table's flag.
    void expectInStep(const VerbPtr &verb, int line)
    {
        const QString where = QStringLiteral("%1 (line %2)").arg(verb->italian).arg(line);
        const int rows = storedRows(verb->id);
        QVERIFY2(rows <= 1, qPrintable(QStringLiteral("%1 stored %2 times").arg(where).arg(rows)));
        const bool stored = rows == 1;
        QVERIFY2(test::italianColumn(*m_list).count(verb->italian) == 1, qPrintable(where));
        QVERIFY2(listed(*m_list, verb->italian)->isFavourite == stored, qPrintable(where));
        QVERIFY2(test::italianColumn(*m_favourites).count(verb->italian) == (stored ? 1 : 0), qPrintable(where));
        for (const QString &flag : test::roleColumn(*m_favourites, "isFavourite"))
            QVERIFY2(flag == QLatin1String("true"), qPrintable(where));
        if (m_screen && m_screen->selectedVerb() && m_screen->selectedVerb()->id == verb->id)
            QVERIFY2(m_screen->isFavourite() == stored, qPrintable(where + QStringLiteral(": the star")));
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create(QStringLiteral("INSERT INTO favourite(verbid) VALUES (1);")));
        m_list = makeList<VerbListTableViewController>();
        m_favourites = makeList<FavouritesTableViewController>();
    }

    void cleanup()
    {
        m_screen.reset();
        m_favourites.reset();
        m_list.reset();
        PreferredLanguages::clearOverride();
    }

    // A favourite's swipe opened and closed again without a tap; the verb then opened from
    // that row shows a filled star, and its taps store it once or not at all.
    void aSwipeClosedWithoutATapChangesNothing()
    {
        delete m_favourites->trailingSwipeAction(0);
        const VerbPtr andare = m_favourites->verbAtRow(0);
        QCOMPARE(andare->italian, QStringLiteral("andare"));
        auto &screen = open(andare);
        screen.toggleFavourite();
        EXPECT_IN_STEP(andare);
        screen.toggleFavourite();
        EXPECT_IN_STEP(andare);
        QCOMPARE(storedRows(1), 1);
        QVERIFY(screen.isFavourite());
    }

    // Marks set and taken away in turn by each screen, with swipes left open and closed in between.
    void everyScreenKeepsTheMarkInStep()
    {
        const VerbPtr fromList = listed(*m_list, QStringLiteral("mangiare"));
        std::unique_ptr<SwipeAction>(m_list->trailingSwipeAction(m_list->rowOfVerb(fromList.get())))->trigger();
        EXPECT_IN_STEP(fromList);

        auto &screen = open(fromList);
        screen.toggleFavourite();
        EXPECT_IN_STEP(fromList);
        screen.toggleFavourite();
        EXPECT_IN_STEP(fromList);

        // Built twice for the same row (a swipe closed, then opened again) and then taken.
        delete m_favourites->trailingSwipeAction(m_favourites->rowOfVerb(listed(*m_favourites, "mangiare").get()));
        std::unique_ptr<SwipeAction> removal(
                m_favourites->trailingSwipeAction(m_favourites->rowOfVerb(listed(*m_favourites, "mangiare").get())));
        QVERIFY(removal->trigger());
        EXPECT_IN_STEP(fromList);
        QVERIFY(!removal->verb()->isFavourite);

        // The list's own row, reloaded since, marks it again; the screen follows.
        const VerbPtr again = listed(*m_list, QStringLiteral("mangiare"));
        std::unique_ptr<SwipeAction>(m_list->trailingSwipeAction(m_list->rowOfVerb(again.get())))->trigger();
        EXPECT_IN_STEP(again);
        QVERIFY(screen.isFavourite());

        // The other favourite's swipe left open while the first is removed: it stays listed and marked.
        const VerbPtr andare = listed(*m_favourites, QStringLiteral("andare"));
        delete m_favourites->trailingSwipeAction(m_favourites->rowOfVerb(andare.get()));
        removal.reset(
                m_favourites->trailingSwipeAction(m_favourites->rowOfVerb(listed(*m_favourites, "mangiare").get())));
        QVERIFY(removal->trigger());
        EXPECT_IN_STEP(again);
        EXPECT_IN_STEP(listed(*m_list, QStringLiteral("andare")));
        QCOMPARE(test::italianColumn(*m_favourites), QStringList{"andare"});
        QVERIFY(andare->isFavourite);
    }
};

QTEST_MAIN(FavouriteMarksTest)
#include "tst_favouritemarks.moc"
