#include "Screenshot.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTimer>

#include <cstdio>

namespace norvella {

Screenshot::Screenshot(QQuickWindow *window, QString filePath, QObject *parent)
    : QObject(parent), m_window(window), m_filePath(std::move(filePath))
{
}

void Screenshot::start(int settleFrames)
{
    m_framesLeft = settleFrames;
    // Page transitions run for a few hundred milliseconds; draw at least that long.
    m_settled.start();
    connect(m_window, &QQuickWindow::frameSwapped, this, [this] {
        // Animations advance by frames, so on a busy machine 600 ms may not be
        // enough for a pushed page: wait until the stack has stopped moving.
        QObject *stack = m_window->findChild<QObject *>(QStringLiteral("stack"));
        const bool moving = stack && stack->property("busy").toBool();
        if (--m_framesLeft <= 0 && m_settled.elapsed() >= 600 && !moving)
            QTimer::singleShot(0, this, &Screenshot::capture);
        else
            QTimer::singleShot(16, m_window, [this] { m_window->update(); });
    });
    // An idle scene stops producing frames; nudge it, and give up after a while.
    QTimer::singleShot(0, m_window, [this] { m_window->update(); });
    QTimer::singleShot(8000, this, [this] {
        if (!m_done) {
            std::fprintf(stderr, "Screenshot: the window never finished drawing\n");
            capture();
        }
    });
}

void Screenshot::capture()
{
    if (m_done)
        return;
    m_done = true;
    const QImage image = m_window->grabWindow();
    if (image.isNull() || !image.save(m_filePath, "PNG")) {
        std::fprintf(stderr, "Screenshot: unable to save %s\n", qPrintable(m_filePath));
        m_exitCode = 1;
    } else {
        std::fprintf(stdout, "Saved the window (%dx%d) to %s\n", image.width(), image.height(), qPrintable(m_filePath));
        m_exitCode = 0;
    }
    QCoreApplication::exit(m_exitCode);
}

FirstFrameReport::FirstFrameReport(QQuickWindow *window, const QElapsedTimer &sinceStart, QObject *parent)
    : QObject(parent), m_window(window), m_sinceStart(sinceStart)
{
    // Direct: the render thread, where there is one, swaps; the time is taken there.
    connect(m_window, &QQuickWindow::frameSwapped, this, [this] {
        if (m_done)
            return;
        m_done = true;
        std::fprintf(stdout, "first-frame %lld\n", static_cast<long long>(m_sinceStart.elapsed()));
        std::fflush(stdout);
        QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    }, Qt::DirectConnection);
}

BrowseRun::BrowseRun(QQuickWindow *window, QStringList verbs, Open open, QObject *parent)
    : QObject(parent), m_window(window), m_verbs(std::move(verbs)), m_open(std::move(open))
{
}

void BrowseRun::start()
{
    connect(m_window, &QQuickWindow::frameSwapped, this, &BrowseRun::frameSwapped, Qt::QueuedConnection);
    // One verb takes well under a second; this long means the window stopped drawing.
    m_stall.setSingleShot(true);
    m_stall.setInterval(20000);
    connect(&m_stall, &QTimer::timeout, this, [this] {
        std::fprintf(stderr, "norvella: browsing stalled at verb %d of %lld\n", m_next,
                     static_cast<long long>(m_verbs.size()));
        finish(1);
    });
    QTimer::singleShot(0, this, &BrowseRun::openNext);
}

void BrowseRun::openNext()
{
    if (m_done)
        return;
    if (m_next >= m_verbs.size()) {
        finish(0);
        return;
    }
    if (!m_open(m_verbs.at(m_next))) {
        finish(2);
        return;
    }
    ++m_next;
    m_waiting = true;
    m_stall.start();
    m_window->update();
}

void BrowseRun::frameSwapped()
{
    if (m_done || !m_waiting)
        return;
    // The page that was replaced is destroyed only when the transition ends.
    const QObject *stack = m_window->findChild<QObject *>(QStringLiteral("stack"));
    if (stack && stack->property("busy").toBool()) {
        QTimer::singleShot(16, m_window, [this] { m_window->update(); });
        return;
    }
    m_waiting = false;
    QTimer::singleShot(0, this, &BrowseRun::openNext);
}

void BrowseRun::finish(int exitCode)
{
    if (m_done)
        return;
    m_done = true;
    m_stall.stop();
    if (exitCode == 0) {
        const qint64 peak = peakResidentKilobytes();
        if (peak < 0) {
            std::fprintf(stderr, "norvella: VmHWM is not available\n");
            exitCode = 1;
        } else {
            std::fprintf(stdout, "browsed %lld\npeak-rss %lld kB\n", static_cast<long long>(m_next),
                         static_cast<long long>(peak));
        }
    }
    std::fflush(stdout);
    QCoreApplication::exit(exitCode);
}

qint64 peakResidentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly | QIODevice::Text))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:")) {
            bool ok = false;
            const qint64 value = line.mid(6).trimmed().split(' ').value(0).toLongLong(&ok);
            return ok ? value : -1;
        }
    }
    return -1;
}

QSize parseSize(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{2,5})[xX](\\d{2,5})$"));
    const auto match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return {};
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}

} // namespace norvella
