// The Practice screen's controller over a small database: a day's session
// typed through, graded, repeated and stored; the Recognise options.
#include "DatabaseQueue.h"
#include "PracticeController.h"
#include "PracticeOptions.h"
#include "PracticeProgressController.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "Verb.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {
constexpr qint64 Today = 2461000;
// Noon of Today in local time, the zone the controller counts days in.
qint64 noon(qint64 day)
{
    return QDateTime(QDate::fromJulianDay(day), QTime(12, 0)).toSecsSinceEpoch();
}
const QString Extra = QStringLiteral(
        "UPDATE conjugation SET irregular = 1 WHERE verbid = 1 AND conj_order IN (10, 11, 12, 15);"
        "INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order) VALUES "
        "(1, 4, 'andiamo', 14, 50), (1, 4, 'andiamo', 15, 60), (1, 4, 'andassimo', 17, 61),"
        "(1, 4, 'andremo', 10, 62), (1, 3, 'andava', 8, 32), (1, 5, 'andavate', 8, 34);"
        "INSERT INTO favourite(verbid) VALUES (1);");
} // namespace

class PracticeControllerTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(test::createFixtureDatabase(path(), Extra));
        m_settings = std::make_unique<Settings>(m_dir->filePath(QStringLiteral("settings.json")));
        PreferredLanguages::setOverride({QStringLiteral("en")});
        Strings::shared().selectLanguage({QStringLiteral("en")});
        SessionOptions options;
        options.newPerDay = 3;
        PracticeOptions::write(*m_settings, options);
    }
    void cleanup() { PreferredLanguages::clearOverride(); }

    void aDayOfProduce()
    {
        PracticeController controller;
        controller.setSettings(m_settings.get());
        controller.setToday(Today);
        controller.setNow(noon(Today));
        controller.setQueue(std::make_shared<DatabaseQueue>(path()));
        QSignalSpy progress(&controller, &PracticeController::progressChanged);
        controller.start();
        QVERIFY(controller.hasCard());
        QVERIFY(controller.isNewCard());
        QCOMPARE(controller.infinitive(), QStringLiteral("andare"));
        QCOMPARE(controller.translation(), QStringLiteral("to go"));
        QCOMPARE(controller.moodTitle() + " " + controller.tenseTitle(), QStringLiteral("Indicative Present"));
        QCOMPARE(controller.pronoun(), QStringLiteral("io"));
        QCOMPARE(controller.remaining(), 3);

        controller.rate(4); // nothing to grade before an answer
        QCOMPARE(controller.remaining(), 3);
        controller.submit(QStringLiteral("Vado"));
        QCOMPARE(controller.verdict(), int(PracticeController::Right));
        QCOMPARE(controller.answerText(), QStringLiteral("<b><u>vado</u></b>"));
        QCOMPARE(controller.suggestedRating(), 4);
        controller.rate(4);
        QCOMPARE(controller.pronoun(), QStringLiteral("tu"));
        controller.submit(QStringLiteral("vaii"));
        QCOMPARE(controller.verdict(), int(PracticeController::Wrong));
        controller.rate(1);
        // Below 4 the card comes back at the end of the session.
        QCOMPARE(controller.remaining(), 2);
        QCOMPARE(controller.pronoun(), QStringLiteral("lui/lei"));
        controller.submit(QStringLiteral("va"));
        controller.rate(5);
        QCOMPARE(controller.pronoun(), QStringLiteral("tu"));
        QVERIFY(!controller.isNewCard());
        controller.submit(QStringLiteral("vai"));
        controller.rate(4);
        QVERIFY(!controller.hasCard());
        QCOMPARE(progress.count(), 4);
        QCOMPARE(controller.message(), Strings::text(QStringLiteral("practice.session.done")));

        // The repeat did not reschedule: "tu" keeps the schedule of its miss.
        PracticeStore *store = controller.store();
        const PracticeCard tu = *store->card(1, 6, 2);
        QCOMPARE(tu.repetitions, 0);
        QCOMPARE(tu.interval, 1);
        QCOMPARE(tu.lapses, 1);
        QCOMPARE(tu.due, Today + 1);
        QCOMPARE(store->card(1, 6, 1)->due, Today + 1);
        QCOMPARE(store->reviews().size(), 4);

        // The day's three new cards are spent; tomorrow all three are due.
        controller.start();
        QVERIFY(!controller.hasCard());
        QCOMPARE(controller.message(), Strings::text(QStringLiteral("practice.session.empty")));
        controller.setToday(Today + 1);
        controller.setNow(noon(Today + 1));
        controller.start();
        QCOMPARE(controller.remaining(), 6);
        QVERIFY(!controller.isNewCard());

        PracticeProgressController progressPage;
        progressPage.setSettings(m_settings.get());
        progressPage.setToday(Today + 1);
        // The page reads the store the drill wrote, as on the Practice screen.
        progressPage.setPracticeData(controller.practiceData());
        QCOMPARE(progressPage.dueToday(), 3);
        QCOMPARE(progressPage.cardCount(), 3);
        QCOMPARE(progressPage.costlyVerbs().size(), 1);
        QCOMPARE(progressPage.accuracy().size(), 1);
        QVERIFY(progressPage.resetProgress());
        QCOMPARE(progressPage.cardCount(), 0);
        QCOMPARE(test::querySingleColumn(path(), "SELECT count(*) FROM favourite"), QStringList{"1"});
    }

    // "andiamo" is also the imperative and the present subjunctive: neither
    // may be offered as a wrong answer.
    void recogniseOptionsAreNeverSecretlyRight()
    {
        SessionOptions options;
        options.persons = {4};
        PracticeOptions::write(*m_settings, options);
        PracticeController controller;
        controller.setSettings(m_settings.get());
        controller.setToday(Today);
        controller.setQueue(std::make_shared<DatabaseQueue>(path()));
        controller.setMode(PracticeController::Recognise);
        controller.start();
        QCOMPARE(controller.shownForm(), QStringLiteral("andiamo"));
        const QVariantList shown = controller.options();
        QCOMPARE(shown.size(), 4);
        int right = -1;
        for (int i = 0; i < shown.size(); ++i) {
            const QVariantMap option = shown.at(i).toMap();
            const QString label = option.value(QStringLiteral("label")).toString();
            if (option.value(QStringLiteral("right")).toBool()) {
                QVERIFY(right < 0);
                right = i;
                QCOMPARE(label, QStringLiteral("andare · Indicative Present · noi"));
            } else {
                QVERIFY2(!label.contains(QStringLiteral("Imperative")) && !label.contains(QStringLiteral("Subjunctive Present")),
                         qPrintable(label));
            }
        }
        QVERIFY(right >= 0);
        controller.choose((right + 1) % 4);
        QCOMPARE(controller.verdict(), int(PracticeController::Wrong));
        controller.choose(right); // the first choice counts
        QCOMPARE(controller.verdict(), int(PracticeController::Wrong));
        QCOMPARE(controller.chosenOption(), (right + 1) % 4);
    }

    // A learner who never chose a deck practises their favourites, or the
    // most common verbs while they keep none, so a first visit has cards;
    // changing another choice does not pin the deck.
    void anUnchosenDeckFollowsTheFavourites()
    {
        QVERIFY(test::runSql(path(), QStringLiteral("DELETE FROM favourite; UPDATE verb SET frequency_rank = 1 WHERE _id = 3;")));
        Settings fresh(m_dir->filePath(QStringLiteral("fresh.json")));
        PracticeController controller;
        controller.setSettings(&fresh);
        controller.setToday(Today);
        controller.setQueue(std::make_shared<DatabaseQueue>(path()));
        PracticeProgressController page;
        page.setSettings(&fresh);
        page.setPracticeData(controller.practiceData());
        QCOMPARE(page.deck(), int(PracticeDeck::Top100));
        controller.start();
        QVERIFY(controller.hasCard());
        QCOMPARE(controller.infinitive(), QStringLiteral("mangiare"));

        page.setNewPerDay(5);
        QVERIFY(!fresh.contains(PracticeOptions::Deck));
        QVERIFY(test::runSql(path(), QStringLiteral("INSERT INTO favourite(verbid) VALUES (1);")));
        QCOMPARE(page.deck(), int(PracticeDeck::Favourites));
        controller.start();
        QCOMPARE(controller.infinitive(), QStringLiteral("andare"));

        // Once chosen, the deck stays whatever the favourites do.
        page.setDeck(int(PracticeDeck::Top100));
        controller.start();
        QCOMPARE(controller.infinitive(), QStringLiteral("mangiare"));
    }

private:
    QString path() const { return m_dir->filePath(QStringLiteral("verbs.db")); }
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
};

QTEST_GUILESS_MAIN(PracticeControllerTest)
#include "tst_practicecontroller.moc"
