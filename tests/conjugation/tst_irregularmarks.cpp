#include "ConjugationFormItem.h"
#include "ConjugationGroups.h"
#include "ConjugationSectionModel.h"
#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "VerbDetailTableViewController.h"
#include "VerbExport.h"
#include "VerbLookup.h"
#include "VerbRef.h"

#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {

struct Cell
{
    QString form;
    QString markup;
    QString spoken;
    bool irregular = false;
};

// Every form row of one presentation of the selected mood, by form text.
QHash<QString, Cell> cells(QAbstractItemModel *model)
{
    QHash<QString, Cell> found;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QVariantList forms = model->data(model->index(row, 0), ConjugationSectionModel::FormsRole).toList();
        for (const QVariant &value : forms) {
            const auto *item = qobject_cast<ConjugationFormItem *>(value.value<QObject *>());
            found.insert(item->form(), {item->form(), item->formMarkup(), item->accessibleForm(), item->isIrregular()});
        }
    }
    return found;
}

} // namespace

// The marks the master stores, as the conjugation screen, its verb row and the
// exports show them, read from the built master itself.
class IrregularMarksTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<DatabaseQueue> m_queue;
    std::unique_ptr<VerbDetailTableViewController> m_screen;

    QString databasePath() const { return m_dir.filePath(QStringLiteral("verbs.db")); }

    VerbDetailTableViewController &open(const QString &italian)
    {
        m_screen.reset();
        const VerbPtr verb = verbByInfinitive(*m_queue, italian);
        if (!verb)
            qFatal("No verb %s in the master", qPrintable(italian));
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_settings);
        m_screen->setLaunchArguments({QStringLiteral("ui_test")});
        m_screen->setQueue(m_queue);
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        return *m_screen;
    }

    QString log() const { return QString::fromUtf8(test::readFile(CrashLog::logFilePath())); }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_dir.isValid());
    }

    void init()
    {
        PreferredLanguages::setOverride({QStringLiteral("en-GB")});
        Strings::shared().selectLanguage({QStringLiteral("en-GB")});
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        QFile::remove(CrashLog::logFilePath());
        m_screen.reset();
        m_queue.reset();
        // Connections closed, so no journal of the last test's copy is played into the next.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const char *suffix : {"", "-wal", "-shm", "-journal"})
            QFile::remove(databasePath() + QLatin1String(suffix));
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER_DB), databasePath()));
        QVERIFY(QFile::setPermissions(databasePath(), QFile::ReadOwner | QFile::WriteOwner));
        m_settings = std::make_unique<Settings>(m_dir.filePath(QStringLiteral("settings.json")));
        m_settings->clear();
        m_queue = std::make_shared<DatabaseQueue>(databasePath());
    }

    void cleanup()
    {
        m_screen.reset();
        PreferredLanguages::clearOverride();
    }

    void tableAndGridMarkEachVariant()
    {
        VerbDetailTableViewController &screen = open(QStringLiteral("andare"));
        for (QAbstractItemModel *model : {screen.tableModel(), screen.gridModel()}) {
            const QHash<QString, Cell> present = cells(model);
            QVERIFY(present.value("vado").irregular);
            QCOMPARE(present.value("vado").markup, QStringLiteral("<b><u>vado</u></b>"));
            QCOMPARE(present.value("vado").spoken, QStringLiteral("vado, irregular"));
            QVERIFY(present.contains("andiamo"));
            QVERIFY(!present.value("andiamo").irregular);
            QCOMPARE(present.value("andiamo").markup, QStringLiteral("andiamo"));
            QCOMPARE(present.value("andiamo").spoken, QStringLiteral("andiamo"));
        }
        screen.selectVerbTypes(ConjugationGroups::Other);
        QCOMPARE(cells(screen.tableModel()).value("va' / vai").markup, QStringLiteral("<b><u>va'</u></b> / <b><u>vai</u></b>"));

        // One variant of a cell irregular, the other regular.
        VerbDetailTableViewController &vedere = open(QStringLiteral("vedere"));
        vedere.selectVerbTypes(ConjugationGroups::Other);
        const Cell participle = cells(vedere.tableModel()).value("visto / veduto");
        QVERIFY(participle.irregular);
        QCOMPARE(participle.markup, QStringLiteral("<b><u>visto</u></b> / veduto"));
        QCOMPARE(participle.spoken, QStringLiteral("visto, irregular / veduto"));

        Strings::shared().selectLanguage({QStringLiteral("de")});
        QCOMPARE(cells(vedere.tableModel()).value("visto / veduto").spoken, QStringLiteral("visto, unregelmäßig / veduto"));
    }

    void aRegularVerbHasNoMarkAnywhere()
    {
        VerbDetailTableViewController &screen = open(QStringLiteral("parlare"));
        int forms = 0;
        for (int segment = 0; segment < 4; ++segment) {
            screen.selectVerbTypes(segment);
            for (const Cell &cell : cells(screen.tableModel())) {
                QVERIFY2(!cell.irregular && !cell.markup.contains('<'), qPrintable(cell.form));
                ++forms;
            }
        }
        QVERIFY(forms > 40);
    }

    void theVerbRowSaysHowItConjugates_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("sentence");
        QTest::addColumn<QString>("model");
        QTest::newRow("-are") << "parlare" << "en" << "regular (-are)" << "";
        QTest::newRow("-ere") << "credere" << "en" << "regular (-ere)" << "";
        QTest::newRow("-isc-") << "finire" << "en" << "regular (-ire, -isc-)" << "";
        QTest::newRow("irregular") << "andare" << "en" << "irregular" << "";
        QTest::newRow("model") << "divenire" << "en" << "conjugates like venire" << "venire";
        QTest::newRow("model, Italian") << "divenire" << "it" << "si coniuga come venire" << "venire";
        QTest::newRow("model, Turkish") << "divenire" << "tr" << "venire gibi çekimlenir" << "venire";
    }

    void theVerbRowSaysHowItConjugates()
    {
        QFETCH(QString, verb);
        QFETCH(QString, language);
        QFETCH(QString, sentence);
        QFETCH(QString, model);
        Strings::shared().selectLanguage({language});
        VerbDetailTableViewController &screen = open(verb);
        const QVariantMap pattern = screen.pattern();
        QCOMPARE(pattern.value("sentence").toString(), sentence);
        QCOMPARE(pattern.value("model").toString(), model);
        // The link sits inside the sentence, where the language puts it.
        QCOMPARE(pattern.value("before").toString() + pattern.value("model").toString() + pattern.value("after").toString(),
                 sentence);
        // The table's verb row carries the same.
        QCOMPARE(screen.tableModel()->data(screen.tableModel()->index(0, 0), ConjugationSectionModel::PatternRole).toMap(),
                 pattern);
    }

    void theModelVerbOpensLikeAListRow()
    {
        VerbDetailTableViewController &screen = open(QStringLiteral("divenire"));
        QString opened;
        connect(&screen, &VerbDetailTableViewController::openVerbRequested, this,
                [&](QObject *verb) { opened = VerbRef::from(verb) ? VerbRef::from(verb)->italian : QString(); });
        screen.openModelVerb();
        QCOMPARE(opened, QStringLiteral("venire"));

        // A verb without a model offers nothing to open.
        VerbDetailTableViewController &andare = open(QStringLiteral("andare"));
        QSignalSpy none(&andare, &VerbDetailTableViewController::openVerbRequested);
        andare.openModelVerb();
        QCOMPARE(none.count(), 0);
    }

    void exportsMarkTheFormsAndExplainTheMark()
    {
        VerbDetailTableViewController &screen = open(QStringLiteral("vedere"));
        const VerbExport::Result result = VerbExport(*m_settings).render(*screen.selectedVerb());
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        const QString &html = result.documents.html;
        const QString &text = result.documents.text;
        QVERIFY(html.contains("<strong class=irr>visto</strong> / veduto"));
        QVERIFY(html.contains("<td class=v>vediamo</td>"));
        QVERIFY(html.contains("Irregular forms are shown in bold and underlined."));
        QVERIFY(html.contains("<p class=pt>irregular</p>"));
        QVERIFY(text.contains("\tvisto* / veduto\n"));
        QVERIFY(text.contains("\tvediamo\n"));
        QVERIFY(text.trimmed().endsWith("Forms marked * are irregular."));

        VerbDetailTableViewController &parlare = open(QStringLiteral("parlare"));
        const VerbExport::Result regular = VerbExport(*m_settings).render(*parlare.selectedVerb());
        QCOMPARE(regular.status, VerbExport::Status::Rendered);
        QVERIFY(!regular.documents.html.contains("<strong class=irr>"));
        QVERIFY(!regular.documents.html.contains("Irregular forms are shown"));
        QVERIFY(!regular.documents.text.contains('*'));
        QVERIFY(regular.documents.text.contains("regular (-are)"));
    }

    // Last: the missing-column log line is written once per run.
    void aCopyFromBeforeTheMarksShowsThemPlainAndKeepsTheUsersData()
    {
        QVERIFY(test::runSql(databasePath(),
                             QStringLiteral("INSERT INTO favourite(verbid) SELECT _id FROM verb WHERE italian = 'andare';")
                                     + test::withoutPatternColumnsSql()
                                     // The forms as an older build wrote them: no marks.
                                     + QStringLiteral("CREATE TABLE old_forms AS SELECT verbid * 100 + conj_order AS _id, "
                                                      "verbid, pronounid, verb, conjugation_type_id, conj_order, voice_file "
                                                      "FROM conjugation;"
                                                      "DROP TABLE conjugation;"
                                                      "ALTER TABLE old_forms RENAME TO conjugation;"
                                                      "CREATE INDEX conjugation_verbid ON conjugation(verbid, conj_order);")));
        VerbDetailTableViewController &screen = open(QStringLiteral("andare"));
        const QHash<QString, Cell> present = cells(screen.tableModel());
        QVERIFY(present.contains("vado"));
        QVERIFY(!present.value("vado").irregular);
        QCOMPARE(screen.pattern().value("sentence").toString(), QString());
        QVERIFY(screen.isFavourite());
        open(QStringLiteral("venire"));
        QCOMPARE(log().count("Irregular marks are unavailable"), 1);
        QCOMPARE(test::querySingleColumn(databasePath(), "SELECT count(*) FROM favourite"), QStringList{"1"});
        QCOMPARE(test::querySingleColumn(databasePath(), "SELECT count(*) FROM history"), QStringList{"2"});
    }
};

QTEST_GUILESS_MAIN(IrregularMarksTest)
#include "tst_irregularmarks.moc"
