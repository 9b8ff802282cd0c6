// The scheduler against P. A. Wozniak's published description of SM-2:
// "Application of a computer to improve the results obtained in working with
// the SuperMemo method" (1990, adapted from his master's thesis "Optimization
// of learning", University of Technology in Poznan; published on the web 1998,
// supermemo.com, archives 1990-2015, english/ol/sm2). Its steps: E-Factor 2.5
// at first; I(1) = 1, I(2) = 6, I(n) = I(n-1) * EF rounded up; EF' = EF +
// (0.1 - (5-q)(0.08 + (5-q)*0.02)) with a floor of 1.3, q = 4 leaving it
// unchanged; a grade below 3 restarts the repetitions without changing EF;
// items graded below 4 come back the same day.
#include "Sm2.h"

#include <QtTest>

using namespace norvella;

class Sm2Test : public QObject
{
    Q_OBJECT

private slots:
    // The change the formula makes for each grade, as the description's
    // remark "for q=4 the E-Factor does not change" and its 0-5 scale give.
    void easinessChangePerGrade_data()
    {
        QTest::addColumn<int>("quality");
        QTest::addColumn<double>("change");
        QTest::newRow("5 perfect") << 5 << 0.10;
        QTest::newRow("4 hesitation") << 4 << 0.0;
        QTest::newRow("3 serious difficulty") << 3 << -0.14;
        QTest::newRow("2 wrong, seemed easy") << 2 << -0.32;
        QTest::newRow("1 wrong, recognised") << 1 << -0.54;
        QTest::newRow("0 blackout") << 0 << -0.80;
    }
    void easinessChangePerGrade()
    {
        QFETCH(int, quality);
        QFETCH(double, change);
        QVERIFY(qAbs(Sm2::nextEasiness(2.5, quality) - (2.5 + change)) < 1e-9);
    }

    // 1.38 - 0.14 would be 1.24: the floor holds, and stays.
    void easinessNeverFallsBelowTheFloor()
    {
        QVERIFY(qAbs(Sm2::nextEasiness(1.38, 3) - Sm2::MinimumEasiness) < 1e-9);
        QCOMPARE(Sm2::nextEasiness(Sm2::MinimumEasiness, 3), Sm2::MinimumEasiness);
        QCOMPARE(Sm2::nextEasiness(1.35, 0), Sm2::MinimumEasiness);
    }

    // A new item answered with a hesitation every time keeps EF = 2.5:
    // 1, 6, 6 x 2.5 = 15, 15 x 2.5 = 37.5 rounded up to 38, 38 x 2.5 = 95.
    void intervalsOfASteadyItem()
    {
        Sm2::State state;
        QList<int> intervals;
        for (int i = 0; i < 5; ++i) {
            state = Sm2::review(state, 4);
            intervals << state.interval;
        }
        QCOMPARE(intervals, (QList<int>{1, 6, 15, 38, 95}));
        QCOMPARE(state.repetitions, 5);
        QCOMPARE(state.easiness, 2.5);
    }

    // The interval grows by the E-Factor the item had when asked, and a
    // fraction is rounded up: 6 x 2.6 = 15.6 gives 16.
    void intervalUsesTheEasinessBeforeTheGrade()
    {
        Sm2::State state{2, 6, 2.6};
        state = Sm2::review(state, 3);
        QCOMPARE(state.interval, 16);
        QVERIFY(qAbs(state.easiness - 2.46) < 1e-9);
        QCOMPARE(state.repetitions, 3);
    }

    // A grade below 3 starts the item over, as if memorised anew, with its
    // E-Factor untouched; the intervals then run 1, 6, ... again.
    void aFailureRestartsWithoutChangingEasiness()
    {
        Sm2::State state{4, 38, 2.2};
        for (int quality : {0, 1, 2}) {
            const Sm2::State failed = Sm2::review(state, quality);
            QCOMPARE(failed.repetitions, 0);
            QCOMPARE(failed.interval, 1);
            QCOMPARE(failed.easiness, 2.2);
        }
        Sm2::State again = Sm2::review(Sm2::review(state, 1), 4);
        QCOMPARE(again.interval, 1);
        again = Sm2::review(again, 4);
        QCOMPARE(again.interval, 6);
        again = Sm2::review(again, 4);
        QCOMPARE(again.interval, int(std::ceil(6 * 2.2)));
    }

    void gradesBelowFourComeBackTheSameDay()
    {
        QVERIFY(Sm2::repeatToday(3));
        QVERIFY(!Sm2::repeatToday(4));
    }

    // Grades outside 0-5 (a damaged review row) are held to the scale.
    void gradesOutsideTheScaleAreClamped()
    {
        QCOMPARE(Sm2::review({}, 9), Sm2::review({}, 5));
        QCOMPARE(Sm2::review({}, -3), Sm2::review({}, 0));
    }
};

QTEST_GUILESS_MAIN(Sm2Test)
#include "tst_sm2.moc"
