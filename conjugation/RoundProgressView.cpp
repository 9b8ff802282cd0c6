#include "RoundProgressView.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <numbers>

namespace norvella {

RoundProgressView::RoundProgressView(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setOpaquePainting(false);
    setFillColor(Qt::transparent);
    setAntialiasing(true);
    m_frameTimer.setInterval(16);
    m_frameTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_frameTimer, &QTimer::timeout, this, &RoundProgressView::advanceAnimation);
}

void RoundProgressView::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemVisibleHasChanged) {
        setFlag(ItemHasContents, value.boolValue);
        if (value.boolValue)
            update();
    }
    QQuickPaintedItem::itemChange(change, value);
}

void RoundProgressView::setProgress(float progress)
{
    setProgress(progress, m_progress < progress);
}

void RoundProgressView::setProgress(float progress, bool animated)
{
    progress = std::clamp(progress, 0.0f, 1.0f);
    const float from = m_progress;
    if (animated && m_animationDuration > 0.0) {
        // The animation starts from the model value, not from whatever frame
        // a previous animation had reached, and replaces that animation.
        m_animationFrom = from;
        m_animationTo = progress;
        m_clock.start();
        setPresentationProgress(from);
        m_frameTimer.start();
    } else {
        m_frameTimer.stop();
        setPresentationProgress(progress);
    }
    if (from != progress) {
        m_progress = progress;
        emit progressChanged();
    }
}

void RoundProgressView::advanceAnimation()
{
    const double elapsed = double(m_clock.elapsed()) / (m_animationDuration * 1000.0);
    if (elapsed >= 1.0) {
        m_frameTimer.stop();
        setPresentationProgress(m_animationTo);
        return;
    }
    setPresentationProgress(m_animationFrom + float(elapsed) * (m_animationTo - m_animationFrom));
}

void RoundProgressView::setPresentationProgress(float value)
{
    if (value == m_presentationProgress)
        return;
    m_presentationProgress = value;
    emit presentationProgressChanged();
    update();
}

void RoundProgressView::setStartAngle(float radians)
{
    if (radians == m_startAngle)
        return;
    m_startAngle = radians;
    emit startAngleChanged();
    update();
}

void RoundProgressView::setTintColor(const QColor &color)
{
    if (color == m_tintColor)
        return;
    m_tintColor = color;
    emit tintColorChanged();
    update();
}

void RoundProgressView::setTrackColor(const QColor &color)
{
    if (color == m_trackColor)
        return;
    m_trackColor = color;
    emit trackColorChanged();
    update();
}

void RoundProgressView::setAnimationDuration(double seconds)
{
    if (seconds == m_animationDuration)
        return;
    m_animationDuration = seconds;
    emit animationDurationChanged();
}

void RoundProgressView::paint(QPainter *painter)
{
    const double w = width();
    const double h = height();
    const double r = std::min(w, h) * 0.5;
    if (r <= 0.0)
        return;
    const QPointF centre(w * 0.5, h * 0.5);
    const QRectF disc(centre.x() - r, centre.y() - r, 2 * r, 2 * r);

    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_trackColor);
    painter->drawEllipse(disc);

    const float progress = m_presentationProgress;
    if (progress <= 0.0f)
        return;
    painter->setBrush(m_tintColor);
    if (progress >= 1.0f) {
        painter->drawEllipse(disc);
        return;
    }
    // Qt measures angles counter-clockwise in degrees; the sector grows clockwise on screen.
    const double startDegrees = -double(m_startAngle) * 180.0 / std::numbers::pi;
    const double sweepDegrees = -double(progress) * 360.0;
    QPainterPath sector(centre);
    sector.arcTo(disc, startDegrees, sweepDegrees);
    sector.closeSubpath();
    painter->drawPath(sector);
}

} // namespace norvella
