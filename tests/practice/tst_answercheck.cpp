// Typed answers against the cells of the table, as the Produce drill checks them.
#include "AnswerCheck.h"

#include <QtTest>

using namespace norvella;

Q_DECLARE_METATYPE(norvella::PracticeResult)

class AnswerCheckTest : public QObject
{
    Q_OBJECT

private slots:
    void spellingsOfACell_data()
    {
        QTest::addColumn<QString>("cell");
        QTest::addColumn<QStringList>("spellings");
        QTest::newRow("plain") << "vado" << QStringList{"vado"};
        QTest::newRow("two variants") << "devo / debbo" << QStringList{"devo", "debbo"};
        QTest::newRow("pronominal compound") << "mi sono alzato/a" << QStringList{"mi sono alzato", "mi sono alzata"};
        QTest::newRow("plural endings") << "ci siamo alzati/e" << QStringList{"ci siamo alzati", "ci siamo alzate"};
        QTest::newRow("both auxiliaries")
                << "ho corso / sono corso/a" << QStringList{"ho corso", "sono corso", "sono corsa"};
        QTest::newRow("elided imperative") << "va' / vai" << QStringList{"va'", "vai"};
    }
    void spellingsOfACell()
    {
        QFETCH(QString, cell);
        QFETCH(QStringList, spellings);
        QCOMPARE(AnswerCheck::acceptedSpellings(cell), spellings);
    }

    void verdicts_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("cell");
        QTest::addColumn<PracticeResult>("result");
        QTest::addColumn<QString>("matched");
        const auto right = PracticeResult::Correct;
        const auto almost = PracticeResult::Almost;
        const auto wrong = PracticeResult::Wrong;
        QTest::newRow("exact") << "vado" << "vado" << right << "vado";
        QTest::newRow("case and spaces") << "  Mi  SONO alzata " << "mi sono alzato/a" << right << "mi sono alzata";
        QTest::newRow("second variant") << "debbo" << "devo / debbo" << right << "debbo";
        QTest::newRow("other auxiliary") << "sono corsa" << "ho corso / sono corso/a" << right << "sono corsa";
        QTest::newRow("subject pronoun allowed") << "io vado" << "vado" << right << "vado";
        QTest::newRow("typographic apostrophe") << QString::fromUtf8("va\u2019") << "va' / vai" << right << "va'";
        QTest::newRow("accent given") << QString::fromUtf8("è andato") << QString::fromUtf8("è andato/a") << right
                                      << QString::fromUtf8("è andato");
        QTest::newRow("decomposed accent") << QString::fromUtf8("e\u0300") << QString::fromUtf8("è") << right
                                           << QString::fromUtf8("è");
        QTest::newRow("accent missing") << "e andata" << QString::fromUtf8("è andato/a") << almost
                                        << QString::fromUtf8("è andata");
        QTest::newRow("apostrophe for accent") << "parlo' " << QString::fromUtf8("parlò") << almost
                                               << QString::fromUtf8("parlò");
        QTest::newRow("wrong accent") << QString::fromUtf8("parlò") << "parlo" << almost << "parlo";
        QTest::newRow("reflexive pronoun missing") << "sono alzato" << "mi sono alzato/a" << wrong << "";
        QTest::newRow("wrong gender ending") << "mi sono alzatu" << "mi sono alzato/a" << wrong << "";
        QTest::newRow("half a cell") << "devo / debbo" << "devo / debbo" << wrong << "";
        QTest::newRow("empty") << "   " << "vado" << wrong << "";
        QTest::newRow("regularised form") << "ando" << "vado" << wrong << "";
    }
    void verdicts()
    {
        QFETCH(QString, typed);
        QFETCH(QString, cell);
        QFETCH(PracticeResult, result);
        QFETCH(QString, matched);
        const AnswerVerdict verdict = AnswerCheck::check(typed, cell);
        QCOMPARE(verdict.result, result);
        QCOMPARE(verdict.matched, matched);
    }
};

QTEST_GUILESS_MAIN(AnswerCheckTest)
#include "tst_answercheck.moc"
