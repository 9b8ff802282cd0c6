// The conjugation screen's controller: a verb's forms presented by mood, and what a
// showing writes (view counter, review request, history, "VerbViewed", favourite mark).
#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "ConjugationSectionModel.h"
#include "ConjugationTestFixture.h"
#include "NotificationCenter.h"
#include "SpeechSynthesizer.h"
#include "UserMessages.h"
#include "VerbLookup.h"
#include "VerbViewBookkeeping.h"

#include <QAbstractItemModelTester>

using namespace norvella;
using norvella::test::ConjugationFixture;
using Tester = QAbstractItemModelTester;

namespace {
QStringList forms(const ConjugationList &list)
{
    QStringList out;
    for (const Conjugation &c : list)
        out << c.verb;
    return out;
}
QVariant data(const QAbstractItemModel *model, int row, int role) { return model->index(row, 0).data(role); }

// Takes what is said and says nothing.
class MuteSynthesizer : public SpeechSynthesizer
{
public:
    bool hasVoice() override { return true; }
    bool isSpeaking() const override { return false; }
    void say(const QString &, double) override {}
    void stop() override {}
};
} // namespace

class VerbDetailControllerTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    int m_reviewRequests = 0;
    QList<Notification> m_viewed;
    QList<Notification> m_toggled;
    QStringList m_messages;
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
        m_messages.clear();
        UserMessages::setListener([this](const QString &text) { m_messages << text; });
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
        UserMessages::setListener({});
    }

    void formsGoToTheListOfTheirTypeInConjOrder()
    {
        QVERIFY(m_fixture->run(QStringLiteral("INSERT INTO favourite(verbid) VALUES (7), (7)")));
        QVERIFY(!verbByInfinitive(*m_fixture->queue, QStringLiteral("volare")));
        const VerbPtr provare = verbByInfinitive(*m_fixture->queue, QStringLiteral("provare"));
        QVERIFY(provare && provare->id == 7 && provare->isFavourite);
        show(provare);
        // Stored as provo (order 2, pronoun 1) and proviamo (order 1, pronoun 4).
        QCOMPARE(forms(provare->indicativoPresente), (QStringList{"proviamo", "provo"}));
        QCOMPARE(provare->indicativoPresente.last().pronoun, QStringLiteral("io"));
        QCOMPARE(provare->indicativoPresente.last().voiceFile, QStringLiteral("provo.mp3"));
        // A pronoun id with no pronoun row keeps the form, with no pronoun.
        QCOMPARE(provare->indicativoPassatoRemoto.first().pronoun, QString());
        int total = 0;
        for (int type = 1; type <= 20; ++type)
            total += int(provare->listForType(QString::number(type))->size());
        QCOMPARE(total, 4); // types 21 and 0 are gone
    }

    // Section 0 is the verb row; then one section, and one grid block, per tense.
    // The forms are read once: switching moods or refreshing never reads again.
    void everyMoodListsItsTenses()
    {
        const QList<QStringList> firstForms{
                {"vado", "sono andato/a", "andavo", "ero andato/a", "andai", "fui andato/a", "andrò", "sarò andato/a"},
                {"vada", "andassi", "sia andato/a", "fossi andato/a"},
                {"andrei", "sarei andato/a"},
                {"va'", "andante", "andato", "andando"}};
        const QList<QList<int>> rows{{6, 6, 6, 6, 6, 6, 6, 6}, {6, 6, 6, 6}, {6, 6}, {5, 1, 4, 1}};
        auto &screen = show(ConjugationFixture::andare());
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE conjugation")));
        for (int segment = 3; segment >= 0; --segment) {
            screen.selectVerbTypes(segment);
            const int tenses = int(firstForms[segment].size());
            QCOMPARE(screen.tableModel()->rowCount(), tenses + 1);
            QCOMPARE(screen.gridModel()->rowCount(), tenses);
            for (int section = 1; section <= tenses; ++section) {
                QCOMPARE(screen.titleForHeaderInSection(section),
                         Strings::text(ConjugationGroups::titleKey(segment, section - 1, false)));
                QCOMPARE(screen.numberOfRowsInSection(section), rows[segment][section - 1]);
                QCOMPARE(screen.listForSection(section)->first().verb, firstForms[segment][section - 1]);
            }
        }
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (to go)"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, QStringLiteral("de"));
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (gehen)"));
        // Italian as the translation language would only say the infinitive twice.
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, QStringLiteral("it"));
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, QStringLiteral("de"));
        QCOMPARE(screen.numberOfRowsInSection(9) + screen.numberOfRowsInSection(-1), 0);
        screen.selectVerbTypes(4);
        QCOMPARE(screen.tableModel()->rowCount(), 0);

        // Titles, the moods' among them, follow "show translated" on a refresh, or on the
        // notification any screen can post.
        screen.selectVerbTypes(0);
        QCOMPARE(screen.segmentTitles().first(), QStringLiteral("Indicative"));
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, true);
        QSignalSpy moodTitles(&screen, &VerbDetailTableViewController::contentChanged);
        screen.refreshConjugations();
        QVERIFY(!moodTitles.isEmpty());
        QCOMPARE(screen.segmentTitles(), (QStringList{"Indicativo", "Congiuntivo", "Condizionale", "Altre forme"}));
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Presente"));
        QCOMPARE(data(screen.gridModel(), 1, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Passato prossimo"));
        QCOMPARE(screen.numberOfRowsInSection(1), 6);
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, false);
        NotificationCenter::defaultCenter().post(Notifications::RefreshConjugations);
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Present"));
        QCOMPARE(screen.segmentTitles().last(), QStringLiteral("Other forms"));
    }

    void modelsAndChromeFollowTheVerb()
    {
        auto &screen = show(nullptr);
        Tester table(screen.tableModel(), Tester::FailureReportingMode::QtTest);
        Tester grid(screen.gridModel(), Tester::FailureReportingMode::QtTest);
        QVERIFY(screen.selectVerbVisible() && !screen.toolbarVisible() && !screen.segmentsVisible());
        screen.setSelectedVerb(ConjugationFixture::alzarsi());
        QVERIFY(!screen.selectVerbVisible() && screen.toolbarVisible() && screen.segmentsVisible());
        for (int segment : {1, 2, 3, 0, 9, 0})
            screen.selectVerbTypes(segment);
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("alzarsi (to get up)"));
        const QVariantList rows = data(screen.tableModel(), 5, ConjugationSectionModel::FormsRole).toList();
        QCOMPARE(rows.size(), 6);
        auto *first = qobject_cast<ConjugationFormItem *>(rows.first().value<QObject *>());
        QVERIFY(first);
        QCOMPARE(first->key(), QStringLiteral("12:0"));
        QCOMPARE(screen.conjugationForKey(first->key())->verb, QStringLiteral("mi alzai"));
        screen.setPeeking(true);
        QVERIFY(!screen.selectVerbVisible() && !screen.toolbarVisible() && !screen.segmentsVisible());

        // A verb without forms shows every titled section, empty.
        screen.setSelectedVerb(ConjugationFixture::zittire());
        QCOMPARE(screen.numberOfSections(), 9);
        for (int section = 1; section < 9; ++section) {
            QCOMPARE(data(screen.tableModel(), section, ConjugationSectionModel::FormCountRole).toInt(), 0);
            QVERIFY(!data(screen.tableModel(), section, ConjugationSectionModel::TitleRole).toString().isEmpty());
        }
        screen.setSelectedVerb(nullptr);
        QCOMPARE(screen.tableModel()->rowCount(), 0);
        QCOMPARE(screen.gridModel()->rowCount(), 0);
    }

    // Subjunctive pronouns take "che" (reflexive ones too), no other mood does; a
    // tense without forms carries a note; no translation means no brackets.
    void theTableReadsAsAGrammarPrintsIt()
    {
        auto pronouns = [](const QAbstractItemModel *model, int row) {
            QStringList out;
            for (const QVariant &value : data(model, row, ConjugationSectionModel::FormsRole).toList())
                out << qobject_cast<ConjugationFormItem *>(value.value<QObject *>())->pronoun();
            return out;
        };
        auto &screen = show(ConjugationFixture::alzarsi());
        screen.selectVerbTypes(1);
        const QStringList presente = pronouns(screen.tableModel(), 1);
        QCOMPARE(presente.mid(0, 2), (QStringList{"che io", "che tu"}));
        auto *first = qobject_cast<ConjugationFormItem *>(
                data(screen.gridModel(), 0, ConjugationSectionModel::FormsRole).toList().first().value<QObject *>());
        QCOMPARE(first->pronoun() + u' ' + first->form(), QStringLiteral("che io mi alzi"));
        // What is spoken and stored stays the bare pronoun.
        QCOMPARE(screen.conjugationForKey(first->key())->pronoun, QStringLiteral("io"));
        for (int segment : {0, 2, 3}) {
            screen.selectVerbTypes(segment);
            for (int row = 1; row < screen.tableModel()->rowCount(); ++row) {
                for (const QString &pronoun : pronouns(screen.tableModel(), row))
                    QVERIFY2(!pronoun.startsWith(QStringLiteral("che")), qPrintable(pronoun));
            }
        }

        // A tense with forms has no note; an empty one, in table and grid alike, has one.
        screen.selectVerbTypes(3);
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::EmptyNoteRole).toString(), QString());
        QCOMPARE(data(screen.tableModel(), 2, ConjugationSectionModel::EmptyNoteRole).toString(), QString());
        const QString note = Strings::text(QStringLiteral("conjugation.noforms"));
        QVERIFY(!note.isEmpty() && note != QStringLiteral("conjugation.noforms"));
        screen.setSelectedVerb(ConjugationFixture::zittire());
        for (int row = 1; row < screen.tableModel()->rowCount(); ++row)
            QCOMPARE(data(screen.tableModel(), row, ConjugationSectionModel::EmptyNoteRole).toString(), note);
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::EmptyNoteRole).toString(), note);

        for (const char *missing : {"", "  "}) {
            screen.setSelectedVerb(ConjugationFixture::verb(9, "vigere", missing));
            QCOMPARE(screen.verbRowText(), QStringLiteral("vigere"));
            QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("vigere"));
        }
    }

    // How a verb is used reaches the verb row of both presentations; a verb used only in
    // the third person shows a dash, with nothing to play, for every other person.
    void usageNotesAndThirdPersonDashes()
    {
        auto &screen = show(ConjugationFixture::piovere());
        const QString rain = QStringLiteral("Used only in the third person.\n"
                                            "Weather verb, both auxiliaries are correct: è piovuto, ha piovuto.");
        QCOMPARE(screen.usageNotes(), rain);
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::NotesRole).toString(), rain);
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::NotesRole).toString(), QString());

        auto items = [&](QAbstractItemModel *model, int row) {
            QList<ConjugationFormItem *> list;
            for (const QVariant &item : data(model, row, ConjugationSectionModel::FormsRole).toList())
                list << qobject_cast<ConjugationFormItem *>(item.value<QObject *>());
            return list;
        };
        const auto present = items(screen.tableModel(), 1);
        QStringList shown;
        for (const ConjugationFormItem *item : present)
            shown << item->pronoun() + u' ' + item->form() + (item->isPlaceholder() ? u'*' : u' ');
        QCOMPARE(shown, (QStringList{"io —*", "tu —*", "lui/lei piove ", "noi —*", "voi —*", "loro piovono "}));
        // A form keeps the key of its place in the list, so speech finds it.
        QCOMPARE(screen.conjugationForKey(present[5]->key())->verb, QStringLiteral("piovono"));
        QCOMPARE(items(screen.gridModel(), 1).at(2)->form(), QStringLiteral("è piovuto / ha piovuto"));
        present[0]->toggleSpeech(nullptr);
        QCOMPARE(screen.speakingKey(), QString());

        screen.selectVerbTypes(1);
        QCOMPARE(items(screen.tableModel(), 1).at(0)->pronoun(), QStringLiteral("che io"));
        QCOMPARE(items(screen.tableModel(), 1).at(0)->form(), QStringLiteral("—"));
        // A tense it has no forms in at all keeps the plain note; the imperative says why.
        QCOMPARE(data(screen.tableModel(), 2, ConjugationSectionModel::EmptyNoteRole).toString(),
                 Strings::text(QStringLiteral("conjugation.noforms")));
        screen.selectVerbTypes(3);
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::EmptyNoteRole).toString(),
                 QStringLiteral("No imperative: the verb is used only in the third person."));
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::EmptyNoteRole).toString(),
                 QStringLiteral("No imperative: the verb is used only in the third person."));

        // Both auxiliaries: the note fills in the verb's own forms; every person stays.
        screen.setSelectedVerb(ConjugationFixture::passare());
        QCOMPARE(screen.usageNotes(), QStringLiteral("Avere with a direct object, essere without one: "
                                                     "ha passato, è passato/a."));
        screen.selectVerbTypes(0);
        QCOMPARE(items(screen.tableModel(), 2).size(), 2);
        QCOMPARE(items(screen.tableModel(), 2).at(0)->form(), QStringLiteral("sono passato/a / ho passato"));
        Strings::shared().selectLanguage({QStringLiteral("it")});
        screen.refreshConjugations();
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::NotesRole).toString(),
                 QStringLiteral("Avere con il complemento oggetto, essere senza: ha passato, è passato/a."));
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});

        // A verb without a row has nothing to say.
        screen.setSelectedVerb(ConjugationFixture::andare());
        QCOMPARE(screen.usageNotes(), QString());
        QCOMPARE(items(screen.tableModel(), 1).size(), 6);
    }

    // A working copy made before verbs had usage notes still shows the forms, and says
    // in the log why the notes are missing.
    void aCopyWithoutUsageNotesShowsTheForms()
    {
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE verb_usage")));
        auto &screen = show(ConjugationFixture::piovere());
        QCOMPARE(screen.usageNotes(), QString());
        QCOMPARE(forms(screen.selectedVerb()->indicativoPresente), (QStringList{"piove", "piovono"}));
        QVERIFY2(m_fixture->log().contains(QStringLiteral("Verb usage notes are unavailable: no such table: verb_usage")),
                 qPrintable(m_fixture->log()));
        QCOMPARE(historyCount(QStringLiteral("verbid = 20")), 1);
    }

    // The mail names the verb and mood shown, and the tense once a form of it was played.
    void reportAMistakeNamesWhatIsShown()
    {
        auto &screen = show(nullptr);
        QCOMPARE(screen.reportSubject(), QString());
        QCOMPARE(screen.reportDetails(), QString());
        screen.setSelectedVerb(ConjugationFixture::andare());
        QSignalSpy changed(&screen, &VerbDetailTableViewController::reportChanged);
        screen.selectVerbTypes(1);
        QCOMPARE(screen.reportName(), QStringLiteral("Report a mistake"));
        QCOMPARE(screen.reportSubject(), QStringLiteral("Mistake in “andare”"));
        QCOMPARE(screen.reportDetails(), QStringLiteral("Verb: andare\nMood: Subjunctive"));
        screen.chooseSection(3);
        QCOMPARE(screen.reportDetails(), QStringLiteral("Verb: andare\nMood: Subjunctive\nTense: Past"));
        screen.chooseSection(99); // not a tense of this mood: back to none
        QVERIFY(!screen.reportDetails().contains(QStringLiteral("Tense")));
        // Playing a form chooses its tense; another mood or verb forgets it.
        screen.setSpeechSynthesizer(new MuteSynthesizer);
        screen.setVolumeProbe([] { return std::optional<double>(1.0); });
        screen.selectVerbTypes(0);
        screen.toggleSpeech(QStringLiteral("8:0"), nullptr);
        QCOMPARE(screen.chosenSection(), 3);
        QVERIFY(screen.reportDetails().endsWith(QStringLiteral("Mood: Indicative\nTense: Imperfect")));
        screen.selectVerbTypes(2);
        QCOMPARE(screen.chosenSection(), 0);
        QVERIFY(changed.count() >= 4);

        Strings::shared().selectLanguage({QStringLiteral("it-IT")});
        QCOMPARE(screen.reportDetails(), QStringLiteral("Verbo: andare\nModo: Condizionale"));
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
    }

    // Headings are capitals as the language of the title writes them: a Turkish screen dots
    // its own capital İ, never one of an Italian tense name it keeps or shows.
    void headingsTakeTheirLanguagesCapitals()
    {
        auto &screen = show(ConjugationFixture::andare());
        const auto headings = [&](int segment) {
            screen.selectVerbTypes(segment);
            QStringList out;
            for (int row = 1; row < screen.tableModel()->rowCount(); ++row)
                out << data(screen.tableModel(), row, ConjugationSectionModel::HeadingRole).toString();
            return out;
        };
        Strings::shared().selectLanguage({QStringLiteral("tr-TR")});
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, false);
        screen.refreshConjugations();
        QCOMPARE(headings(0).mid(0, 2), (QStringList{QStringLiteral("ŞİMDİKİ ZAMAN"), QStringLiteral("PASSATO PROSSIMO")}));
        QCOMPARE(headings(3).last(), QStringLiteral("ULAÇ"));
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, true);
        screen.refreshConjugations();
        QCOMPARE(headings(3), (QStringList{QStringLiteral("IMPERATIVO"), QStringLiteral("PARTICIPIO PRESENTE"),
                                           QStringLiteral("PARTICIPIO PASSATO"), QStringLiteral("GERUNDIO")}));
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::HeadingRole).toString(), QString());
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
    }

    // The screen opens and the view counts whatever fails; the lists keep what they held.
    void failuresAreLoggedAndTheScreenStillOpens_data()
    {
        QTest::addColumn<QString>("setUp"); // SQL to run first; empty: no database at all
        QTest::addColumn<int>("forms");
        QTest::addColumn<QString>("logged");
        QTest::newRow("no queue") << QString() << 0 << QString();
        QTest::newRow("history fails") << "DROP TABLE history" << 6
                                       << "An error occurred when reading verb conjugation: no such table: history (1)";
        QTest::newRow("read fails") << "DROP TABLE conjugation" << 0 << "An error occurred when reading verb conjugation: ";
    }

    void failuresAreLoggedAndTheScreenStillOpens()
    {
        QFETCH(QString, setUp);
        QFETCH(int, forms);
        QFETCH(QString, logged);
        const VerbPtr verb = ConjugationFixture::andare();
        verb->gerundio = {Conjugation{{}, QStringLiteral("andando"), QStringLiteral("3"), 0, {}}};
        if (setUp.isEmpty())
            m_fixture->queue.reset();
        else
            QVERIFY(m_fixture->run(setUp));
        show(verb);
        QCOMPARE(verb->indicativoPresente.size(), forms);
        QCOMPARE(verb->gerundio.size(), 1);
        QCOMPARE(historyCount(QStringLiteral("verbid = 1")), 0);
        QCOMPARE(m_viewed.size(), 1);
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 1);
        QCOMPARE(m_fixture->log().contains(logged.isEmpty() ? QStringLiteral("An error occurred") : logged),
                 !logged.isEmpty());
    }

    // One row per verb, stamped in seconds since 2001 (not 1970); rows tied with the
    // 52nd newest go with it; nothing is written or trimmed while history is off.
    void historyKeepsOneRowPerVerbAndTheNewestRows()
    {
        QStringList values{QStringLiteral("(100, 1)"), QStringLiteral("(101, 1)")};
        for (int i = 2; i <= 50; ++i)
            values << QStringLiteral("(%1, %2)").arg(100 + i).arg(i);
        QVERIFY(m_fixture->run(QStringLiteral("INSERT INTO history(verbid, timestamp) VALUES ") + values.join(u',')));
        m_fixture->settings->setBool(SettingsKeys::UseHistory, false);
        show(ConjugationFixture::andare());
        QCOMPARE(historyCount(), 51);
        QCOMPARE(historyCount(QStringLiteral("verbid = 1")), 0);
        m_fixture->settings->setBool(SettingsKeys::UseHistory, true);
        const double before = VerbViewBookkeeping::referenceTimestamp();
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        QCOMPARE(m_viewed.size(), 2);
        QCOMPARE(m_viewed.last().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);
        const QString timestamp = QStringLiteral("SELECT timestamp FROM history WHERE verbid = 1");
        const double first = m_fixture->column(timestamp).value(0).toDouble();
        QVERIFY(first >= before - 1 && first <= VerbViewBookkeeping::referenceTimestamp() + 1);
        QCOMPARE(historyCount(), 50);
        QCOMPARE(historyCount(QStringLiteral("timestamp <= 1")), 0);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(historyCount(), 51);
        show(ConjugationFixture::provare());
        QCOMPARE(historyCount(), 51);
        QCOMPARE(historyCount(QStringLiteral("verbid = 102")), 0);
        QTest::qSleep(20); // two showings must get distinct timestamps
        show(ConjugationFixture::andare());
        const QStringList rows = m_fixture->column(timestamp);
        QCOMPARE(rows.size(), 1);
        QVERIFY(rows.first().toDouble() > first);
        QCOMPARE(historyCount(QStringLiteral("verbid IN (1, 5, 7)")), 3);
    }

    void theTwentyFirstVerbAsksForAReviewOnceAndEachShowingIsReported()
    {
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 19);
        show(ConjugationFixture::andare());
        QCOMPARE(m_reviewRequests, 0);
        show(ConjugationFixture::alzarsi());
        QCOMPARE(m_reviewRequests, 1);
        show(ConjugationFixture::andare());
        QCOMPARE(m_reviewRequests, 1);
        // The counter and the flag survive a restart (the counter is written
        // a moment after the tap, or when the app ends).
        QTRY_COMPARE_WITH_TIMEOUT(Preferences::numberOfVerbsViewed(Settings(m_fixture->settings->filePath())), 22,
                                  Settings::SoonSaveDelayMs * 3);
        Settings restarted(m_fixture->settings->filePath());
        QCOMPARE(Preferences::numberOfVerbsViewed(restarted), 22);
        QVERIFY(Preferences::askedForReview(restarted));
        // An installation already past 21 without having asked asks at its next showing.
        m_fixture->settings->removeObject(SettingsKeys::AskedForReview);
        m_fixture->settings->setInteger(SettingsKeys::NumberOfVerbsViewed, 40);
        auto &events = m_fixture->events;
        events.clear();
        show(ConjugationFixture::alzarsi()).viewDidAppear();
        QCOMPARE(m_reviewRequests, 2);
        QCOMPARE(events, (QList<QPair<QString, QVariantMap>>{
                                 {"select_content", {{"item_id", QStringLiteral("5")}, {"item_name", QStringLiteral("alzarsi")}}}}));
        show(ConjugationFixture::andare(), {QStringLiteral("norvella"), QStringLiteral("ui_test")});
        QCOMPARE(Preferences::numberOfVerbsViewed(*m_fixture->settings), 41); // UI test runs do not count
    }

    void favouriteMarkedHereOrElsewhere()
    {
        const VerbPtr verb = ConjugationFixture::andare();
        auto &screen = show(verb);
        QSignalSpy changed(&screen, &VerbDetailTableViewController::favouriteChanged);
        screen.toggleFavourite();
        QVERIFY(verb->isFavourite);
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite-filled.svg")));
        QCOMPARE(favourites(), QStringList{QStringLiteral("1")});
        QCOMPARE(m_toggled.size(), 1);
        QCOMPARE(m_toggled.first().sender(), &screen);
        QCOMPARE(m_toggled.first().userInfo.value(QStringLiteral("verb")).value<VerbPtr>(), verb);
        QCOMPARE(changed.count(), 1); // its own notification does not come back into the screen
        screen.toggleFavourite();
        QCOMPARE(screen.favouriteIcon(), QUrl(QStringLiteral("qrc:/norvella/icons/favourite.svg")));
        QVERIFY(favourites().isEmpty());

        // Another record of the same verb, as a list holds it, is followed; other verbs are not.
        QObject otherScreen;
        auto post = [&](const QVariant &verb) {
            NotificationCenter::defaultCenter().post(Notifications::VerbFavouriteToggled, &otherScreen,
                                                     verb.isValid() ? QVariantMap{{"verb", verb}} : QVariantMap());
        };
        const VerbPtr elsewhere = ConjugationFixture::andare();
        elsewhere->isFavourite = true;
        post(QVariant::fromValue(elsewhere));
        QVERIFY(verb->isFavourite);
        QCOMPARE(changed.count(), 3);
        QVERIFY(favourites().isEmpty());
        post(QVariant::fromValue(ConjugationFixture::alzarsi()));
        post({});
        QCOMPARE(changed.count(), 3);

        // A write that fails puts the star back and says so, and so does a screen without a
        // database; the other screens are not told of a change that did not happen.
        const qsizetype toggles = m_toggled.size();
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE favourite")));
        screen.toggleFavourite();
        QVERIFY(screen.isFavourite());
        QVERIFY(m_fixture->log().contains(QStringLiteral("Unable to update favourite no such table: favourite (1)")));
        m_fixture->queue.reset();
        auto &again = show(ConjugationFixture::alzarsi());
        again.toggleFavourite();
        QVERIFY(!again.isFavourite());
        QCOMPARE(m_toggled.size(), toggles);
        QCOMPARE(m_messages, QStringList(2, Strings::text(QStringLiteral("common.save_failed"))));
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

QTEST_MAIN(VerbDetailControllerTest)
#include "tst_verbdetailcontroller.moc"
