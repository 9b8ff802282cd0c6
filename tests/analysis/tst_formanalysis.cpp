// Form analysis over the built master: every form reads back as itself, and the
// inputs a learner types (accents left out, clitics, auxiliaries) find their verb.

#include "FormAnalysis.h"

#include <QTest>

#include <sqlite3.h>

using namespace norvella;

namespace {

QString describe(const QList<FormReading> &readings)
{
    QStringList lines;
    for (const FormReading &r : readings)
        lines << QStringLiteral("%1 %2 %3 %4").arg(r.infinitive, FormAnalysis::moodTag(r.type),
                                                   FormAnalysis::tenseTag(r.type), FormAnalysis::personTag(r));
    return lines.join(QStringLiteral("; "));
}

// "sono andato/a" stands for "sono andato" and "sono andata"; "devo / debbo" for both.
QStringList typedForms(const QString &cell)
{
    QStringList forms;
    for (const QString &variant : cell.split(QStringLiteral(" / "))) {
        QStringList words = variant.split(u' ');
        const QStringList genders = words.last().split(u'/');
        if (genders.size() == 1) {
            forms << variant;
            continue;
        }
        for (const QString &gender : genders) {
            words.last() = gender.size() == 1 ? genders[0].chopped(1) + gender : gender;
            forms << words.join(u' ');
        }
    }
    return forms;
}

} // namespace

class TestFormAnalysis : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QString error;
        m_analysis = FormAnalysis::fromFile(QStringLiteral(NORVELLA_MASTER_DB), &error);
        QVERIFY2(m_analysis, qPrintable(error));
        QVERIFY(m_analysis->keyCount() > 500000);
    }

    // Every form of the master, typed as shown, reads back as its own verb, tense
    // and person; the imperative's lui/lei and loro as the subjunctive they are.
    void everyFormReadsBackAsItself()
    {
        sqlite3 *db = nullptr;
        QCOMPARE(sqlite3_open_v2(NORVELLA_MASTER_DB, &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        sqlite3_stmt *rows = nullptr;
        QCOMPARE(sqlite3_prepare_v2(db, "SELECT verbid, conjugation_type_id, ifnull(pronounid, 0), verb FROM conjugation",
                                    -1, &rows, nullptr), SQLITE_OK);
        QStringList problems;
        qint64 checked = 0;
        while (sqlite3_step(rows) == SQLITE_ROW) {
            const qint64 verb = sqlite3_column_int64(rows, 0);
            int type = sqlite3_column_int(rows, 1);
            const int pronoun = sqlite3_column_int(rows, 2);
            if (type == 14 && (pronoun == 3 || pronoun == 6))
                type = 15;
            const QString cell = QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(rows, 3)));
            for (const QString &form : typedForms(cell)) {
                ++checked;
                const QList<FormReading> readings = m_analysis->analyse(form);
                const bool found = std::any_of(readings.cbegin(), readings.cend(), [&](const FormReading &r) {
                    return r.verbId == verb && r.type == type && r.pronoun == pronoun;
                });
                if (!found && problems.size() < 20)
                    problems << QStringLiteral("%1 (verb %2, type %3, person %4): %5")
                                        .arg(form).arg(verb).arg(type).arg(pronoun).arg(describe(readings));
            }
        }
        sqlite3_finalize(rows);
        sqlite3_close(db);
        QVERIFY(checked > 600000);
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void readings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        const auto rows = [](std::initializer_list<const char *> lines) {
            QStringList list;
            for (const char *line : lines)
                list << QString::fromUtf8(line);
            return list;
        };
        QTest::newRow("plain") << "andavamo" << rows({"andare ind imperfetto noi"});
        QTest::newRow("accent left out") << "andro" << rows({"andare ind futuro semplice io"});
        QTest::newRow("case and spaces") << "  AndAVAmo " << rows({"andare ind imperfetto noi"});
        QTest::newRow("ambiguous") << "parli"
                                   << rows({"parlare ind presente tu", "parlare cong presente io",
                                            "parlare cong presente tu", "parlare cong presente lui/lei"});
        QTest::newRow("auxiliary, feminine") << "sono andata" << rows({"andare ind passato prossimo io"});
        QTest::newRow("auxiliary, extra spaces") << "sono   andati" << rows({"andare ind passato prossimo loro"});
        QTest::newRow("clitic") << "mi alzo" << rows({"alzarsi ind presente io"});
        QTest::newRow("enclitic or participle") << "alzati"
                                                << rows({"alzare part passato m pl", "alzarsi part passato m pl",
                                                         "alzarsi imp presente tu"});
        QTest::newRow("clitic and auxiliary") << "ci siamo alzate"
                                              << rows({"alzarsi ind passato prossimo noi", "alzarsi cong passato noi"});
        QTest::newRow("elided ne, typographic apostrophe")
                << QString::fromUtf8("se n’è andata") << rows({"andarsene ind passato prossimo lui/lei"});
        QTest::newRow("truncated imperative with clitic") << "vattene" << rows({"andarsene imp presente tu"});
        // Object pronouns of a verb that has no pronominal entry for them.
        QTest::newRow("pronouns before, elided, negated")
                << "non te l'ho detto" << rows({"dire ind passato prossimo io"});
        QTest::newRow("pronouns before, not an imperative") << "lo prendi" << rows({"prendere ind presente tu"});
        QTest::newRow("short imperative doubles") << "dimmi" << rows({"dire imp presente tu"});
        QTest::newRow("short imperative, gli") << "dagli" << rows({"dare imp presente tu"});
        QTest::newRow("not doubled, not the short imperative") << "vali"
                                                              << rows({"valere ind presente tu", "valere imp presente tu"});
        QTest::newRow("a form, and another verb with a pronoun") << "fallo"
                                                                 << rows({"fallare ind presente io", "fallare ind passato remoto lui/lei",
                                                                          "fare imp presente tu"});
        QTest::newRow("infinitive in -rre") << "tradurlo" << rows({"tradurre inf presente -"});
        QTest::newRow("gerund, two pronouns") << "dandoglielo" << rows({"dare ger presente -"});
        QTest::newRow("second standard form") << "debbo" << rows({"dovere ind presente io"});
        QTest::newRow("essere") << QString::fromUtf8("è")
                                << rows({"essere ind presente lui/lei"});
        QTest::newRow("not a form") << "andavammo" << QStringList();
        QTest::newRow("half a compound") << "sono and" << QStringList();
        QTest::newRow("blank") << "   " << QStringList();
    }

    void readings()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        QStringList actual;
        for (const FormReading &r : m_analysis->analyse(text))
            actual << QStringLiteral("%1 %2 %3 %4").arg(r.infinitive, FormAnalysis::moodTag(r.type),
                                                        FormAnalysis::tenseTag(r.type), FormAnalysis::personTag(r));
        QCOMPARE(actual, expected);
    }

    void unreadableDatabase()
    {
        QString error;
        QVERIFY(!FormAnalysis::fromFile(QStringLiteral("/nonexistent/verbs.db"), &error));
        QVERIFY(!error.isEmpty());
    }

private:
    std::unique_ptr<FormAnalysis> m_analysis;
};

QTEST_GUILESS_MAIN(TestFormAnalysis)
#include "tst_formanalysis.moc"
