#pragma once

#include <QColor>
#include <QElapsedTimer>
#include <QQuickPaintedItem>
#include <QTimer>

namespace norvella {

// A small pie-chart progress indicator: a disc in the track colour with a
// sector in the tint colour growing clockwise from startAngle. Growth is
// animated, any decrease (a reset in particular) is drawn at once.
class RoundProgressView : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(float progress READ progress WRITE setProgress NOTIFY progressChanged)
    Q_PROPERTY(float startAngle READ startAngle WRITE setStartAngle NOTIFY startAngleChanged)
    Q_PROPERTY(QColor tintColor READ tintColor WRITE setTintColor NOTIFY tintColorChanged)
    Q_PROPERTY(QColor trackColor READ trackColor WRITE setTrackColor NOTIFY trackColorChanged)
    Q_PROPERTY(double animationDuration READ animationDuration WRITE setAnimationDuration NOTIFY animationDurationChanged)
    // What is drawn right now; differs from progress only while growing.
    Q_PROPERTY(float presentationProgress READ presentationProgress NOTIFY presentationProgressChanged)

public:
    explicit RoundProgressView(QQuickItem *parent = nullptr);

    // The model value: already final while an increase is still being animated.
    float progress() const { return m_progress; }
    void setProgress(float progress);
    void setProgress(float progress, bool animated);

    float startAngle() const { return m_startAngle; }
    void setStartAngle(float radians);
    QColor tintColor() const { return m_tintColor; }
    void setTintColor(const QColor &color);
    QColor trackColor() const { return m_trackColor; }
    void setTrackColor(const QColor &color);
    double animationDuration() const { return m_animationDuration; }
    void setAnimationDuration(double seconds);

    float presentationProgress() const { return m_presentationProgress; }
    bool isAnimating() const { return m_frameTimer.isActive(); }

    void paint(QPainter *painter) override;

signals:
    void progressChanged();
    void startAngleChanged();
    void tintColorChanged();
    void trackColorChanged();
    void animationDurationChanged();
    void presentationProgressChanged();

protected:
    // Drawn only while visible: the software renderer otherwise keeps an image
    // and a painter for every ring of every row, shown or not.
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    void setPresentationProgress(float value);
    void advanceAnimation();

    float m_progress = 0.0f;
    float m_presentationProgress = 0.0f;
    float m_startAngle = 0.0f;
    QColor m_tintColor = QColor::fromRgbF(0.2f, 0.45f, 0.8f, 1.0f);
    QColor m_trackColor = Qt::white;
    double m_animationDuration = 0.25;
    // Growth is interpolated on a frame timer of its own: with a QVariantAnimation,
    // the start-and-stop at the end of speech left Qt 6.4's shared animation
    // driver stopped and the window no longer drew.
    QTimer m_frameTimer;
    QElapsedTimer m_clock;
    float m_animationFrom = 0.0f;
    float m_animationTo = 0.0f;
};

} // namespace norvella
