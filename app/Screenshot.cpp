#include "Screenshot.h"

#include <QCoreApplication>
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
        if (--m_framesLeft <= 0 && m_settled.elapsed() >= 600)
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

QSize parseSize(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{2,5})[xX](\\d{2,5})$"));
    const auto match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return {};
    return {match.captured(1).toInt(), match.captured(2).toInt()};
}

} // namespace norvella
