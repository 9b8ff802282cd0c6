#include "ConjugationFormItem.h"
#include "ConjugationSectionModel.h"
#include "CrashLog.h"
#include "Database.h"
#include "DatabaseQueue.h"
#include "SearchFormsModel.h"
#include "SearchResultsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbDetailTableViewController.h"
#include "VerbRef.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

// The forms section of the search, on a copy of the master: every reading of a
// typed conjugated form whatever the settings, and the conjugation screen
// opened at the one chosen.
namespace {

struct ChosenForm : SearchResultsTableViewControllerDelegate
{
    VerbPtr verb;
    QList<FormCell> cells;
    int plainResults = 0;
    void searchResultSelected(const VerbPtr &chosen) override
    {
        verb = chosen;
        ++plainResults;
    }
    void searchFormSelected(const VerbPtr &chosen, const QList<FormCell> &chosenCells) override
    {
        verb = chosen;
        cells = chosenCells;
    }
};

QStringList texts(const QAbstractItemModel &model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows << model.data(model.index(row, 0), SearchFormsModel::TextRole).toString();
    return rows;
}

QList<qint64> ids(const SearchResultsTableViewController &search)
{
    QList<qint64> list;
    for (const VerbPtr &verb : search.verbs())
        list << verb->id;
    return list;
}

// Per form row of a table section (or grid block): "pronoun form" when it is marked.
QStringList markedForms(const QAbstractItemModel &model, int row)
{
    QStringList marked;
    const QVariantList forms = model.data(model.index(row, 0), ConjugationSectionModel::FormsRole).toList();
    for (const QVariant &value : forms) {
        const auto *item = qobject_cast<ConjugationFormItem *>(value.value<QObject *>());
        if (item && item->matchesSearch())
            marked << (item->pronoun() + QLatin1Char(' ') + item->form()).trimmed();
    }
    return marked;
}

QStringList markedEverywhere(const QAbstractItemModel &model)
{
    QStringList marked;
    for (int row = 0; row < model.rowCount(); ++row)
        marked << markedForms(model, row);
    return marked;
}

} // namespace

class TestSearchForms : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<DatabaseQueue> m_queue;
    std::unique_ptr<SearchResultsTableViewController> m_search;
    std::unique_ptr<QAbstractItemModelTester> m_tester;

    int rowOf(const QString &text)
    {
        return int(texts(*m_search->forms()).indexOf(text));
    }

    // The conjugation screen as the home screen hands it the chosen reading.
    std::unique_ptr<VerbDetailTableViewController> open(VerbRef &ref)
    {
        auto screen = std::make_unique<VerbDetailTableViewController>();
        screen->setSettings(*m_settings);
        screen->setLaunchArguments({});
        screen->setQueue(m_queue);
        screen->setVerbObject(&ref);
        screen->viewDidLoad();
        return screen;
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        PreferredLanguages::setOverride({QStringLiteral("en-GB")});
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        const QString path = m_dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER_DB), path));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
        m_settings = std::make_unique<Settings>(m_dir.filePath(QStringLiteral("settings.json")));
        m_queue = std::make_shared<DatabaseQueue>(path);
        m_search = std::make_unique<SearchResultsTableViewController>();
        m_search->setSettings(m_settings.get());
        m_search->setQueue(m_queue);
        m_tester = std::make_unique<QAbstractItemModelTester>(m_search->forms(),
                                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(m_search->waitForForms());
    }

    void init()
    {
        m_settings->setBool(SettingsKeys::IncludeConjugations, false);
        m_settings->setBool(SettingsKeys::ShowTranslated, false);
        m_search->setDelegate(nullptr);
        m_search->search(QString());
    }

    void readings_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QStringList>("rows");
        const QString andavamo = QStringLiteral("andare · Indicative · Imperfect · noi");
        QTest::newRow("plain") << "andavamo" << QStringList{andavamo};
        QTest::newRow("case, accent and spaces") << " AndaVamo  " << QStringList{andavamo};
        QTest::newRow("accent left out") << "andro" << QStringList{QStringLiteral("andare · Indicative · Future · io")};
        QTest::newRow("compound") << "sono andata"
                                  << QStringList{QStringLiteral("andare · Indicative · Present Perfect · io")};
        QTest::newRow("clitic") << "mi alzo" << QStringList{QStringLiteral("alzarsi · Indicative · Present · io")};
        QTest::newRow("clitic after the verb")
                << "alzati"
                << QStringList{QStringLiteral("alzare · Past Participle · masculine plural"),
                               QStringLiteral("alzarsi · Past Participle · masculine plural"),
                               QStringLiteral("alzarsi · Imperative · tu")};
        // The imperative's lui/lei shows the subjunctive's form, and is listed as the table shows it.
        QTest::newRow("ambiguous") << "parli"
                                   << QStringList{QStringLiteral("parlare · Indicative · Present · tu"),
                                                  QStringLiteral("parlare · Imperative · lui/lei"),
                                                  QStringLiteral("parlare · Subjunctive · Present · io"),
                                                  QStringLiteral("parlare · Subjunctive · Present · tu"),
                                                  QStringLiteral("parlare · Subjunctive · Present · lui/lei")};
        QTest::newRow("infinitive, the verb itself") << "andare" << QStringList();
        QTest::newRow("prefix of a form") << "andava" << QStringList{QStringLiteral("andare · Indicative · Imperfect · lui/lei")};
        QTest::newRow("prefix of nothing") << "andavam" << QStringList();
        QTest::newRow("no form") << "xyzzy" << QStringList();
        QTest::newRow("spaces only") << "   " << QStringList();
    }

    // Whatever the settings: Include Conjugations off (the first-run value) and on.
    void readings()
    {
        QFETCH(QString, typed);
        QFETCH(QStringList, rows);
        for (const bool conjugations : {false, true}) {
            m_settings->setBool(SettingsKeys::IncludeConjugations, conjugations);
            m_search->search(typed);
            QCOMPARE(texts(*m_search->forms()), rows);
        }
    }

    void tenseNamesFollowTheSetting()
    {
        m_settings->setBool(SettingsKeys::ShowTranslated, true);
        m_search->search(QStringLiteral("andavamo"));
        QCOMPARE(texts(*m_search->forms()), QStringList{QStringLiteral("andare · Indicative · Imperfetto · noi")});
        Strings::shared().selectLanguage({QStringLiteral("de-DE")});
        m_settings->setBool(SettingsKeys::ShowTranslated, false);
        m_search->search(QStringLiteral("andavamo"));
        QCOMPARE(texts(*m_search->forms()), QStringList{QStringLiteral("andare · Indikativ · Imperfekt · noi")});
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
    }

    // The verbs under the section are the statement's, for the trimmed text.
    void resultsStayTheStatements_data()
    {
        QTest::addColumn<bool>("conjugations");
        QTest::addColumn<QString>("typed");
        QTest::newRow("form, conjugations off") << false << "andavamo";
        QTest::newRow("form, conjugations on") << true << "andavamo";
        QTest::newRow("ambiguous, conjugations on") << true << "parli";
        QTest::newRow("infinitive with a keyboard's space") << false << "andare ";
        QTest::newRow("spaces around") << true << "  fu  ";
    }
    void resultsStayTheStatements()
    {
        QFETCH(bool, conjugations);
        QFETCH(QString, typed);
        m_settings->setBool(SettingsKeys::IncludeConjugations, conjugations);
        SearchResultsTableViewController reference;
        reference.setStrategy(SearchResultsTableViewController::Strategy::Statement);
        reference.setSettings(m_settings.get());
        reference.setQueue(m_queue);
        reference.search(typed.trimmed());
        QVERIFY(m_search->waitForIndex());
        m_search->search(typed);
        QCOMPARE(ids(*m_search), ids(reference));
        QCOMPARE(m_search->query(), typed.trimmed());
    }

    void trimming()
    {
        m_search->search(QString());
        const QList<qint64> everything = ids(*m_search);
        QVERIFY(everything.size() > 1000);
        // A text of spaces is the empty search: the whole list, and no "No verbs found".
        m_search->search(QStringLiteral(" \t "));
        QCOMPARE(m_search->query(), QString());
        QCOMPARE(ids(*m_search), everything);

        m_search->search(QStringLiteral("andare"));
        const QList<qint64> andare = ids(*m_search);
        QVERIFY(!andare.isEmpty());
        m_search->search(QStringLiteral("andare "));
        QCOMPARE(ids(*m_search), andare);
        m_search->search(QStringLiteral("\u00a0andare\n"));
        QCOMPARE(ids(*m_search), andare);
    }

    void choosingAReadingOpensTheVerbAtIt()
    {
        ChosenForm chosen;
        m_search->setDelegate(&chosen);
        m_search->search(QStringLiteral("venivamo"));
        const int row = rowOf(QStringLiteral("venire · Indicative · Imperfect · noi"));
        QVERIFY(row >= 0);
        // As the row's tap, Enter or screen-reader press asks the section.
        m_search->forms()->select(row);
        QVERIFY(chosen.verb);
        QCOMPARE(chosen.verb->italian, QStringLiteral("venire"));
        QCOMPARE(chosen.plainResults, 0);
        QCOMPARE(chosen.cells.size(), 1);
        QCOMPARE(chosen.cells.first().type, QStringLiteral("8"));

        VerbRef ref(chosen.verb);
        ref.setMatches(chosen.cells);
        auto screen = open(ref);
        QCOMPARE(screen->selectedSegment(), 0);
        // Indicative sections: the verb row, presente, passato prossimo, imperfetto ...
        QCOMPARE(screen->matchedSection(), 3);
        QCOMPARE(markedEverywhere(*screen->tableModel()), QStringList{QStringLiteral("noi venivamo")});
        QCOMPARE(markedForms(*screen->tableModel(), 3), QStringList{QStringLiteral("noi venivamo")});
        QCOMPARE(markedForms(*screen->gridModel(), 2), QStringList{QStringLiteral("noi venivamo")});
        // A normal view: the history has it.
        int historyRows = 0;
        m_queue->inDatabase([&](Database &db) {
            if (auto rows = db.executeQuery(QStringLiteral("SELECT count(*) AS n FROM history WHERE verbid = ?"),
                                            {chosen.verb->id})) {
                if (rows->next())
                    historyRows = rows->intForColumn(QStringLiteral("n"));
                rows->close();
            }
        });
        QVERIFY(historyRows >= 1);
    }

    // "parli", chosen as the subjunctive's io: that mood opens with every cell
    // that is "parli" marked; the other moods mark theirs when shown.
    void ambiguousFormMarksEveryCellOfIt()
    {
        ChosenForm chosen;
        m_search->setDelegate(&chosen);
        m_search->search(QStringLiteral("parli"));
        const int row = rowOf(QStringLiteral("parlare · Subjunctive · Present · io"));
        QVERIFY(row >= 0);
        m_search->selectForm(row);
        QVERIFY(chosen.verb);
        QCOMPARE(chosen.verb->italian, QStringLiteral("parlare"));
        QCOMPARE(chosen.cells.size(), 5);
        QCOMPARE(chosen.cells.first().type, QStringLiteral("15"));

        VerbRef ref(chosen.verb);
        ref.setMatches(chosen.cells);
        auto screen = open(ref);
        QCOMPARE(screen->selectedSegment(), 1);
        QCOMPARE(screen->matchedSection(), 1);
        QCOMPARE(markedEverywhere(*screen->tableModel()),
                 (QStringList{QStringLiteral("che io parli"), QStringLiteral("che tu parli"),
                              QStringLiteral("che lui/lei parli")}));
        screen->selectVerbTypes(0);
        QCOMPARE(markedEverywhere(*screen->tableModel()), QStringList{QStringLiteral("tu parli")});
        QCOMPARE(screen->matchedSection(), 1);
        screen->selectVerbTypes(3);
        QCOMPARE(markedEverywhere(*screen->gridModel()), QStringList{QStringLiteral("lui/lei parli")});
        screen->selectVerbTypes(2);
        QCOMPARE(markedEverywhere(*screen->tableModel()), QStringList());
        QCOMPARE(screen->matchedSection(), -1);

        // The same screen then given a verb the plain way marks nothing.
        VerbRef plain(chosen.verb);
        screen->setVerbObject(&plain);
        screen->selectVerbTypes(1);
        QCOMPARE(markedEverywhere(*screen->tableModel()), QStringList());
    }

    void clitic()
    {
        ChosenForm chosen;
        m_search->setDelegate(&chosen);
        m_search->search(QStringLiteral("alzati"));
        const int row = rowOf(QStringLiteral("alzarsi · Imperative · tu"));
        QVERIFY(row >= 0);
        m_search->selectForm(row);
        QVERIFY(chosen.verb);
        QCOMPARE(chosen.verb->italian, QStringLiteral("alzarsi"));
        VerbRef ref(chosen.verb);
        ref.setMatches(chosen.cells);
        auto screen = open(ref);
        QCOMPARE(screen->selectedSegment(), 3);
        QCOMPARE(screen->matchedSection(), 1);
        // The participle of alzarsi is the same word, and marked too; alzare's is another verb's.
        QCOMPARE(markedEverywhere(*screen->tableModel()),
                 (QStringList{QStringLiteral("tu alzati"), QStringLiteral("alzati")}));
    }

    void withoutQueueNothingIsShownOrOpened()
    {
        SearchResultsTableViewController alone;
        ChosenForm chosen;
        alone.setDelegate(&chosen);
        alone.search(QStringLiteral("andavamo"));
        QCOMPARE(alone.forms()->count(), 0);
        alone.selectForm(0);
        QVERIFY(!chosen.verb);
    }
};

QTEST_MAIN(TestSearchForms)
#include "tst_searchforms.moc"
