// The progress ring: clamping, animated growth and immediate decrease, drawing.
#include "RoundProgressView.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

#include <numbers>

using namespace norvella;

namespace {
QImage render(RoundProgressView &view)
{
    QImage image(int(view.width()), int(view.height()), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    view.paint(&painter);
    return image;
}

bool near(QRgb pixel, const QColor &colour)
{
    const QColor c = QColor::fromRgba(pixel);
    return qAbs(c.red() - colour.red()) <= 2 && qAbs(c.green() - colour.green()) <= 2
            && qAbs(c.blue() - colour.blue()) <= 2 && c.alpha() == 255;
}
} // namespace

class RoundProgressViewTest : public QObject
{
    Q_OBJECT

private slots:
    void defaults()
    {
        RoundProgressView view;
        QCOMPARE(view.progress(), 0.0f);
        QCOMPARE(view.startAngle(), 0.0f);
        QCOMPARE(view.animationDuration(), 0.25);
        QCOMPARE(view.tintColor(), QColor::fromRgbF(0.2f, 0.45f, 0.8f, 1.0f));
        QCOMPARE(view.trackColor(), QColor(Qt::white));
        QVERIFY(!view.opaquePainting());
    }

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
        view.setProgress(0.6f);
        // The model value is final at once; what is drawn catches up.
        QCOMPARE(view.progress(), 0.6f);
        QCOMPARE(changed.count(), 1);
        QVERIFY(view.isAnimating());
        QCOMPARE(view.presentationProgress(), 0.3f);
        QTRY_COMPARE(view.presentationProgress(), 0.6f);
        QVERIFY(!view.isAnimating());
    }

    void theAnimationLastsAnimationDuration()
    {
        RoundProgressView view;
        view.setAnimationDuration(5.0);
        view.setProgress(1.0f);
        QVERIFY(view.isAnimating());
        // Far from done after one event-loop pass, whatever the machine's speed.
        QCoreApplication::processEvents();
        QVERIFY(view.presentationProgress() < 1.0f);
        view.setAnimationDuration(0.0);
        view.setProgress(0.5f); // a decrease stops it and jumps
        QVERIFY(!view.isAnimating());
        QCOMPARE(view.presentationProgress(), 0.5f);
    }

    void decreaseJumpsAtOnce()
    {
        RoundProgressView view;
        view.setProgress(0.6f, false);
        view.setProgress(0.0f);
        QVERIFY(!view.isAnimating());
        QCOMPARE(view.progress(), 0.0f);
        QCOMPARE(view.presentationProgress(), 0.0f);
    }

    void aDecreaseDuringGrowthCancelsIt()
    {
        RoundProgressView view;
        view.setAnimationDuration(10.0);
        view.setProgress(0.9f);
        QVERIFY(view.isAnimating());
        view.setProgress(0.0f);
        QVERIFY(!view.isAnimating());
        QCOMPARE(view.presentationProgress(), 0.0f);
        QCoreApplication::processEvents();
        QCOMPARE(view.presentationProgress(), 0.0f);
    }

    void anEqualValueIsNotAnimated()
    {
        RoundProgressView view;
        view.setProgress(0.4f, false);
        QSignalSpy changed(&view, &RoundProgressView::progressChanged);
        view.setProgress(0.4f);
        QVERIFY(!view.isAnimating());
        QCOMPARE(changed.count(), 0);
    }

    void emptyDrawsOnlyTheTrack()
    {
        RoundProgressView view;
        view.setSize({40, 40});
        view.setTrackColor(QColor(200, 200, 200));
        view.setTintColor(QColor(1, 85, 179));
        const QImage image = render(view);
        QVERIFY(near(image.pixel(20, 20), QColor(200, 200, 200)));
        QVERIFY(near(image.pixel(30, 30), QColor(200, 200, 200)));
        QCOMPARE(qAlpha(image.pixel(1, 1)), 0); // outside the disc
    }

    void fullCoversTheDisc()
    {
        RoundProgressView view;
        view.setSize({40, 40});
        view.setTintColor(QColor(1, 85, 179));
        view.setProgress(1.0f, false);
        const QImage image = render(view);
        for (const QPoint p : {QPoint(20, 20), QPoint(10, 20), QPoint(30, 20), QPoint(20, 8), QPoint(20, 32)})
            QVERIFY(near(image.pixel(p), QColor(1, 85, 179)));
        QCOMPARE(qAlpha(image.pixel(1, 1)), 0);
    }

    void aQuarterSweepsClockwiseFromThreeOClock()
    {
        RoundProgressView view;
        view.setSize({40, 40});
        view.setTrackColor(Qt::white);
        view.setTintColor(QColor(1, 85, 179));
        view.setProgress(0.25f, false);
        QImage image = render(view);
        QVERIFY(near(image.pixel(28, 28), QColor(1, 85, 179))); // lower right
        QVERIFY(near(image.pixel(28, 12), Qt::white));          // upper right
        QVERIFY(near(image.pixel(12, 28), Qt::white));          // lower left

        view.setStartAngle(float(std::numbers::pi / 2)); // start at six o'clock
        image = render(view);
        QVERIFY(near(image.pixel(12, 28), QColor(1, 85, 179)));
        QVERIFY(near(image.pixel(28, 28), Qt::white));
    }

    void theDiscIsCentredWithHalfTheShorterSide()
    {
        RoundProgressView view;
        view.setSize({100, 40});
        view.setTrackColor(QColor(200, 200, 200));
        const QImage image = render(view);
        QVERIFY(near(image.pixel(50, 20), QColor(200, 200, 200)));
        QVERIFY(near(image.pixel(50, 2), QColor(200, 200, 200)));
        QVERIFY(near(image.pixel(68, 20), QColor(200, 200, 200)));
        QCOMPARE(qAlpha(image.pixel(25, 20)), 0);
        QCOMPARE(qAlpha(image.pixel(75, 20)), 0);
    }
};

QTEST_MAIN(RoundProgressViewTest)
#include "tst_roundprogressview.moc"
