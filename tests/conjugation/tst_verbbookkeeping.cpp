// What showing a verb writes: the view counter and review request, the
// history row and its trimming, "VerbViewed", and the favourite mark.
#include "ConjugationServices.h"
#include "ConjugationTestFixture.h"
#include "NotificationCenter.h"
#include "VerbDetailTableViewController.h"
#include "VerbViewBookkeeping.h"

using namespace norvella;
using norvella::test::ConjugationFixture;

class VerbBookkeepingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    std::unique_ptr<VerbDetailTableViewController> m_screen;
    int m_reviewRequests = 0;
    QList<QPair<QString, QVariantMap>> m_events;
    QList<Notification> m_viewed;
    QList<Notification> m_toggled;
    std::unique_ptr<ObserverSet> m_observers;

    VerbDetailTableViewController &show(const VerbPtr &verb, const QStringList &arguments = {})
    {
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_fixture->settings);
        m_screen->setLaunchArguments(arguments);
        m_screen->setQueue(m_fixture->queue);
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        return *m_screen;
    }

    // n history rows for verbs 100, 101, ... with the given timestamps.
    bool addHistory(const QList<double> &timestamps)
    {
        QStringList values;
        for (int i = 0; i < timestamps.size(); ++i)
            values << QStringLiteral("(%1, %2)").arg(100 + i).arg(timestamps[i], 0, 'f', 3);
        return m_fixture->run(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES ") + values.join(u','));
    }

    int historyCount() const
    {
        return m_fixture->column(QStringLiteral("SELECT count(*) FROM history")).value(0).toInt();
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        m_reviewRequests = 0;
        m_events.clear();
        m_viewed.clear();
        m_toggled.clear();
        ConjugationServices::setReviewHandler([this] { ++m_reviewRequests; });
        ConjugationServices::setEventHandler(
                [this](const QString &name, const QVariantMap &parameters) { m_events.append({name, parameters}); });
        m_observers = std::make_unique<ObserverSet>();
        m_observers->add(Notifications::VerbViewed, [this](const Notification &n) { m_viewed.append(n); });
        m_observers->add(Notifications::VerbFavouriteToggled, [this](const Notification &n) { m_toggled.append(n); });
    }

    void cleanup()
    {
        m_screen.reset();
        m_observers.reset();
        ConjugationServices::setReviewHandler({});
        ConjugationServices::setEventHandler({});
    }

    void showingRecordsOneHistoryRowPerVerb()
    {
        const double before = VerbViewBookkeeping::referenceTimestamp();
        show(ConjugationFixture::andare());
        const double first = m_fixture->column(QStringLiteral("SELECT timestamp FROM history WHERE verbid = 1"))
                                     .value(0).toDouble();
        QVERIFY(first >= before - 1 && first <= VerbViewBookkeeping::referenceTimestamp() + 1);
        // Seconds since 2001, not since 1970.
        QVERIFY(first < double(QDateTime::currentSecsSinceEpoch()) - 978307000.0);

        QTest::qSleep(20); // two showings must get distinct timestamps
        show(ConjugationFixture::andare());
        const QStringList rows = m_fixture->column(QStringLiteral("SELECT timestamp FROM history WHERE verbid = 1"));
        QCOMPARE(rows.size(), 1);
        QVERIFY(rows.first().toDouble() > first);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(historyCount(), 2);
    }

    void verbViewedIsPostedWithTheVerbAndNoSender()
    {
        const VerbPtr verb = ConjugationFixture::alzarsi();
        show(verb);
        QCOMPARE(m_viewed.size(), 1);
        QVERIFY(!m_viewed.first().object.isValid());
        QCOMPARE(m_viewed.first().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);
        // Posted after the forms are in the record.
        QCOMPARE(verb->indicativoPresente.size(), 6);
    }

    void historyIsTrimmedAtTheFiftySecondRow()
    {
        QList<double> timestamps;
        for (int i = 1; i <= 51; ++i)
            timestamps << i;
        QVERIFY(addHistory(timestamps));
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), 51);
        QVERIFY(m_fixture->column(QStringLiteral("SELECT verbid FROM history WHERE verbid = 100")).isEmpty());
        QCOMPARE(m_fixture->column(QStringLiteral("SELECT verbid FROM history WHERE verbid = 1")).size(), 1);
    }

    void fewerRowsAreNotTrimmed()
    {
        QList<double> timestamps;
        for (int i = 1; i <= 50; ++i)
            timestamps << i;
        QVERIFY(addHistory(timestamps));
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), 51);
    }

    void rowsTiedWithTheBoundaryGoToo()
    {
        // The two oldest share a timestamp; the 52nd row is one of them.
        QList<double> timestamps{1, 1};
        for (int i = 3; i <= 51; ++i)
            timestamps << i;
        QVERIFY(addHistory(timestamps));
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), 50);
        QVERIFY(m_fixture->column(QStringLiteral("SELECT verbid FROM history WHERE timestamp <= 1")).isEmpty());
    }

    void historySwitchedOffStillLoadsAndPosts()
    {
        QList<double> timestamps;
        for (int i = 1; i <= 60; ++i)
            timestamps << i;
        QVERIFY(addHistory(timestamps));
        m_fixture->settings->setBool(SettingsKeys::UseHistory, false);
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        QCOMPARE(historyCount(), 60);
        QVERIFY(m_fixture->column(QStringLiteral("SELECT verbid FROM history WHERE verbid = 1")).isEmpty());
        QCOMPARE(verb->indicativoPresente.size(), 6);
        QCOMPARE(m_viewed.size(), 1);
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 1);
    }

    void historySettingThatIsNotABooleanCountsAsOn()
    {
        m_fixture->settings->setString(SettingsKeys::UseHistory, QStringLiteral("no"));
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), 1);
    }

    void theTwentyFirstVerbAsksForAReviewOnce()
    {
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 19);
        show(ConjugationFixture::andare());
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 20);
        QCOMPARE(m_reviewRequests, 0);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 21);
        QCOMPARE(m_reviewRequests, 1);
        QVERIFY(Preferences::askedForReview(*m_fixture->settings));
        show(ConjugationFixture::andare());
        show(ConjugationFixture::provare());
        QCOMPARE(m_reviewRequests, 1);
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 23);
        // The counter and the flag survive a restart.
        Settings restarted(m_fixture->settings->filePath());
        QCOMPARE(Preferences::numberOfVerbsViewed(restarted), 23);
        QVERIFY(Preferences::askedForReview(restarted));
    }

    void aLateFirstCountStillAsks()
    {
        // An installation already past 21 without having asked asks at its next showing.
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 40);
        show(ConjugationFixture::andare());
        QCOMPARE(m_reviewRequests, 1);
    }

    void uiTestRunsSkipTheCount()
    {
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 20);
        show(ConjugationFixture::andare(), {QStringLiteral("norvella"), QStringLiteral("ui_test")});
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 20);
        QCOMPARE(m_reviewRequests, 0);
        QCOMPARE(historyCount(), 1);
        show(ConjugationFixture::andare(), {QStringLiteral("norvella"), QStringLiteral("--ui_test")});
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 21);
    }

    void aFailedHistoryStatementIsReportedAndTheScreenCarriesOn()
    {
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE history")));
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        QCOMPARE(verb->indicativoPresente.size(), 6);
        QVERIFY(m_fixture->log().contains(
                QStringLiteral("An error occurred when reading verb conjugation: no such table: history (1)")));
        QCOMPARE(m_viewed.size(), 1);
    }

    void aFailedReadLeavesTheListsAsTheyWere()
    {
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE conjugation")));
        const VerbPtr verb = ConjugationFixture::andare();
        verb->gerundio = {Conjugation{{}, QStringLiteral("andando"), QStringLiteral("3"), 0, {}}};
        auto &screen = show(verb);
        QCOMPARE(verb->gerundio.size(), 1);
        QVERIFY(verb->indicativoPresente.isEmpty());
        QVERIFY(m_fixture->log().contains(QStringLiteral("An error occurred when reading verb conjugation: ")));
        QCOMPARE(historyCount(), 0); // the turn stopped before the history
        QCOMPARE(screen.numberOfSections(), 9);
    }

    void aVerbMarkedLoadedIsLeftAlone()
    {
        const VerbPtr verb = ConjugationFixture::andare();
        verb->loaded = true;
        show(verb);
        QVERIFY(verb->indicativoPresente.isEmpty());
        QCOMPARE(historyCount(), 0);
        QCOMPARE(m_viewed.size(), 0);
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 0);
    }

    void withoutAQueueNothingIsReadButTheViewCounts()
    {
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_fixture->settings);
        m_screen->setLaunchArguments({});
        const VerbPtr verb = ConjugationFixture::andare();
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        QVERIFY(verb->indicativoPresente.isEmpty());
        QCOMPARE(m_viewed.size(), 1);
        QCOMPARE(m_screen->numberOfSections(), 9);
        m_screen->toggleFavourite(); // no database, still flips and tells the others
        QVERIFY(verb->isFavourite);
        QCOMPARE(m_toggled.size(), 1);
    }

    void theScreenBeingShownIsReported()
    {
        auto &screen = show(ConjugationFixture::alzarsi());
        m_events.clear();
        screen.viewDidAppear();
        QCOMPARE(m_events.size(), 1);
        QCOMPARE(m_events.first().first, QStringLiteral("select_content"));
        QCOMPARE(m_events.first().second, (QVariantMap{{QStringLiteral("item_id"), QStringLiteral("5")},
                                                       {QStringLiteral("item_name"), QStringLiteral("alzarsi")}}));
        show(nullptr);
        m_events.clear();
        m_screen->viewDidAppear();
        QVERIFY(m_events.isEmpty());
    }

    void favouriteToggledFromThisScreen()
    {
        const VerbPtr verb = ConjugationFixture::andare();
        auto &screen = show(verb);
        QSignalSpy changed(&screen, &VerbDetailTableViewController::favouriteChanged);
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite.svg")));

        screen.toggleFavourite();
        QVERIFY(verb->isFavourite);
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite-filled.svg")));
        QCOMPARE(screen.favouriteName(), QStringLiteral("Remove from favourites"));
        QCOMPARE(m_fixture->column(QStringLiteral("SELECT verbid FROM favourite")), QStringList{QStringLiteral("1")});
        QCOMPARE(m_toggled.size(), 1);
        QCOMPARE(m_toggled.first().sender(), &screen);
        QCOMPARE(m_toggled.first().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);
        // Its own notification does not come back into the screen.
        QCOMPARE(changed.count(), 1);

        screen.toggleFavourite();
        QVERIFY(!verb->isFavourite);
        QVERIFY(m_fixture->column(QStringLiteral("SELECT verbid FROM favourite")).isEmpty());
        QCOMPARE(m_toggled.size(), 2);
        QCOMPARE(changed.count(), 2);
    }

    void aFailedFavouriteWriteKeepsTheNewMark()
    {
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE favourite")));
        const VerbPtr verb = ConjugationFixture::andare();
        auto &screen = show(verb);
        screen.toggleFavourite();
        QVERIFY(verb->isFavourite);
        QVERIFY(screen.isFavourite());
        QVERIFY(m_fixture->log().contains(QStringLiteral("Unable to update favourite no such table: favourite")));
        QCOMPARE(m_toggled.size(), 1);
    }

    void favouriteToggledElsewhere()
    {
        const VerbPtr shown = ConjugationFixture::andare();
        auto &screen = show(shown);
        QSignalSpy changed(&screen, &VerbDetailTableViewController::favouriteChanged);
        QObject otherScreen;

        // Another record of the same verb, as a list holds it.
        const VerbPtr elsewhere = ConjugationFixture::andare();
        elsewhere->isFavourite = true;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                 {{QStringLiteral("verb"), QVariant::fromValue(elsewhere)}});
        QVERIFY(shown->isFavourite);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite-filled.svg")));
        QVERIFY(m_fixture->column(QStringLiteral("SELECT verbid FROM favourite")).isEmpty());

        // Other verbs, and notifications without a verb, change nothing.
        const VerbPtr other = ConjugationFixture::alzarsi();
        other->isFavourite = false;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                 {{QStringLiteral("verb"), QVariant::fromValue(other)}});
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                 {{QStringLiteral("verb"), QStringLiteral("andare")}});
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen, {});
        QVERIFY(shown->isFavourite);
        QCOMPARE(changed.count(), 1);

        elsewhere->isFavourite = false;
        NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                 {{QStringLiteral("verb"), QVariant::fromValue(elsewhere)}});
        QVERIFY(!shown->isFavourite);
        QCOMPARE(changed.count(), 2);
    }

    void aClosedScreenStopsListening()
    {
        show(ConjugationFixture::andare());
        const int observers = NotificationCenter::defaultCenter().observerCount(Notifications::VerbFavouriteToggled);
        m_screen.reset();
        QCOMPARE(NotificationCenter::defaultCenter().observerCount(Notifications::VerbFavouriteToggled),
                 observers - 1);
        QCOMPARE(NotificationCenter::defaultCenter().observerCount(Notifications::RefreshConjugations), 0);
    }
};

QTEST_MAIN(VerbBookkeepingTest)
#include "tst_verbbookkeeping.moc"
