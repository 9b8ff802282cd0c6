#include "CrashLog.h"
#include "Database.h"
#include "SearchIndex.h"
#include "SearchResultsTableViewController.h"
#include "VerbListTableViewController.h"
#include "VerbRepository.h"
#include "Settings.h"
#include "TestSupport.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

using namespace norvella;

// The in-memory search must return exactly what the search statement returns:
// the same verbs, in the same order, with the same fields, for any text and
// any combination of the search settings.
namespace {

struct Combination
{
    bool includeEnglish;
    bool anywhere;
    bool includeConjugations;
    bool sortByLang;

    QString name() const
    {
        return QStringLiteral("english=%1 anywhere=%2 conjugations=%3 sortByLang=%4")
                .arg(includeEnglish)
                .arg(anywhere)
                .arg(includeConjugations)
                .arg(sortByLang);
    }
};

QList<Combination> allCombinations()
{
    QList<Combination> combinations;
    for (int bits = 0; bits < 16; ++bits)
        combinations.append({bool(bits & 1), bool(bits & 2), bool(bits & 4), bool(bits & 8)});
    return combinations;
}

// Every translation column and its sort order, and an unknown code (English).
const QStringList Languages = {"en", "de", "fr", "es", "nl", "pt", "it", "tr"};

void apply(Settings &settings, const Combination &combination, const QString &language)
{
    settings.setBool(SettingsKeys::IncludeEnglish, combination.includeEnglish);
    settings.setString(SettingsKeys::SearchFrom, combination.anywhere ? "W" : "S");
    settings.setBool(SettingsKeys::IncludeConjugations, combination.includeConjugations);
    settings.setBool(SettingsKeys::SortByLang, combination.sortByLang);
    settings.setString(SettingsKeys::TranslationLanguage, language);
}

QString describe(const Verb &verb)
{
    auto text = [](const QString &value) { return value.isNull() ? QStringLiteral("NULL") : '"' + value + '"'; };
    return QStringLiteral("#%1 %2 en=%3 de=%4 fr=%5 es=%6 nl=%7 pt=%8 fav=%9 voice=%10")
            .arg(verb.id)
            .arg(text(verb.italian), text(verb.english), text(verb.german), text(verb.french), text(verb.spanish),
                 text(verb.dutch), text(verb.portuguese))
            .arg(verb.isFavourite)
            .arg(verb.voice_available);
}

// Empty when the two result lists agree, else where they first differ.
QString difference(const QList<VerbPtr> &expected, const QList<VerbPtr> &actual)
{
    for (qsizetype i = 0; i < std::max(expected.size(), actual.size()); ++i) {
        const QString want = i < expected.size() ? describe(*expected[i]) : QStringLiteral("(none)");
        const QString got = i < actual.size() ? describe(*actual[i]) : QStringLiteral("(none)");
        if (want != got)
            return QStringLiteral("row %1 of %2/%3: statement %4, index %5")
                    .arg(i)
                    .arg(expected.size())
                    .arg(actual.size())
                    .arg(want, got);
    }
    return {};
}

QString printable(const QString &text)
{
    QString shown = text.left(40);
    shown.replace(QChar(0), QStringLiteral("\\0"));
    return '"' + shown + (text.size() > 40 ? QStringLiteral("…\" (%1 chars)").arg(text.size()) : QStringLiteral("\""));
}

// Texts no keyboard session would produce but a search field can receive.
QStringList oddTexts()
{
    return {QString(), "", "%", "_", "%%", "__", "%_", "_%_", "a%", "%a", "a%e", "a_e", "'", "\"", "l'a", "\\",
            "\\%", "[a]", "*", "?", " ", "  ", "a b", "to ", "\t", "è", "È", "é", "perché", "PERCHÉ", "perche", "ä",
            "ö", "ß", "ÿ", "İ", "ı", "ANDARE", "AnDaRe", QString(QChar(0)), QString(QChar(0)) + "a",
            "an" + QString(QChar(0)) + "x", QStringLiteral("😀"), QStringLiteral("a😀"), QStringLiteral("_😀"),
            QString(QChar(0xD83D)), QString(QChar(0xDE00)) + "a", QStringLiteral("\u0301"), QStringLiteral("e\u0301"),
            QString(300, QLatin1Char('a')), QString(300, QLatin1Char('_')), QStringLiteral("%_").repeated(500),
            QString(25000, QLatin1Char('a')),
            // Around SQLite's pattern limit (50,000 bytes): past it the statement fails.
            QString(49998, QLatin1Char('a')), QString(49999, QLatin1Char('a')), QString(60000, QLatin1Char('a')),
            QStringLiteral("è").repeated(25000)};
}

// Random pieces of real texts, the way a learner types them: prefixes and
// inner parts, upper-cased, with an accent dropped, with a wildcard typed.
QStringList typedTexts(const QStringList &sources, int count, quint32 seed)
{
    QRandomGenerator random(seed);
    QStringList texts;
    while (texts.size() < count) {
        QString source = sources.at(random.bounded(qsizetype(sources.size())));
        if (source.isEmpty())
            continue;
        const int length = 1 + random.bounded(std::min<int>(8, source.size()));
        const int start = random.bounded(3) == 0 ? 0 : random.bounded(source.size() - length + 1);
        QString text = source.mid(start, length);
        switch (random.bounded(10)) {
        case 0:
            text = text.toUpper();
            break;
        case 1:
            text = text.normalized(QString::NormalizationForm_D).remove(QRegularExpression("\\p{Mn}"));
            break;
        case 2:
            text[random.bounded(text.size())] = QLatin1Char('_');
            break;
        case 3:
            text.insert(random.bounded(text.size() + 1), QLatin1Char('%'));
            break;
        case 4:
            text = source;
            break;
        default:
            break;
        }
        texts.append(text);
    }
    return texts;
}

struct Searches
{
    SearchResultsTableViewController statement;
    SearchResultsTableViewController index;

    bool prepare(Settings &settings, const std::shared_ptr<DatabaseQueue> &queue)
    {
        for (auto *controller : {&statement, &index}) {
            controller->setSettings(&settings);
            controller->setQueue(queue);
        }
        statement.setStrategy(SearchResultsTableViewController::Strategy::Statement);
        return index.waitForIndex();
    }

    // Runs both; empty when they agree.
    QString compare(const QString &text)
    {
        statement.search(text);
        index.search(text);
        return difference(statement.verbs(), index.verbs());
    }
};

QByteArray lowerAscii(QByteArray text)
{
    for (char &c : text) {
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    }
    return text;
}

QString logOf(const QTemporaryDir &dir)
{
    QFile file(dir.filePath("norvella.log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class SearchIndexTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_path;
    std::unique_ptr<Settings> m_settings;
    std::shared_ptr<DatabaseQueue> m_queue;
    QStringList m_sources;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        const QString master = qEnvironmentVariable("NORVELLA_MASTER_DB");
        QVERIFY2(QFile::exists(master), "the master database is built before the tests run");
        CrashLog::setLogFilePath(m_dir.filePath("norvella.log"));
        PreferredLanguages::setOverride({"en-GB"});
        m_settings = std::make_unique<Settings>(m_dir.filePath("settings.json"));

        // About 300 real verbs with a quarter of their forms, the small shared
        // fixture, and rows that stress the edges: NULL and empty texts,
        // capitals, wildcards inside the data, a verb without forms, repeated
        // and dangling favourites.
        m_path = m_dir.filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(m_path, QStringLiteral(R"(
            ATTACH DATABASE '%1' AS master;
            INSERT INTO verb SELECT * FROM master.verb WHERE _id % 21 = 0;
            INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order, voice_file)
                SELECT verbid, pronounid, verb, conjugation_type_id, conj_order, voice_file FROM master.conjugation
                WHERE verbid % 21 = 0 AND conj_order % 4 = 1;
            DETACH DATABASE master;
            INSERT INTO verb(_id, italian, simplified_italian, english, german, simplified_german, french,
                             simplified_french, spanish, simplified_spanish, dutch, simplified_dutch, portuguese,
                             simplified_portuguese, voice_available) VALUES
                (900001, 'Öffnen', 'Offnen', 'To OPEN', '', '', NULL, NULL, 'abrir_%', 'abrir_%', 'OPENEN',
                 'OPENEN', 'ábrir', 'abrir', 0),
                (900002, 'perché', 'perche', '', 'warum', 'warum', 'pourquoi', 'pourquoi', 'por qué', 'por que',
                 'waarom', 'waarom', 'por quê', 'por que', 1),
                (900003, 'zz', 'zz', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0),
                (900004, 'andare', 'andare', 'to go', 'gehen', 'gehen', 'aller', 'aller', 'ir', 'ir', 'gaan',
                 'gaan', 'ir', 'ir', 0);
            INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order, voice_file) VALUES
                (900001, 1, 'ÖFFNE', 6, 10, NULL), (900001, 2, 'öffnest', 6, 11, NULL),
                (900001, 3, 'Offn_%', 6, 12, NULL), (900002, 1, '', 6, 10, NULL),
                (900004, 1, 'vado', 6, 10, NULL), (900004, 2, 'vado', 6, 11, NULL);
            INSERT INTO favourite(verbid) VALUES (900001), (900001), (2), (42), (NULL), (999999), (900004);
        )").arg(master)));
        m_queue = std::make_shared<DatabaseQueue>(m_path);

        const QStringList columns = {"italian", "simplified_italian", "english", "german", "french", "spanish",
                                     "dutch", "portuguese"};
        for (const QString &column : columns)
            m_sources += test::querySingleColumn(m_path, "SELECT " + column + " FROM verb WHERE " + column
                                                                 + " IS NOT NULL");
        m_sources += test::querySingleColumn(m_path, "SELECT verb FROM conjugation");
        QVERIFY(m_sources.size() > 5000);
    }

    void likeAgreesWithSqlite()
    {
        sqlite3 *db = nullptr;
        QCOMPARE(sqlite3_open(":memory:", &db), SQLITE_OK);
        sqlite3_stmt *statement = nullptr;
        QCOMPARE(sqlite3_prepare_v2(db, "SELECT ?1 LIKE ?2", -1, &statement, nullptr), SQLITE_OK);
        const QStringList texts = {"", "a", "ab", "abc", "aXbXc", "andavamo", "sono andato/a", "perché", "città",
                                   "%_", "a%b", "_", "😀x", "ab😀"};
        const QStringList patterns = {"", "%", "_", "%%", "__", "a", "a%", "%a", "%b%", "a_c", "a%c", "%a%a%",
                                      "_b%", "%_%_%_%", "%%b", "a__", "%c", "%é", "perch_", "citt_", "citt__",
                                      "%😀%", "_x", "%\\%", "%%_", "ab_", "%ato/_", "s%o%a%o%"};
        int compared = 0;
        for (const QString &text : texts) {
            for (const QString &pattern : patterns) {
                const QByteArray t = text.toUtf8();
                const QByteArray p = pattern.toUtf8();
                sqlite3_bind_text(statement, 1, t.constData(), int(t.size()), SQLITE_TRANSIENT);
                sqlite3_bind_text(statement, 2, p.constData(), int(p.size()), SQLITE_TRANSIENT);
                QCOMPARE(sqlite3_step(statement), SQLITE_ROW);
                const bool expected = sqlite3_column_int(statement, 0) != 0;
                sqlite3_reset(statement);
                QVERIFY2(SearchIndex::like(lowerAscii(p).constData(), lowerAscii(t).constData()) == expected,
                         qPrintable(text + " LIKE " + pattern));
                ++compared;
            }
        }
        sqlite3_finalize(statement);
        sqlite3_close(db);
        QCOMPARE(compared, texts.size() * patterns.size());
    }

    // At least 10,000 texts spread over every combination of the settings and
    // every translation language; the odd texts run in every combination.
    void indexAnswersLikeTheStatementOnAFixture()
    {
        Searches searches;
        QVERIFY(searches.prepare(*m_settings, m_queue));
        const QStringList typed = typedTexts(m_sources, 11000, 20261121);
        const QStringList odd = oddTexts();
        const QList<Combination> combinations = allCombinations();
        int compared = 0;
        int nonEmpty = 0;
        for (int c = 0; c < combinations.size(); ++c) {
            for (int l = 0; l < Languages.size(); ++l) {
                apply(*m_settings, combinations[c], Languages[l]);
                QStringList texts;
                // Each block takes its own slice of the typed texts.
                const int block = c * int(Languages.size()) + l;
                const int perBlock = int(typed.size()) / int(combinations.size() * Languages.size());
                texts += typed.mid(block * perBlock, perBlock);
                if (l == 0)
                    texts += odd;
                for (const QString &text : texts) {
                    const QString difference = searches.compare(text);
                    QVERIFY2(difference.isEmpty(),
                             qPrintable(combinations[c].name() + " language=" + Languages[l] + " text "
                                        + printable(text) + ": " + difference));
                    ++compared;
                    nonEmpty += searches.statement.verbs().isEmpty() ? 0 : 1;
                }
            }
        }
        QVERIFY(compared >= 10000);
        // The texts are real pieces of the data, so most find something.
        QVERIFY2(nonEmpty > compared / 2, qPrintable(QString::number(nonEmpty)));
    }

    // The alphabetical list reads the same index: same rows, order, sections
    // and fields as its own statement, for every sort column.
    void listAnswersLikeTheStatement()
    {
        VerbRepository repository(m_queue, &SearchIndex::build);
        QVERIFY(repository.waitForSearchIndex());
        VerbListTableViewController fromIndex, fromStatement;
        fromStatement.setReadsFromIndex(false);
        for (auto *list : {&fromIndex, &fromStatement}) {
            list->setSettings(m_settings.get());
            list->setRepository(&repository);
        }
        auto rows = [](const VerbListTableViewController &list) {
            QStringList lines;
            for (const QString &key : list.keys()) {
                for (const VerbPtr &verb : list.verbs().value(key))
                    lines << key + ' ' + describe(*verb) + ' ' + verb->simplified_italian + ' ' + verb->simplified_german
                                    + ' ' + verb->simplified_french + ' ' + verb->simplified_spanish + ' '
                                    + verb->simplified_dutch + ' ' + verb->simplified_portuguese + ' '
                                    + (verb->voice_available ? "voice" : "mute");
            }
            return lines;
        };
        for (const bool sortByLang : {true, false}) {
            for (const QString &language : Languages) {
                apply(*m_settings, {false, false, false, sortByLang}, language);
                fromIndex.reload();
                fromStatement.reload();
                // What the view reads, before anything has made the records.
                auto shown = [](const VerbListTableViewController &list) {
                    QStringList cells;
                    for (int row = 0; row < list.rowCount(); row += 7) {
                        const QModelIndex at = list.index(row);
                        cells << list.data(at, VerbTableModel::ItalianRole).toString() + '|'
                                        + list.data(at, VerbTableModel::TranslationRole).toString() + '|'
                                        + list.data(at, VerbTableModel::SectionRole).toString() + '|'
                                        + list.data(at, VerbTableModel::IsFavouriteRole).toString();
                    }
                    return cells;
                };
                QCOMPARE(shown(fromIndex), shown(fromStatement));
                const QStringList expected = rows(fromStatement);
                QVERIFY(expected.size() > 300);
                QCOMPARE(rows(fromIndex), expected);
                QCOMPARE(fromIndex.rowCount(), fromStatement.rowCount());
            }
        }
    }

    void favouritesAreReadAtEverySearch()
    {
        Searches searches;
        QVERIFY(searches.prepare(*m_settings, m_queue));
        for (const bool conjugations : {false, true}) {
            apply(*m_settings, {false, false, conjugations, true}, "en");
            QVERIFY(test::runSql(m_path, "INSERT INTO favourite(verbid) VALUES (900003), (900003);"));
            QVERIFY(searches.compare("zz").isEmpty());
            QCOMPARE(searches.index.verbs().size(), conjugations ? 1 : 2);
            QVERIFY(searches.index.verbs().first()->isFavourite);
            QVERIFY(test::runSql(m_path, "DELETE FROM favourite WHERE verbid = 900003;"));
            QVERIFY(searches.compare("zz").isEmpty());
            QVERIFY(!searches.index.verbs().first()->isFavourite);
        }
    }

    void tooLongPatternFailsAndIsLoggedLikeTheStatement()
    {
        Searches searches;
        QVERIFY(searches.prepare(*m_settings, m_queue));
        apply(*m_settings, {true, true, true, true}, "de");
        const qsizetype before = logOf(m_dir).count("LIKE or GLOB pattern too complex");
        // Both fail with the same line and show nothing.
        QVERIFY(searches.compare(QString(50000, QLatin1Char('a'))).isEmpty());
        QVERIFY(searches.index.verbs().isEmpty());
        QCOMPARE(logOf(m_dir).count("An error occurred when performing search: LIKE or GLOB pattern too complex (1)"),
                 before + 2);
    }

    void withoutAnIndexTheStatementAnswers()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(path, "DROP TABLE conjugation;"));
        auto queue = std::make_shared<DatabaseQueue>(path);
        SearchResultsTableViewController search;
        search.setSettings(m_settings.get());
        search.setQueue(queue);
        QVERIFY(!search.waitForIndex());
        QVERIFY(logOf(m_dir).contains("The search index could not be built, searching with the statement: "
                                      "no such table: conjugation"));
        apply(*m_settings, {false, false, false, true}, "en");
        search.search("and");
        QCOMPARE(search.verbs().size(), 1);
        QCOMPARE(search.verbs().first()->italian, QStringLiteral("andare"));
    }

    // A sample on the full database: its size and its real data, where the
    // fixture has only a slice.
    void indexAnswersLikeTheStatementOnTheMaster()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("verbs.db");
        QVERIFY(QFile::copy(qEnvironmentVariable("NORVELLA_MASTER_DB"), path));
        QVERIFY(test::runSql(path, "INSERT INTO favourite(verbid) VALUES (1), (1), (77), (5000);"));
        auto queue = std::make_shared<DatabaseQueue>(path);
        Searches searches;
        QVERIFY(searches.prepare(*m_settings, queue));
        // Kept short: with conjugations the statement takes about a second.
        const QStringList texts = {"andavamo", "è", "to eat", "perche", "_ss", "fossi", "sono st", "%ato", "mangi",
                                   "ar", "a", "", "gehen", "ÉS", "ir", "z"};
        const QList<Combination> combinations = allCombinations();
        for (int c = 0; c < combinations.size(); ++c) {
            apply(*m_settings, combinations[c], Languages[c % Languages.size()]);
            for (const int offset : {0, 3, 7, 11}) {
                const QString &text = texts[(c + offset) % texts.size()];
                const QString difference = searches.compare(text);
                QVERIFY2(difference.isEmpty(),
                         qPrintable(combinations[c].name() + " text " + printable(text) + ": " + difference));
            }
        }
    }
};

QTEST_GUILESS_MAIN(SearchIndexTest)
#include "tst_searchindex.moc"
