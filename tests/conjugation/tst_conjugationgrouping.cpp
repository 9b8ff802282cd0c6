// Reading a verb's forms into its tense lists and presenting them by mood.
#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "ConjugationSectionModel.h"
#include "ConjugationTestFixture.h"
#include "VerbLookup.h"

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

QVariant data(const QAbstractItemModel *model, int row, int role)
{
    return model->index(row, 0).data(role);
}
} // namespace

class ConjugationGroupingTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;

    VerbDetailTableViewController &show(const VerbPtr &verb) { return m_fixture->show(verb); }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
    }
    void cleanup() { m_fixture.reset(); }

    // The tenses on screen are checked by mood below; these are the lists no section shows.
    void formsGoToTheListOfTheirType()
    {
        const VerbPtr verb = ConjugationFixture::andare();
        show(verb);
        QCOMPARE(forms(verb->infinito), QStringList{QStringLiteral("andare")});
        QCOMPARE(forms(verb->participioPassato), (QStringList{"andato", "andata", "andati", "andate"}));
        QVERIFY(verb->other.isEmpty());
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
        int total = 0;
        for (int type = 1; type <= 20; ++type)
            total += int(verb->listForType(QString::number(type))->size());
        QCOMPARE(total, 4); // types 21 and 0 are gone

        // Distributing again replaces the lists; "06" and an empty type match nothing.
        Verb again;
        again.gerundio = {Conjugation{{}, QStringLiteral("stale"), QStringLiteral("3"), 0, {}}};
        ConjugationGroups::distribute(again, {{QStringLiteral("io"), QStringLiteral("vado"), QStringLiteral("6"), 1, {}},
                                              {{}, QStringLiteral("x"), QStringLiteral("06"), 0, {}},
                                              {{}, QStringLiteral("y"), QString(), 0, {}}});
        QVERIFY(again.gerundio.isEmpty());
        QCOMPARE(forms(again.indicativoPresente), QStringList{QStringLiteral("vado")});
    }

    // Section 0 is the verb row; then one section, and one grid block, per tense.
    void everyMoodListsItsTenses()
    {
        const QList<QStringList> firstForms{
                {"vado", "sono andato/a", "andavo", "ero andato/a", "andai", "fui andato/a", "andrò", "sarò andato/a"},
                {"vada", "andassi", "sia andato/a", "fossi andato/a"},
                {"andrei", "sarei andato/a"},
                {"va'", "andante", "andato", "andando"}};
        const QList<QList<int>> rows{{6, 6, 6, 6, 6, 6, 6, 6}, {6, 6, 6, 6}, {6, 6}, {5, 1, 4, 1}};
        auto &screen = show(ConjugationFixture::andare());
        for (int segment = 0; segment < 4; ++segment) {
            screen.selectVerbTypes(segment);
            const int tenses = int(firstForms[segment].size());
            QCOMPARE(screen.numberOfSections(), tenses + 1);
            QCOMPARE(screen.numberOfItems(), tenses);
            QCOMPARE(screen.tableModel()->rowCount(), tenses + 1);
            QCOMPARE(screen.gridModel()->rowCount(), tenses);
            QCOMPARE(screen.numberOfRowsInSection(0), 1);
            QCOMPARE(screen.titleForHeaderInSection(0), QString());
            for (int section = 1; section <= tenses; ++section) {
                const QString key = ConjugationGroups::titleKey(segment, section - 1, false);
                QCOMPARE(screen.titleForHeaderInSection(section), Strings::text(key));
                QCOMPARE(screen.numberOfRowsInSection(section), rows[segment][section - 1]);
                QCOMPARE(screen.listForSection(section)->first().verb, firstForms[segment][section - 1]);
                QCOMPARE(ConjugationGroups::titleKey(segment, section - 1, true), key + QStringLiteral("_italian"));
            }
        }
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (to go)"));
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, QStringLiteral("de"));
        QCOMPARE(screen.verbRowText(), QStringLiteral("andare (gehen)"));

        screen.selectVerbTypes(0);
        QCOMPARE(screen.titleForHeaderInSection(9), QString());
        QCOMPARE(screen.numberOfRowsInSection(9), 0);
        QCOMPARE(screen.numberOfRowsInSection(-1), 0);
        screen.selectVerbTypes(4);
        QCOMPARE(screen.numberOfSections(), 0);
        QCOMPARE(screen.numberOfItems(), 0);
        QCOMPARE(screen.titleForHeaderInSection(1), QString());
        QCOMPARE(screen.numberOfRowsInSection(1), 0);
        QCOMPARE(screen.tableModel()->rowCount(), 0);
        QCOMPARE(m_fixture->events.last().second.value("name").toString(), QStringLiteral("CONJUGATIONS_NA"));
    }

    void verbWithoutFormsShowsEveryTitledSectionEmpty()
    {
        auto &screen = show(ConjugationFixture::zittire());
        for (int segment = 0; segment < 4; ++segment) {
            screen.selectVerbTypes(segment);
            QCOMPARE(screen.numberOfRowsInSection(0), 1);
            for (int section = 1; section < screen.numberOfSections(); ++section) {
                QCOMPARE(screen.numberOfRowsInSection(section), 0);
                QCOMPARE(data(screen.tableModel(), section, ConjugationSectionModel::FormCountRole).toInt(), 0);
                QVERIFY(!data(screen.tableModel(), section, ConjugationSectionModel::TitleRole).toString().isEmpty());
            }
        }
    }

    void titlesFollowShowTranslatedWithoutReadingAgain()
    {
        auto &screen = show(ConjugationFixture::andare());
        Tester tester(screen.tableModel(), Tester::FailureReportingMode::QtTest);
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Present"));

        // Forms removed from the database stay on screen: a refresh does not read again.
        QVERIFY(m_fixture->run(QStringLiteral("DELETE FROM conjugation")));
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, true);
        QSignalSpy reset(screen.tableModel(), &QAbstractItemModel::modelReset);
        screen.refreshConjugations();
        QCOMPARE(reset.count(), 1);
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Presente"));
        QCOMPARE(data(screen.tableModel(), 2, ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("Passato prossimo"));
        QCOMPARE(screen.numberOfRowsInSection(1), 6);

        // So does the notification every screen can post.
        m_fixture->settings->setBool(SettingsKeys::ShowTranslated, false);
        NotificationCenter::defaultCenter().post(Notifications::RefreshConjugations);
        QCOMPARE(reset.count(), 2);
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::TitleRole).toString(), QStringLiteral("Present"));
    }

    void switchingMoodsLogsTheTabAndNeverReads()
    {
        auto &screen = show(ConjugationFixture::andare());
        QVERIFY(m_fixture->run(QStringLiteral("DROP TABLE conjugation")));
        const QStringList expected{"CONJUGATIONS_IND", "CONJUGATIONS_SUB", "CONJUGATIONS_CON", "CONJUGATIONS_OTHER"};
        for (int segment = 3; segment >= 0; --segment) {
            auto &events = m_fixture->events;
            events.clear();
            screen.selectVerbTypes(segment);
            QCOMPARE(screen.selectedSegment(), segment);
            QCOMPARE(events.size(), 1);
            QCOMPARE(events.first().first, QStringLiteral("conjugation_tab"));
            QCOMPARE(events.first().second, (QVariantMap{{QStringLiteral("name"), expected[segment]}}));
            QVERIFY(screen.numberOfRowsInSection(1) > 0);
        }
        QVERIFY(!m_fixture->log().contains(QStringLiteral("An error occurred")));
    }

    void modelsStayConsistentThroughChanges()
    {
        auto &screen = show(ConjugationFixture::alzarsi());
        Tester table(screen.tableModel(), Tester::FailureReportingMode::QtTest);
        Tester grid(screen.gridModel(), Tester::FailureReportingMode::QtTest);
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
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::KindRole).toString(), QStringLiteral("verb"));
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::TitleRole).toString(),
                 QStringLiteral("alzarsi (to get up)"));
        QCOMPARE(data(screen.tableModel(), 0, ConjugationSectionModel::FormCountRole).toInt(), 0);

        const QVariantList rows = data(screen.tableModel(), 5, ConjugationSectionModel::FormsRole).toList();
        QCOMPARE(rows.size(), 6);
        auto *first = qobject_cast<ConjugationFormItem *>(rows.first().value<QObject *>());
        QVERIFY(first);
        QCOMPARE(first->pronoun(), QStringLiteral("io"));
        QCOMPARE(first->form(), QStringLiteral("mi alzai"));
        QCOMPARE(first->key(), QStringLiteral("12:0"));
        QCOMPARE(screen.conjugationForKey(first->key())->verb, QStringLiteral("mi alzai"));
        QCOMPARE(first->playName(), QStringLiteral("Play “io mi alzai”"));
        QCOMPARE(first->stopName(), QStringLiteral("Stop “io mi alzai”"));
        for (const char *key : {"12:6", "21:0", "nonsense"})
            QVERIFY2(!screen.conjugationForKey(QLatin1String(key)), key);
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
        QCOMPARE(data(screen.tableModel(), 1, ConjugationSectionModel::FormCountRole).toInt(), 7);
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::FormCountRole).toInt(), 6);
        QCOMPARE(data(screen.gridModel(), 0, ConjugationSectionModel::SectionRole).toInt(), 1);
    }

    void emptyStateAndPeekingChrome()
    {
        auto &screen = show(nullptr);
        QCOMPARE(screen.numberOfSections(), 0);
        QCOMPARE(screen.numberOfRowsInSection(0), 0);
        QVERIFY(screen.selectVerbVisible() && !screen.toolbarVisible() && !screen.segmentsVisible());
        QCOMPARE(screen.title(), QString());
        QVERIFY(!screen.selectVerbText().isEmpty() && screen.selectVerbText() != QStringLiteral("select"));
        QCOMPARE(screen.segmentTitles(), (QStringList{"Indicative", "Subjunctive", "Conditional", "Other forms"}));
        Strings::shared().selectLanguage({QStringLiteral("it-IT")});
        QCOMPARE(screen.segmentTitles(), (QStringList{"Indicativo", "Congiuntivo", "Condizionale", "Altre forme"}));
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});

        QSignalSpy chrome(&screen, &VerbDetailTableViewController::chromeChanged);
        screen.setSelectedVerb(ConjugationFixture::andare());
        QVERIFY(chrome.count() >= 1);
        QVERIFY(!screen.selectVerbVisible() && screen.toolbarVisible() && screen.segmentsVisible());
        QCOMPARE(screen.title(), QStringLiteral("andare"));
        screen.setPeeking(true);
        QVERIFY(!screen.selectVerbVisible() && !screen.toolbarVisible() && !screen.segmentsVisible());
        screen.setPeeking(false);
        QVERIFY(screen.toolbarVisible());
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
            for (int index = 0; index < ConjugationGroups::tenseCount(group); ++index)
                keys << ConjugationGroups::titleKey(group, index, false) << ConjugationGroups::titleKey(group, index, true);
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
