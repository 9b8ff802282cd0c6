// Reading a verb's forms into its tense lists and presenting them by mood.
#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "ConjugationSectionModel.h"
#include "ConjugationServices.h"
#include "ConjugationTestFixture.h"
#include "VerbDetailTableViewController.h"
#include "VerbLookup.h"

#include <QAbstractItemModelTester>

using namespace norvella;
using norvella::test::ConjugationFixture;

namespace {
QStringList forms(const ConjugationList &list)
{
    QStringList out;
    for (const Conjugation &c : list)
        out << c.verb;
    return out;
}
} // namespace

class ConjugationGroupingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    std::unique_ptr<VerbDetailTableViewController> m_screen;
    QList<QPair<QString, QVariantMap>> m_events;

    VerbDetailTableViewController &show(const VerbPtr &verb)
    {
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_fixture->settings);
        m_screen->setLaunchArguments({});
        m_screen->setQueue(m_fixture->queue);
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        return *m_screen;
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        m_events.clear();
        ConjugationServices::setEventHandler(
                [this](const QString &name, const QVariantMap &parameters) { m_events.append({name, parameters}); });
    }

    void cleanup()
    {
        m_screen.reset();
        ConjugationServices::setEventHandler({});
    }

    void everyTypeFillsItsOwnList()
    {
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        QCOMPARE(forms(verb->infinito), QStringList{QStringLiteral("andare")});
        QCOMPARE(forms(verb->participioPresente), QStringList{QStringLiteral("andante")});
        QCOMPARE(forms(verb->gerundio), QStringList{QStringLiteral("andando")});
        QCOMPARE(verb->participioPassato.size(), 4);
        QVERIFY(verb->other.isEmpty());
        QCOMPARE(forms(verb->indicativoPresente),
                 (QStringList{"vado", "vai", "va", "andiamo", "andate", "vanno"}));
        QCOMPARE(verb->indicativoPassatoRemoto.first().verb, QStringLiteral("andai"));
        QCOMPARE(verb->indicativoTrapassatoRemoto.first().verb, QStringLiteral("fui andato/a"));
        QCOMPARE(verb->indicativoFuturo.first().verb, QStringLiteral("andrò"));
        QCOMPARE(verb->imperativo.first().verb, QStringLiteral("va'"));
        QCOMPARE(verb->congiuntivoImperfetto.first().verb, QStringLiteral("andassi"));
        QCOMPARE(verb->congiuntivoPassatoProssimo.first().verb, QStringLiteral("sia andato/a"));
        QCOMPARE(verb->condizionalePassato.last().verb, QStringLiteral("sarebbero andati/e"));

        const Conjugation &vado = verb->indicativoPresente.first();
        QCOMPARE(vado.pronoun, QStringLiteral("io"));
        QCOMPARE(vado.type, QStringLiteral("6"));
        QCOMPARE(vado.order, 1);
        QCOMPARE(verb->gerundio.first().pronoun, QString());
        QCOMPARE(verb->gerundio.first().order, 0);
        QVERIFY(!verb->loaded);
    }

    void unknownTypesAreDroppedAndConjOrderWins()
    {
        const VerbPtr verb = ConjugationFixture::provare();
        show(verb);
        // Stored as provo (order 2, pronoun 1) and proviamo (order 1, pronoun 4).
        QCOMPARE(forms(verb->indicativoPresente), (QStringList{"proviamo", "provo"}));
        QCOMPARE(verb->indicativoPresente.last().voiceFile, QStringLiteral("provo.mp3"));
        // A pronoun id with no pronoun row keeps the form, with no pronoun.
        QCOMPARE(verb->indicativoPassatoRemoto.size(), 1);
        QCOMPARE(verb->indicativoPassatoRemoto.first().pronoun, QString());
        QCOMPARE(verb->indicativoPassatoRemoto.first().order, 0);
        int total = 0;
        for (int type = 1; type <= 20; ++type)
            total += int(verb->listForType(QString::number(type))->size());
        QCOMPARE(total, 4); // types 21 and 0 are gone
    }

    void distributeReplacesWhatTheListsHeld()
    {
        Verb verb;
        verb.gerundio = {Conjugation{{}, QStringLiteral("stale"), QStringLiteral("3"), 0, {}}};
        ConjugationGroups::distribute(verb, {Conjugation{QStringLiteral("io"), QStringLiteral("vado"),
                                                         QStringLiteral("6"), 1, {}},
                                             Conjugation{{}, QStringLiteral("x"), QStringLiteral("06"), 0, {}},
                                             Conjugation{{}, QStringLiteral("y"), QString(), 0, {}}});
        QVERIFY(verb.gerundio.isEmpty());
        QCOMPARE(forms(verb.indicativoPresente), QStringList{QStringLiteral("vado")});
    }

    void sectionsOfEachMood_data()
    {
        QTest::addColumn<int>("segment");
        QTest::addColumn<int>("section");
        QTest::addColumn<QString>("titleKey");
        QTest::addColumn<QString>("firstForm");
        QTest::addColumn<int>("rows");
        QTest::newRow("ind 1") << 0 << 1 << "tense.ind.presente" << "vado" << 6;
        QTest::newRow("ind 2") << 0 << 2 << "tense.ind.passatoprossimo" << "sono andato/a" << 6;
        QTest::newRow("ind 3") << 0 << 3 << "tense.ind.imperfetto" << "andavo" << 6;
        QTest::newRow("ind 4") << 0 << 4 << "tense.ind.trapassatoprossimo" << "ero andato/a" << 6;
        QTest::newRow("ind 5") << 0 << 5 << "tense.ind.passatoremoto" << "andai" << 6;
        QTest::newRow("ind 6") << 0 << 6 << "tense.ind.trapassatoremoto" << "fui andato/a" << 6;
        QTest::newRow("ind 7") << 0 << 7 << "tense.ind.futuro" << "andrò" << 6;
        QTest::newRow("ind 8") << 0 << 8 << "tense.ind.futuroanteriore" << "sarò andato/a" << 6;
        QTest::newRow("sub 1") << 1 << 1 << "tense.sub.presente" << "vada" << 6;
        QTest::newRow("sub 2") << 1 << 2 << "tense.sub.imperfetto" << "andassi" << 6;
        QTest::newRow("sub 3") << 1 << 3 << "tense.sub.passatoprossimo" << "sia andato/a" << 6;
        QTest::newRow("sub 4") << 1 << 4 << "tense.sub.trapassatoprossimo" << "fossi andato/a" << 6;
        QTest::newRow("con 1") << 2 << 1 << "tense.con.present" << "andrei" << 6;
        QTest::newRow("con 2") << 2 << 2 << "tense.con.past" << "sarei andato/a" << 6;
        QTest::newRow("other 1") << 3 << 1 << "tense.other.imperative" << "va'" << 5;
        QTest::newRow("other 2") << 3 << 2 << "tense.other.participiopresente" << "andante" << 1;
        QTest::newRow("other 3") << 3 << 3 << "tense.other.pastparticiple" << "andato" << 4;
        QTest::newRow("other 4") << 3 << 4 << "tense.other.gerund" << "andando" << 1;
    }

    void sectionsOfEachMood()
    {
        QFETCH(int, segment);
        QFETCH(int, section);
        QFETCH(QString, titleKey);
        QFETCH(QString, firstForm);
        QFETCH(int, rows);
        auto &screen = show(ConjugationFixture::andare());
        screen.selectVerbTypes(segment);
        QCOMPARE(screen.titleForHeaderInSection(section), Strings::text(titleKey));
        QVERIFY(Strings::text(titleKey) != titleKey); // the key has an English text
        QCOMPARE(screen.numberOfRowsInSection(section), rows);
        QCOMPARE(screen.listForSection(section)->first().verb, firstForm);
        QCOMPARE(ConjugationGroups::titleKey(segment, section - 1, false), titleKey);
        QCOMPARE(ConjugationGroups::titleKey(segment, section - 1, true), titleKey + QStringLiteral("_italian"));
    }

    void sectionCountsAndTheVerbRow()
    {
        auto &screen = show(ConjugationFixture::andare());
        const QList<int> sections{9, 5, 3, 5};
        const QList<int> items{8, 4, 2, 4};
        for (int segment = 0; segment < 4; ++segment) {
            screen.selectVerbTypes(segment);
            QCOMPARE(screen.numberOfSections(), sections[segment]);
            QCOMPARE(screen.numberOfItems(), items[segment]);
            QCOMPARE(screen.numberOfRowsInSection(0), 1);
            QCOMPARE(screen.titleForHeaderInSection(0), QString());
            QCOMPARE(screen.tableModel()->rowCount(), sections[segment]);
            QCOMPARE(screen.gridModel()->rowCount(), items[segment]);
        }
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (to go)"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, QStringLiteral("de"));
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (gehen)"));
    }

    void outOfRangeGivesNoTitleAndNoRows()
    {
        auto &screen = show(ConjugationFixture::andare());
        QCOMPARE(screen.titleForHeaderInSection(9), QString());
        QCOMPARE(screen.numberOfRowsInSection(9), 0);
        QCOMPARE(screen.numberOfRowsInSection(-1), 0);
        screen.selectVerbTypes(4);
        QCOMPARE(screen.numberOfSections(), 0);
        QCOMPARE(screen.numberOfItems(), 0);
        QCOMPARE(screen.titleForHeaderInSection(1), QString());
        QCOMPARE(screen.numberOfRowsInSection(1), 0);
        QCOMPARE(screen.tableModel()->rowCount(), 0);
        QCOMPARE(m_events.last().second.value(QStringLiteral("name")).toString(), QStringLiteral("CONJUGATIONS_NA"));
    }

    void verbWithoutFormsShowsEveryTitledSectionEmpty()
    {
        auto &screen = show(ConjugationFixture::zittire());
        for (int segment = 0; segment < 4; ++segment) {
            screen.selectVerbTypes(segment);
            QCOMPARE(screen.numberOfRowsInSection(0), 1);
            for (int section = 1; section < screen.numberOfSections(); ++section) {
                QVERIFY(!screen.titleForHeaderInSection(section).isEmpty());
                QCOMPARE(screen.numberOfRowsInSection(section), 0);
                const QModelIndex index = screen.tableModel()->index(section, 0);
                QCOMPARE(index.data(ConjugationSectionModel::FormCountRole).toInt(), 0);
                QVERIFY(!index.data(ConjugationSectionModel::TitleRole).toString().isEmpty());
            }
        }
    }

    void titlesFollowShowTranslatedWithoutReadingAgain()
    {
        auto &screen = show(ConjugationFixture::andare());
        QAbstractItemModelTester tester(screen.tableModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QModelIndex presente = screen.tableModel()->index(1, 0);
        QCOMPARE(presente.data(ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Present"));

        // Forms removed from the database stay on screen: a refresh does not read again.
        QVERIFY(m_fixture->run(QStringLiteral("DELETE FROM conjugation")));
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, true);
        QSignalSpy reset(screen.tableModel(), &QAbstractItemModel::modelReset);
        screen.refreshConjugations();
        QCOMPARE(reset.count(), 1);
        QCOMPARE(screen.titleForHeaderInSection(1), Strings::text(QStringLiteral("tense.ind.presente_italian")));
        QCOMPARE(screen.tableModel()->index(1, 0).data(ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("Presente"));
        QCOMPARE(screen.tableModel()->index(2, 0).data(ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("Passato prossimo"));
        QCOMPARE(screen.numberOfRowsInSection(1), 6);

        // So does the notification every screen can post.
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, false);
        NotificationCenter::defaultCenter().post(Notifications::RefreshConjugations);
        QCOMPARE(reset.count(), 2);
        QCOMPARE(screen.gridModel()->index(0, 0).data(ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("Present"));
    }

    void switchingMoodsLogsTheTabAndNeverReads()
    {
        auto &screen = show(ConjugationFixture::andare());
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE conjugation")));
        const QStringList expected{"CONJUGATIONS_IND", "CONJUGATIONS_SUB", "CONJUGATIONS_CON", "CONJUGATIONS_OTHER"};
        for (int segment = 3; segment >= 0; --segment) {
            m_events.clear();
            screen.selectVerbTypes(segment);
            QCOMPARE(screen.selectedSegment(), segment);
            QCOMPARE(m_events.size(), 1);
            QCOMPARE(m_events.first().first, QStringLiteral("conjugation_tab"));
            QCOMPARE(m_events.first().second,
                     (QVariantMap{{QStringLiteral("name"), expected[segment]}}));
            QVERIFY(screen.numberOfRowsInSection(1) > 0);
        }
        QVERIFY(!m_fixture->log().contains(QStringLiteral("An error occurred")));
    }

    void modelsStayConsistentThroughChanges()
    {
        auto &screen = show(ConjugationFixture::alzarsi());
        QAbstractItemModelTester table(screen.tableModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester grid(screen.gridModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (int segment : {1, 2, 3, 0, 9, 0})
            screen.selectVerbTypes(segment);
        screen.setSelectedVerb(ConjugationFixture::zittire());
        screen.setSelectedVerb(nullptr);
        QCOMPARE(screen.tableModel()->rowCount(), 0);
        QCOMPARE(screen.gridModel()->rowCount(), 0);
        screen.setSelectedVerb(ConjugationFixture::andare());
        QCOMPARE(screen.tableModel()->rowCount(), 9);
    }

    void rowsCarryTheirFormsAndSpeechKeys()
    {
        auto &screen = show(ConjugationFixture::alzarsi());
        const QModelIndex verbRow = screen.tableModel()->index(0, 0);
        QCOMPARE(verbRow.data(ConjugationSectionModel::KindRole).toString(), QStringLiteral("verb"));
        QCOMPARE(verbRow.data(ConjugationSectionModel::TitleRole).toString(), QStringLiteral("alzarsi (to get up)"));
        QCOMPARE(verbRow.data(ConjugationSectionModel::FormCountRole).toInt(), 0);

        const QVariantList rows = screen.tableModel()->index(5, 0).data(ConjugationSectionModel::FormsRole).toList();
        QCOMPARE(rows.size(), 6);
        auto *first = qobject_cast<ConjugationFormItem *>(rows.first().value<QObject *>());
        QVERIFY(first);
        QCOMPARE(first->pronoun(), QStringLiteral("io"));
        QCOMPARE(first->form(), QStringLiteral("mi alzai"));
        QCOMPARE(first->key(), QStringLiteral("12:0"));
        QCOMPARE(screen.conjugationForKey(first->key())->verb, QStringLiteral("mi alzai"));
        QCOMPARE(first->playName(), QStringLiteral("Play “io mi alzai”"));
        QCOMPARE(first->stopName(), QStringLiteral("Stop “io mi alzai”"));
        QVERIFY(!screen.conjugationForKey(QStringLiteral("12:6")));
        QVERIFY(!screen.conjugationForKey(QStringLiteral("21:0")));
        QVERIFY(!screen.conjugationForKey(QStringLiteral("nonsense")));
    }

    void gridBlocksHoldAtMostSixRows()
    {
        QVERIFY(m_fixture->run(QStringLiteral(
                "INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order) VALUES "
                "(8, 1, 'a', 19, 1), (8, 2, 'b', 19, 2), (8, 3, 'c', 19, 3), (8, 4, 'd', 19, 4), "
                "(8, 5, 'e', 19, 5), (8, 6, 'f', 19, 6), (8, 6, 'g', 19, 7)")));
        auto &screen = show(ConjugationFixture::zittire());
        screen.selectVerbTypes(2);
        QCOMPARE(screen.numberOfRowsInSection(1), 7);
        QCOMPARE(screen.tableModel()->index(1, 0).data(ConjugationSectionModel::FormCountRole).toInt(), 7);
        QCOMPARE(screen.gridModel()->index(0, 0).data(ConjugationSectionModel::FormCountRole).toInt(), 6);
        QCOMPARE(screen.gridModel()->index(0, 0).data(ConjugationSectionModel::SectionRole).toInt(), 1);
    }

    void emptyStateAndPeekingChrome()
    {
        auto &screen = show(nullptr);
        QCOMPARE(screen.numberOfSections(), 0);
        QCOMPARE(screen.numberOfRowsInSection(0), 0);
        QVERIFY(screen.selectVerbVisible());
        QVERIFY(!screen.toolbarVisible());
        QVERIFY(!screen.segmentsVisible());
        QCOMPARE(screen.title(), QString());
        QVERIFY(!screen.selectVerbText().isEmpty() && screen.selectVerbText() != QStringLiteral("select"));

        QSignalSpy chrome(&screen, &VerbDetailTableViewController::chromeChanged);
        screen.setSelectedVerb(ConjugationFixture::andare());
        QVERIFY(chrome.count() >= 1);
        QVERIFY(!screen.selectVerbVisible());
        QVERIFY(screen.toolbarVisible());
        QVERIFY(screen.segmentsVisible());
        QCOMPARE(screen.title(), QStringLiteral("andare"));

        screen.setPeeking(true);
        QVERIFY(!screen.toolbarVisible());
        QVERIFY(!screen.segmentsVisible());
        QVERIFY(!screen.selectVerbVisible());
        screen.setPeeking(false);
        QVERIFY(screen.toolbarVisible());
    }

    void segmentTitlesAreTheMoods()
    {
        auto &screen = show(nullptr);
        QCOMPARE(screen.segmentTitles(),
                 (QStringList{"Indicative", "Subjunctive", "Conditional", "Other forms"}));
        Strings::shared().selectLanguage({QStringLiteral("it-IT")});
        QCOMPARE(screen.segmentTitles(),
                 (QStringList{"Indicativo", "Congiuntivo", "Condizionale", "Altre forme"}));
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
    }

    void aVerbIsFoundByItsInfinitive()
    {
        QVERIFY(m_fixture->run(QStringLiteral("INSERT INTO favourite(verbid) VALUES (5), (5)")));
        const VerbPtr alzarsi = verbByInfinitive(*m_fixture->queue, QStringLiteral("alzarsi"));
        QVERIFY(alzarsi);
        QCOMPARE(alzarsi->id, 5);
        QCOMPARE(alzarsi->english, QStringLiteral("to get up"));
        QCOMPARE(alzarsi->portuguese, QStringLiteral("levantar-se"));
        QVERIFY(alzarsi->isFavourite);
        QVERIFY(alzarsi->indicativoPresente.isEmpty());
        const VerbPtr zittire = verbByInfinitive(*m_fixture->queue, QStringLiteral("zittire"));
        QVERIFY(zittire && !zittire->isFavourite && zittire->german.isEmpty());
        QVERIFY(!verbByInfinitive(*m_fixture->queue, QStringLiteral("volare")));

        auto &screen = show(alzarsi);
        QCOMPARE(screen.listForSection(1)->first().verb, QStringLiteral("mi alzo"));
        QVERIFY(screen.isFavourite());
    }

    void everyKeyHasBothLanguages()
    {
        QStringList keys{"select", "volume.low.warning", "speech.voice.missing", "common.ok", "conjugation.play",
                         "conjugation.stop", "conjugation.favourite.add", "conjugation.favourite.remove",
                         "conjugation.export", "conjugation.back", "conjugation.moods"};
        for (int group = 0; group < ConjugationGroups::GroupCount; ++group) {
            keys << ConjugationGroups::groupTitleKey(group);
            for (int index = 0; index < ConjugationGroups::tenseCount(group); ++index) {
                keys << ConjugationGroups::titleKey(group, index, false) << ConjugationGroups::titleKey(group, index, true);
            }
        }
        for (const QString &language : Strings::availableLanguages()) {
            const QStringList present = Strings::shared().keys(language);
            for (const QString &key : keys)
                QVERIFY2(present.contains(key), qPrintable(language + QStringLiteral(": ") + key));
        }
    }
};

QTEST_MAIN(ConjugationGroupingTest)
#include "tst_conjugationgrouping.moc"
