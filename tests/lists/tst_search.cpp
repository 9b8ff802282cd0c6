#include "ListTestSupport.h"
#include "SearchResultsTableViewController.h"
#include "TestSupport.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace norvella;

namespace {
const QString Columns = QStringLiteral(
        "verb._id, voice_available, english, lower(italian) as italian, simplified_italian, german, simplified_german, "
        "french, simplified_french, dutch, simplified_dutch, spanish, simplified_spanish, portuguese, "
        "simplified_portuguese, substr(%1, 0, 1) as index_letter, favourite._id as favourite_available");

struct Chosen : SearchResultsTableViewControllerDelegate
{
    QList<VerbPtr> verbs;
    void searchResultSelected(const VerbPtr &verb) override { verbs.append(verb); }
};
} // namespace

class SearchTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::ListFixture> m_fixture;
    std::unique_ptr<SearchResultsTableViewController> m_search;

    QStringList resultsFor(const QString &text)
    {
        m_search->search(text);
        return test::italianColumn(*m_search);
    }

private slots:
    // Everything below holds for the index and for the statement it stands in for.
    void initTestCase_data()
    {
        QTest::addColumn<bool>("statement");
        QTest::newRow("index") << false;
        QTest::newRow("statement") << true;
    }

    void init()
    {
        m_fixture = std::make_unique<test::ListFixture>();
        QVERIFY(m_fixture->create());
        m_search = std::make_unique<SearchResultsTableViewController>();
        new QAbstractItemModelTester(m_search.get(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     m_search.get());
        m_search->setSettings(m_fixture->settings.get());
        m_search->setQueue(m_fixture->queue);
        QFETCH_GLOBAL(bool, statement);
        if (statement)
            m_search->setStrategy(SearchResultsTableViewController::Strategy::Statement);
        else
            QVERIFY(m_search->waitForIndex());
    }

    void cleanup()
    {
        m_search.reset();
        PreferredLanguages::clearOverride();
    }

    void statementFollowsTheSettings_data()
    {
        QTest::addColumn<QVariantMap>("stored");
        QTest::addColumn<QString>("preferred");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QVariantList>("arguments");

        const QString join = QStringLiteral("LEFT OUTER JOIN conjugation ON verb._id = conjugation.verbid");
        auto sql = [](const QString &order, const QString &where, const QString &join = {},
                      const QString &group = {}) {
            return QStringLiteral("SELECT ") + Columns.arg(order) + QStringLiteral(" FROM verb\n") + join
                    + QStringLiteral("\nLEFT OUTER JOIN favourite ON verb._id = favourite.verbid\nWHERE ") + where
                    + QStringLiteral("\n") + group + QStringLiteral("\nORDER BY ") + order;
        };
        const QString italianOnly = QStringLiteral("italian LIKE ? OR simplified_italian LIKE ?");

        QTest::newRow("nothing stored: from the start, Italian only")
                << QVariantMap{} << "en-GB" << sql("simplified_italian", italianOnly) << QVariantList{"and%", "and%"};
        QTest::newRow("anywhere")
                << QVariantMap{{"SearchFrom", "W"}} << "en-GB" << sql("simplified_italian", italianOnly)
                << QVariantList{"%and%", "%and%"};
        QTest::newRow("an unknown SearchFrom also matches anywhere")
                << QVariantMap{{"SearchFrom", "X"}} << "en-GB" << sql("simplified_italian", italianOnly)
                << QVariantList{"%and%", "%and%"};
        QTest::newRow("English names its column twice")
                << QVariantMap{{"IncludeEnglish", true}} << "en-GB"
                << sql("simplified_italian", italianOnly + " OR english LIKE ? OR english LIKE ?")
                << QVariantList{"and%", "and%", "and%", "and%"};
        // Each language's columns, by the setting or the device: tst_translationlanguages.
        QTest::newRow("an empty language code is automatic")
                << QVariantMap{{"IncludeEnglish", true}, {"translation_language", ""}, {"SortByLang", false}}
                << "fr-CH" << sql("simplified_french", italianOnly + " OR french LIKE ? OR simplified_french LIKE ?")
                << QVariantList{"and%", "and%", "and%", "and%"};
        QTest::newRow("Spanish, sorted by Italian")
                << QVariantMap{{"IncludeEnglish", true}, {"translation_language", "es"}} << "en-GB"
                << sql("simplified_italian", italianOnly + " OR spanish LIKE ? OR simplified_spanish LIKE ?")
                << QVariantList{"and%", "and%", "and%", "and%"};
        QTest::newRow("Dutch, Italian translation column, anywhere")
                << QVariantMap{{"IncludeEnglish", true}, {"translation_language", "it"}, {"SearchFrom", "W"},
                               {"SortByLang", false}}
                << "nl-NL" << sql("simplified_italian", italianOnly + " OR italian LIKE ? OR simplified_italian LIKE ?")
                << QVariantList{"%and%", "%and%", "%and%", "%and%"};
        QTest::newRow("conjugations")
                << QVariantMap{{"IncludeConjugations", true}} << "en-GB"
                << sql("simplified_italian", italianOnly + " OR conjugation.verb like ?", join, "GROUP BY verb._id")
                << QVariantList{"and%", "and%", "and%"};
        QTest::newRow("conjugations stored as a string count as off")
                << QVariantMap{{"IncludeConjugations", "1"}} << "en-GB" << sql("simplified_italian", italianOnly)
                << QVariantList{"and%", "and%"};
        QTest::newRow("everything, Dutch")
                << QVariantMap{{"IncludeEnglish", true}, {"IncludeConjugations", true}, {"SearchFrom", "W"},
                               {"translation_language", "nl"}, {"SortByLang", false}}
                << "en-GB"
                << sql("simplified_dutch",
                       italianOnly + " OR dutch LIKE ? OR simplified_dutch LIKE ? OR conjugation.verb like ?", join,
                       "GROUP BY verb._id")
                << QVariantList{"%and%", "%and%", "%and%", "%and%", "%and%"};
    }

    void statementFollowsTheSettings()
    {
        QFETCH(QVariantMap, stored);
        QFETCH(QString, preferred);
        QFETCH(QString, sql);
        QFETCH(QVariantList, arguments);
        for (auto it = stored.begin(); it != stored.end(); ++it)
            m_fixture->settings->setObject(it.key(), it.value());
        const auto statement = SearchResultsTableViewController::statement("and", *m_fixture->settings, {preferred});
        QCOMPARE(statement.sql, sql);
        QCOMPARE(statement.arguments, arguments);
        // Every combination is a statement the database accepts.
        PreferredLanguages::setOverride({preferred});
        m_search->search("and");
        QVERIFY(!m_fixture->log().contains("performing search"));
    }

    void resultsAreLowerCasedWithVoiceAndFavourite()
    {
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (6);"));
        QCOMPARE(resultsFor("Be"), QStringList{"bere"});
        const VerbPtr bere = m_search->verbs().first();
        QVERIFY(bere->voice_available);
        QVERIFY(bere->isFavourite);
        QCOMPARE(bere->german, QStringLiteral("trinken"));
        // The folded columns are not read into the record.
        QVERIFY(bere->simplified_german.isEmpty());
        QCOMPARE(m_search->query(), QStringLiteral("Be"));
        // Every result has a voice, whatever the column says.
        QVERIFY(!resultsFor("and").isEmpty());
        QVERIFY(m_search->verbs().first()->voice_available);
    }

    void matchingFollowsStartOrAnywhereAndFoldedForms()
    {
        QCOMPARE(resultsFor("an"), QStringList{"andare"});
        QCOMPARE(resultsFor("ARE"), QStringList{});
        m_fixture->settings->setString(SettingsKeys::SearchFrom, "W");
        QCOMPARE(resultsFor("ARE"), (QStringList{"amare", "andare", "cantare", "mangiare", "öffnare"}));
        m_fixture->settings->setString(SettingsKeys::SearchFrom, "S");
        // Accents: "offn" matches the folded form of "öffnare".
        QCOMPARE(resultsFor("offn"), QStringList{"öffnare"});
        QCOMPARE(resultsFor("to "), QStringList{});
        m_fixture->settings->setBool(SettingsKeys::IncludeEnglish, true);
        QCOMPARE(resultsFor("to g"), (QStringList{"alzarsi", "andare"}));
    }

    void emptyTextListsEveryVerb()
    {
        QCOMPARE(resultsFor("").size(), 9);
        QCOMPARE(resultsFor(QString()).size(), 9);
        QCOMPARE(m_search->query(), QString());
        m_fixture->settings->setString(SettingsKeys::SearchFrom, "W");
        QCOMPARE(resultsFor("").size(), 9);
    }

    void underscoreAndPercentTypedByTheUserAreWildcards()
    {
        QCOMPARE(resultsFor("_ndare"), QStringList{"andare"});
        QCOMPARE(resultsFor("a_"), (QStringList{"alzarsi", "amare", "andare"}));
        QCOMPARE(resultsFor("%are"), (QStringList{"amare", "andare", "cantare", "mangiare", "öffnare"}));
        QCOMPARE(resultsFor("%ere"), (QStringList{"bere", "essere"}));
        QCOMPARE(resultsFor("%").size(), 9);
        QCOMPARE(resultsFor("_").size(), 8);
        m_fixture->settings->setBool(SettingsKeys::IncludeEnglish, true);
        // Not an escape either: "sing_100%" is found through its wildcards.
        QCOMPARE(resultsFor("to sing_1"), QStringList{"cantare"});
        QCOMPARE(resultsFor("to sing%100"), QStringList{"cantare"});
    }

    void anyTextGivesResultsOrNoneNeverAnError_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quote") << "l'and";
        QTest::newRow("double quote") << "\"and";
        QTest::newRow("statement") << "'; DROP TABLE verb; --";
        QTest::newRow("backslash") << "\\%";
        QTest::newRow("emoji") << QStringLiteral("🇮🇹 andare 😀");
        QTest::newRow("lone surrogate") << QString(QChar(0xD83D));
        QTest::newRow("nul") << QString(QChar(0)) + "and";
        QTest::newRow("ten thousand characters") << QString(10000, QLatin1Char('a'));
        QTest::newRow("ten thousand emoji") << QStringLiteral("😀").repeated(5000);
        QTest::newRow("many wildcards") << QStringLiteral("%_").repeated(2000);
    }

    void anyTextGivesResultsOrNoneNeverAnError()
    {
        QFETCH(QString, text);
        for (const char *from : {"S", "W"}) {
            m_fixture->settings->setString(SettingsKeys::SearchFrom, from);
            m_fixture->settings->setBool(SettingsKeys::IncludeConjugations, true);
            m_search->search(text);
            QCOMPARE(m_search->query(), text);
            QVERIFY(m_search->rowCount() <= 9);
        }
        QVERIFY2(!m_fixture->log().contains("performing search"), qPrintable(m_fixture->log()));
        QCOMPARE(test::querySingleColumn(m_fixture->databasePath, "SELECT count(*) FROM verb"), QStringList{"9"});
    }

    void conjugationsListAVerbOnceWhileFavouriteDuplicatesShowTwice()
    {
        m_fixture->settings->setBool(SettingsKeys::IncludeConjugations, true);
        // "va..." matches "vado", "vai", "va" and "vanno" of andare: one row.
        QCOMPARE(resultsFor("va"), QStringList{"andare"});
        QCOMPARE(resultsFor("mi alz"), QStringList{"alzarsi"});
        m_fixture->settings->setBool(SettingsKeys::IncludeConjugations, false);
        QCOMPARE(resultsFor("va"), QStringList{});
        QVERIFY(test::runSql(m_fixture->databasePath, "INSERT INTO favourite(verbid) VALUES (1), (1);"));
        QCOMPARE(resultsFor("and"), (QStringList{"andare", "andare"}));
    }

    void sortedByTranslation()
    {
        m_fixture->settings->setBool(SettingsKeys::SortByLang, false);
        m_fixture->settings->setString(SettingsKeys::TranslationLanguage, "de");
        // By the German column: aufstehen, gehen, lieben.
        QCOMPARE(resultsFor("a"), (QStringList{"alzarsi", "andare", "amare"}));
        m_fixture->settings->setBool(SettingsKeys::SortByLang, true);
        QCOMPARE(resultsFor("a"), (QStringList{"alzarsi", "amare", "andare"}));
    }

    void failedSearchIsLoggedAndShowsNothing()
    {
        QCOMPARE(resultsFor("and").size(), 1);
        QVERIFY(m_fixture->breakSchema("DROP TABLE favourite;"));
        QCOMPARE(resultsFor("and"), QStringList{});
        QVERIFY(m_fixture->log().contains(
                QStringLiteral("An error occurred when performing search: no such table: favourite (1)")));
    }

    void withoutQueueTheResultsStayAsTheyWere()
    {
        QCOMPARE(resultsFor("and").size(), 1);
        QSignalSpy resets(m_search.get(), &QAbstractItemModel::modelReset);
        m_search->setQueue(nullptr);
        m_search->search("mang");
        QCOMPARE(m_search->query(), QStringLiteral("mang"));
        QVERIFY(m_search->verbs().isEmpty());
        QCOMPARE(resets.count(), 0);
        QCOMPARE(m_search->rowCount(), 1);
    }

    void choosingAResultTellsTheDelegate()
    {
        resultsFor("a");
        m_search->selectRow(0);
        Chosen chosen;
        m_search->setDelegate(&chosen);
        m_search->selectRow(1);
        m_search->selectRow(7);
        QCOMPARE(chosen.verbs.size(), 1);
        QCOMPARE(chosen.verbs.first(), m_search->verbs().at(1));
        m_search->setDelegate(nullptr);
    }
};

QTEST_GUILESS_MAIN(SearchTest)
#include "tst_search.moc"
