// The progress ring: clamping, animated growth and immediate decrease, drawing.
#include "RoundProgressView.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

#include <numbers>

using namespace norvella;

namespace {
const QColor tint(1, 85, 179);
const QColor track(200, 200, 200);
} // namespace

class RoundProgressViewTest : public QObject
{
    Q_OBJECT

private slots:
    void progressIsClamped()
    {
        RoundProgressView view;
        view.setProgress(1.5f);
        QCOMPARE(view.progress(), 1.0f);
        view.setProgress(-0.2f);
        QCOMPARE(view.progress(), 0.0f);
        QCOMPARE(view.presentationProgress(), 0.0f);
        view.setProgress(2.0f, false);
        QCOMPARE(view.presentationProgress(), 1.0f);
    }

    void growthIsAnimatedFromTheModelValue()
    {
        RoundProgressView view;
        view.setProgress(0.3f, false);
        QSignalSpy changed(&view, &RoundProgressView::progressChanged);
        view.setProgress(0.3f);
        QVERIFY(!view.isAnimating());
        QCOMPARE(changed.count(), 0);
        view.setProgress(0.6f);
        // The model value is final at once; what is drawn catches up.
        QCOMPARE(view.progress(), 0.6f);
        QCOMPARE(changed.count(), 1);
        QVERIFY(view.isAnimating());
        QCOMPARE(view.presentationProgress(), 0.3f);
        QTRY_COMPARE(view.presentationProgress(), 0.6f);
        QVERIFY(!view.isAnimating());
    }

    void aDecreaseJumpsAndCancelsGrowth()
    {
        RoundProgressView view;
        view.setAnimationDuration(5.0);
        view.setProgress(0.9f);
        QVERIFY(view.isAnimating());
        // Far from done after one event-loop pass, whatever the machine's speed.
        QCoreApplication::processEvents();
        QVERIFY(view.presentationProgress() < 0.9f);
        view.setProgress(0.2f);
        QVERIFY(!view.isAnimating());
        QCOMPARE(view.progress(), 0.2f);
        QCOMPARE(view.presentationProgress(), 0.2f);
        QCoreApplication::processEvents();
        QCOMPARE(view.presentationProgress(), 0.2f);
    }

    // Each probe is a point and the colour expected there; an invalid colour
    // means nothing is drawn.
    void drawing_data()
    {
        using Probes = QList<QPair<QPoint, QColor>>;
        QTest::addColumn<QSize>("size");
        QTest::addColumn<float>("progress");
        QTest::addColumn<float>("startAngle");
        QTest::addColumn<Probes>("probes");
        const QSize square(40, 40);
        QTest::newRow("empty shows the track") << square << 0.0f << 0.0f
                                               << Probes{{{20, 20}, track}, {{30, 30}, track}, {{1, 1}, {}}};
        QTest::newRow("full covers the disc")
                << square << 1.0f << 0.0f
                << Probes{{{20, 20}, tint}, {{10, 20}, tint}, {{30, 20}, tint},
                          {{20, 8}, tint}, {{20, 32}, tint}, {{1, 1}, {}}};
        QTest::newRow("a quarter sweeps clockwise from three o'clock")
                << square << 0.25f << 0.0f << Probes{{{28, 28}, tint}, {{28, 12}, track}, {{12, 28}, track}};
        QTest::newRow("a quarter from six o'clock")
                << square << 0.25f << float(std::numbers::pi / 2) << Probes{{{12, 28}, tint}, {{28, 28}, track}};
        QTest::newRow("centred, half the shorter side")
                << QSize(100, 40) << 0.0f << 0.0f
                << Probes{{{50, 20}, track}, {{50, 2}, track}, {{68, 20}, track}, {{25, 20}, {}}, {{75, 20}, {}}};
    }

    void drawing()
    {
        using Probes = QList<QPair<QPoint, QColor>>;
        QFETCH(QSize, size);
        QFETCH(float, progress);
        QFETCH(float, startAngle);
        QFETCH(Probes, probes);
        RoundProgressView view;
        view.setSize(size);
        view.setTrackColor(track);
        view.setTintColor(tint);
        view.setStartAngle(startAngle);
        view.setProgress(progress, false);
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        view.paint(&painter);
        painter.end();
        for (const auto &[point, expected] : probes) {
            const QColor c = QColor::fromRgba(image.pixel(point));
            const QString where = QStringLiteral("(%1, %2) is %3").arg(point.x()).arg(point.y())
                                          .arg(c.name(QColor::HexArgb));
            if (!expected.isValid()) {
                QVERIFY2(c.alpha() == 0, qPrintable(where));
                continue;
            }
            QVERIFY2(qAbs(c.red() - expected.red()) <= 2 && qAbs(c.green() - expected.green()) <= 2
                             && qAbs(c.blue() - expected.blue()) <= 2 && c.alpha() == 255,
                     qPrintable(where));
        }
    }
};

QTEST_MAIN(RoundProgressViewTest)
#include "tst_roundprogressview.moc"
