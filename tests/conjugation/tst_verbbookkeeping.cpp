// What showing a verb writes: the view counter and review request, the
// history row and its trimming, "VerbViewed", and the favourite mark.
#include "ConjugationServices.h"
#include "ConjugationTestFixture.h"
#include "NotificationCenter.h"
#include "VerbViewBookkeeping.h"

using namespace norvella;
using norvella::test::ConjugationFixture;

class VerbBookkeepingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    int m_reviewRequests = 0;
    QList<Notification> m_viewed;
    QList<Notification> m_toggled;
    std::unique_ptr<ObserverSet> m_observers;

    VerbDetailTableViewController &show(const VerbPtr &verb, const QStringList &arguments = {})
    {
        return m_fixture->show(verb, arguments);
    }
    int historyCount(const QString &where = QStringLiteral("1")) const
    {
        return m_fixture->column(QStringLiteral("SELECT verbid FROM history WHERE ") + where).size();
    }
    QStringList favourites() const { return m_fixture->column(QStringLiteral("SELECT verbid FROM favourite")); }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        m_reviewRequests = 0;
        m_viewed.clear();
        m_toggled.clear();
        ConjugationServices::setReviewHandler([this] { ++m_reviewRequests; });
        m_observers = std::make_unique<ObserverSet>();
        m_observers->add(Notifications::VerbViewed, [this](const Notification &n) { m_viewed.append(n); });
        m_observers->add(Notifications::VerbFavouriteToggled, [this](const Notification &n) { m_toggled.append(n); });
    }

    void cleanup()
    {
        m_fixture.reset();
        m_observers.reset();
        ConjugationServices::setReviewHandler({});
    }

    void showingRecordsOneHistoryRowPerVerbAndPostsVerbViewed()
    {
        const double before = VerbViewBookkeeping::referenceTimestamp();
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        const QString timestamp = QStringLiteral("SELECT timestamp FROM history WHERE verbid = 1");
        const double first = m_fixture->column(timestamp).value(0).toDouble();
        QVERIFY(first >= before - 1 && first <= VerbViewBookkeeping::referenceTimestamp() + 1);
        // Seconds since 2001, not since 1970.
        QVERIFY(first < double(QDateTime::currentSecsSinceEpoch()) - 978307000.0);
        QCOMPARE(m_viewed.size(), 1);
        QVERIFY(!m_viewed.first().object.isValid());
        QCOMPARE(m_viewed.first().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);

        QTest::qSleep(20); // two showings must get distinct timestamps
        show(ConjugationFixture::andare());
        const QStringList rows = m_fixture->column(timestamp);
        QCOMPARE(rows.size(), 1);
        QVERIFY(rows.first().toDouble() > first);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(historyCount(), 2);
    }

    // Showing andare under various conditions, and what it leaves behind.
    void whatAShowingWrites_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("setUp"); // "loaded", "no queue", or SQL to run first
        QTest::addColumn<QVariant>("useHistory");
        QTest::addColumn<int>("forms");
        QTest::addColumn<int>("history");
        QTest::addColumn<int>("viewed");
        QTest::addColumn<int>("counted");
        QTest::addColumn<QString>("logged");
        const QStringList none;
        QTest::newRow("plain") << none << "" << QVariant() << 6 << 1 << 1 << 1 << "";
        QTest::newRow("history off") << none << "" << QVariant(false) << 6 << 0 << 1 << 1 << "";
        QTest::newRow("history set to a string stays on") << none << "" << QVariant("false") << 6 << 1 << 1 << 1 << "";
        QTest::newRow("ui test run") << QStringList{"norvella", "ui_test"} << "" << QVariant() << 6 << 1 << 1 << 0 << "";
        QTest::newRow("--ui_test counts") << QStringList{"norvella", "--ui_test"} << "" << QVariant() << 6 << 1 << 1 << 1
                                          << "";
        QTest::newRow("already loaded") << none << "loaded" << QVariant() << 0 << 0 << 0 << 0 << "";
        QTest::newRow("no queue") << none << "no queue" << QVariant() << 0 << 0 << 1 << 1 << "";
        QTest::newRow("history fails") << none << "DROP TABLE history" << QVariant() << 6 << 0 << 1 << 1
                                       << "An error occurred when reading verb conjugation: no such table: history (1)";
        // The turn stops before the history; the lists keep what they held.
        QTest::newRow("read fails") << none << "DROP TABLE conjugation" << QVariant() << 0 << 0 << 1 << 1
                                    << "An error occurred when reading verb conjugation: ";
    }

    void whatAShowingWrites()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, setUp);
        QFETCH(QVariant, useHistory);
        QFETCH(int, forms);
        QFETCH(int, history);
        QFETCH(int, viewed);
        QFETCH(int, counted);
        QFETCH(QString, logged);
        const VerbPtr verb = ConjugationFixture::andare();
        verb->gerundio = {Conjugation{{}, QStringLiteral("andando"), QStringLiteral("3"), 0, {}}};
        if (setUp == QLatin1String("loaded"))
            verb->loaded = true;
        else if (setUp == QLatin1String("no queue"))
            m_fixture->queue.reset();
        else if (!setUp.isEmpty())
            QVERIFY(m_fixture->run(setUp));
        if (useHistory.isValid())
            m_fixture->settings->setObject(SettingsKeys::UseHistory, useHistory);
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 5);

        auto &screen = show(verb, arguments);
        QCOMPARE(verb->indicativoPresente.size(), forms);
        QCOMPARE(verb->gerundio.size(), 1);
        QCOMPARE(screen.numberOfSections(), 9);
        QCOMPARE(historyCount(QStringLiteral("verbid = 1")), history);
        QCOMPARE(m_viewed.size(), viewed);
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 5 + counted);
        QCOMPARE(m_fixture->log().contains(logged.isEmpty() ? QStringLiteral("An error occurred") : logged),
                 !logged.isEmpty());
    }

    void historyKeepsTheNewestFiftyRows_data()
    {
        QTest::addColumn<QList<double>>("timestamps");
        QTest::addColumn<bool>("useHistory");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("gone"); // rows that must be trimmed
        QList<double> fifty;
        for (int i = 1; i <= 50; ++i)
            fifty << i;
        QTest::newRow("fifty and the new one stay") << fifty << true << 51 << QString();
        QTest::newRow("the oldest of fifty-two goes") << (fifty + QList<double>{51}) << true << 51 << "verbid = 100";
        // The two oldest share a timestamp; the 52nd row is one of them.
        QTest::newRow("rows tied with the last go too") << (QList<double>{1} + fifty) << true << 50 << "timestamp <= 1";
        QTest::newRow("switched off, nothing is trimmed") << (fifty + fifty) << false << 100 << QString();
    }

    void historyKeepsTheNewestFiftyRows()
    {
        QFETCH(QList<double>, timestamps);
        QFETCH(bool, useHistory);
        QFETCH(int, rows);
        QFETCH(QString, gone);
        QStringList values;
        for (int i = 0; i < timestamps.size(); ++i)
            values << QStringLiteral("(%1, %2)").arg(100 + i).arg(timestamps[i], 0, 'f', 3);
        QVERIFY(m_fixture->run(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES ") + values.join(u',')));
        m_fixture->settings->setBool(SettingsKeys::UseHistory, useHistory);
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), rows);
        QCOMPARE(historyCount(QStringLiteral("verbid = 1")), useHistory ? 1 : 0);
        if (!gone.isEmpty())
            QCOMPARE(historyCount(gone), 0);
    }

    void theTwentyFirstVerbAsksForAReviewOnce()
    {
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 19);
        show(ConjugationFixture::andare());
        QCOMPARE(m_reviewRequests, 0);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(m_reviewRequests, 1);
        show(ConjugationFixture::andare());
        QCOMPARE(m_reviewRequests, 1);
        // The counter and the flag survive a restart.
        Settings restarted(m_fixture->settings->filePath());
        QCOMPARE(Preferences::numberOfVerbsViewed(restarted), 22);
        QVERIFY(Preferences::askedForReview(restarted));

        // An installation already past 21 without having asked asks at its next showing.
        m_fixture->settings->removeObject(SettingsKeys::AskedForReview);
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 40);
        show(ConjugationFixture::provare());
        QCOMPARE(m_reviewRequests, 2);
    }

    void theScreenBeingShownIsReported()
    {
        auto &events = m_fixture->events;
        show(ConjugationFixture::alzarsi());
        events.clear();
        m_fixture->screen->viewDidAppear();
        QCOMPARE(events.size(), 1);
        QCOMPARE(events.first().first, QStringLiteral("select_content"));
        QCOMPARE(events.first().second,
                 (QVariantMap{{"item_id", QStringLiteral("5")}, {"item_name", QStringLiteral("alzarsi")}}));
        show(nullptr).viewDidAppear();
        QCOMPARE(events.size(), 1);
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
        QCOMPARE(favourites(), QStringList{QStringLiteral("1")});
        QCOMPARE(m_toggled.size(), 1);
        QCOMPARE(m_toggled.first().sender(), &screen);
        QCOMPARE(m_toggled.first().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);
        // Its own notification does not come back into the screen.
        QCOMPARE(changed.count(), 1);

        screen.toggleFavourite();
        QVERIFY(!verb->isFavourite);
        QVERIFY(favourites().isEmpty());
        QCOMPARE(m_toggled.size(), 2);
        QCOMPARE(changed.count(), 2);
    }

    void aFavouriteThatCannotBeWrittenStillFlips()
    {
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE favourite")));
        auto &screen = show(ConjugationFixture::andare());
        screen.toggleFavourite();
        QVERIFY(screen.isFavourite());
        QVERIFY(m_fixture->log().contains(QStringLiteral("Unable to update favourite no such table: favourite")));
        QCOMPARE(m_toggled.size(), 1);
        // Nor without a database at all.
        m_fixture->queue.reset();
        auto &again = show(ConjugationFixture::alzarsi());
        again.toggleFavourite();
        QVERIFY(again.isFavourite());
        QCOMPARE(m_toggled.size(), 2);
    }

    void favouriteToggledElsewhere()
    {
        const VerbPtr shown = ConjugationFixture::andare();
        auto &screen = show(shown);
        QSignalSpy changed(&screen, &VerbDetailTableViewController::favouriteChanged);
        QObject otherScreen;
        auto post = [&](const QVariant &verb) {
            NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                     verb.isValid() ? QVariantMap{{"verb", verb}} : QVariantMap());
        };

        // Another record of the same verb, as a list holds it.
        const VerbPtr elsewhere = ConjugationFixture::andare();
        elsewhere->isFavourite = true;
        post(QVariant::fromValue(elsewhere));
        QVERIFY(shown->isFavourite);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite-filled.svg")));
        QVERIFY(favourites().isEmpty());

        // Other verbs, and notifications without a verb, change nothing.
        post(QVariant::fromValue(ConjugationFixture::alzarsi()));
        post(QStringLiteral("andare"));
        post({});
        QVERIFY(shown->isFavourite);
        QCOMPARE(changed.count(), 1);

        elsewhere->isFavourite = false;
        post(QVariant::fromValue(elsewhere));
        QVERIFY(!shown->isFavourite);
        QCOMPARE(changed.count(), 2);
    }

    void aClosedScreenStopsListening()
    {
        show(ConjugationFixture::andare());
        auto &center = NotificationCenter::defaultCenter();
        const int observers = center.observerCount(Notifications::VerbFavouriteToggled);
        m_fixture->screen.reset();
        QCOMPARE(center.observerCount(Notifications::VerbFavouriteToggled), observers - 1);
        QCOMPARE(center.observerCount(Notifications::RefreshConjugations), 0);
    }
};

QTEST_MAIN(VerbBookkeepingTest)
#include "tst_verbbookkeeping.moc"
