#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "FavouritesTableViewController.h"
#include "SearchIndex.h"
#include "SearchResultsTableViewController.h"
#include "Settings.h"
#include "TestSupport.h"
#include "TranslationLanguages.h"
#include "VerbListTableViewController.h"
#include "VerbRepository.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

// Every translation language, chosen by the setting or by the device, through
// every screen that shows or orders by a translation. The one verb has a
// different text in every column, and every folded column differs from its
// plain one, so a language mapped to the wrong column, or a plain column
// taken for a folded one, shows the wrong text, the wrong section letter or
// the wrong match.
namespace {

constexpr char OneVerb[] = R"(
    INSERT INTO verb(_id, italian, simplified_italian, english, german, simplified_german, french, simplified_french,
                     spanish, simplified_spanish, dutch, simplified_dutch, portuguese, simplified_portuguese,
                     turkish, simplified_turkish, voice_available)
    VALUES (1, 'parlare', 'parlare', 'E english', 'G german', 'H german', 'F french', 'K french',
            'S spanish', 'U spanish', 'D dutch', 'J dutch', 'O portuguese', 'Q portuguese',
            'T turkish', 'V turkish', 1);
    INSERT INTO favourite(verbid) VALUES (1);
)";

// Every text of the verb that a search could match, so each language can be
// seen to match its own two and nothing else.
const QStringList everyTranslationText = {"E english", "G german",    "H german",     "F french",
                                          "K french",  "S spanish",   "U spanish",    "D dutch",
                                          "J dutch",   "O portuguese", "Q portuguese", "T turkish",
                                          "V turkish"};

} // namespace

class TranslationLanguagesTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<VerbRepository> m_repository;

    void choose(const QString &setting, const QString &device)
    {
        m_settings->clear();
        if (!setting.isEmpty())
            m_settings->setString(SettingsKeys::TranslationLanguage, setting);
        // Ordered and searched by the translation, matched anywhere.
        m_settings->setBool(SettingsKeys::SortByLang, false);
        m_settings->setBool(SettingsKeys::IncludeEnglish, true);
        m_settings->setString(SettingsKeys::SearchFrom, "W");
        PreferredLanguages::setOverride({device});
    }

    template<typename Model> QString shownTranslation(Model &model)
    {
        model.setSettings(m_settings.get());
        model.setRepository(m_repository.get());
        return model.rowCount() == 1 ? model.data(model.index(0), VerbTableModel::TranslationRole).toString()
                                     : QStringLiteral("<%1 rows>").arg(model.rowCount());
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        CrashLog::setLogFilePath(m_dir.filePath("norvella.log"));
        const QString path = m_dir.filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(path, OneVerb, false));
        m_settings = std::make_unique<Settings>(m_dir.filePath("settings.json"));
        m_repository = std::make_unique<VerbRepository>(std::make_shared<DatabaseQueue>(path), &SearchIndex::build);
        QVERIFY(m_repository->waitForSearchIndex());
    }

    void cleanupTestCase() { PreferredLanguages::clearOverride(); }

    void everyLanguageOnEveryScreen_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("device");
        // What the verb row shows, from a record with every field filled.
        QTest::addColumn<QString>("translation");
        // What the lists and the search show: their statements read no Turkish.
        QTest::addColumn<QString>("listed");
        // The alphabetical list's order column and the section it gives.
        QTest::addColumn<QString>("listOrder");
        QTest::addColumn<QString>("section");
        // The search's translation and folded columns, which also order it.
        QTest::addColumn<QString>("searchColumn");
        QTest::addColumn<QString>("searchFolded");

        auto row = [](const char *name, const char *setting, const char *device, const char *translation,
                      const char *listed, const char *listOrder, const char *section, const char *column,
                      const char *folded) {
            QTest::newRow(name) << QString(setting) << QString(device) << QString(translation) << QString(listed)
                                << QString(listOrder) << QString(section) << QString(column) << QString(folded);
        };
        row("en", "en", "de-DE", "E english", "E english", "english", "E", "english", "english");
        row("de", "de", "en-GB", "G german", "G german", "simplified_german", "H", "german", "simplified_german");
        row("fr", "fr", "en-GB", "F french", "F french", "simplified_french", "K", "french", "simplified_french");
        row("es", "es", "en-GB", "S spanish", "S spanish", "simplified_spanish", "U", "spanish", "simplified_spanish");
        row("nl", "nl", "en-GB", "D dutch", "D dutch", "simplified_dutch", "J", "dutch", "simplified_dutch");
        row("pt", "pt", "en-GB", "O portuguese", "O portuguese", "portuguese", "O", "portuguese",
            "simplified_portuguese");
        row("tr", "tr", "de-DE", "T turkish", "", "english", "E", "english", "english");
        // Italian as the translation language: the row does not repeat its own infinitive.
        row("it", "it", "de-DE", "parlare", "", "simplified_italian", "P", "italian", "simplified_italian");

        row("device en-US", "", "en-US", "E english", "E english", "english", "E", "english", "english");
        row("device de-AT", "", "de-AT", "G german", "G german", "simplified_german", "H", "german",
            "simplified_german");
        row("device fr-CA", "", "fr-CA", "F french", "F french", "simplified_french", "K", "french",
            "simplified_french");
        row("device es-MX", "", "es-MX", "S spanish", "S spanish", "simplified_spanish", "U", "spanish",
            "simplified_spanish");
        row("device nl-BE", "", "nl-BE", "D dutch", "D dutch", "simplified_dutch", "J", "dutch", "simplified_dutch");
        row("device pt-BR", "", "pt-BR", "O portuguese", "O portuguese", "portuguese", "O", "portuguese",
            "simplified_portuguese");
        // Turkish only ever by the setting.
        row("device tr-TR", "", "tr-TR", "E english", "E english", "english", "E", "english", "english");
        row("device it-IT", "", "it-IT", "parlare", "", "simplified_italian", "P", "italian",
            "simplified_italian");
    }

    void everyLanguageOnEveryScreen()
    {
        QFETCH(QString, setting);
        QFETCH(QString, device);
        QFETCH(QString, translation);
        QFETCH(QString, listed);
        QFETCH(QString, listOrder);
        QFETCH(QString, section);
        QFETCH(QString, searchColumn);
        QFETCH(QString, searchFolded);
        choose(setting, device);

        Verb full;
        full.italian = "parlare";
        full.english = "E english";
        full.german = "G german";
        full.french = "F french";
        full.spanish = "S spanish";
        full.dutch = "D dutch";
        full.portuguese = "O portuguese";
        full.turkish = "T turkish";
        QCOMPARE(full.translation(*m_settings), translation);

        // The alphabetical list, from its statement and from the index.
        QCOMPARE(VerbListTableViewController::sortColumn(*m_settings, PreferredLanguages::get()), listOrder);
        for (const bool fromIndex : {false, true}) {
            VerbListTableViewController list;
            list.setReadsFromIndex(fromIndex);
            list.setSettings(m_settings.get());
            list.setRepository(m_repository.get());
            list.reload();
            QCOMPARE(list.keys(), QStringList{section});
            QCOMPARE(shownTranslation(list), listed);
        }

        FavouritesTableViewController favourites;
        favourites.setSettings(m_settings.get());
        favourites.setRepository(m_repository.get());
        favourites.viewDidLoad();
        QCOMPARE(shownTranslation(favourites), listed);

        const auto statement = SearchResultsTableViewController::statement("x", *m_settings, PreferredLanguages::get());
        QVERIFY2(statement.sql.contains(QStringLiteral(" OR %1 LIKE ? OR %2 LIKE ?").arg(searchColumn, searchFolded)),
                 qPrintable(statement.sql));
        QVERIFY2(statement.sql.endsWith(QStringLiteral("ORDER BY ") + searchFolded), qPrintable(statement.sql));
        using Strategy = SearchResultsTableViewController::Strategy;
        for (const Strategy strategy : {Strategy::Statement, Strategy::Index}) {
            SearchResultsTableViewController search;
            search.setStrategy(strategy);
            search.setSettings(m_settings.get());
            search.setRepository(m_repository.get());
            // Its own two texts match; any other language's do not.
            for (const QString &text : everyTranslationText) {
                const bool own = text.endsWith(searchColumn.section('_', -1))
                        && (searchColumn != QLatin1String("italian"));
                search.search(text);
                QCOMPARE(search.rowCount(), own ? 1 : 0);
            }
            search.search("parl");
            QCOMPARE(shownTranslation(search), listed);
        }
    }
};

QTEST_GUILESS_MAIN(TranslationLanguagesTest)
#include "tst_translationlanguages.moc"
