#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class QQuickWindow;

namespace norvella {

// Saves the window as a PNG once it has really been drawn, then quits.
class Screenshot : public QObject
{
    Q_OBJECT
public:
    Screenshot(QQuickWindow *window, QString filePath, QObject *parent = nullptr);
    // Frames to let pass first: the first one may still show a half-laid-out scene.
    void start(int settleFrames = 3);
    // Set by the caller before start() when something must happen first (typing, opening a verb).
    int exitCode() const { return m_exitCode; }

private:
    void capture();
    bool transitionRunning() const;

    QQuickWindow *m_window;
    QString m_filePath;
    int m_framesLeft = 0;
    QElapsedTimer m_settled;
    int m_exitCode = 1;
    bool m_done = false;
};

// Prints "first-frame <ms>" when the window first reaches the screen, then
// quits: a cold start measured from outside ends at this line.
class FirstFrameReport : public QObject
{
    Q_OBJECT
public:
    // `sinceStart` runs from the top of main().
    FirstFrameReport(QQuickWindow *window, const QElapsedTimer &sinceStart, QObject *parent = nullptr);

private:
    QQuickWindow *m_window;
    QElapsedTimer m_sinceStart;
    bool m_done = false;
};

// Opens verbs one after another, each only once the previous one has been
// drawn with its page transition over, then prints the peak resident memory
// ("peak-rss <kB> kB") and quits. Opening is the caller's, so the run takes
// the same path as a user's tap.
class BrowseRun : public QObject
{
    Q_OBJECT
public:
    using Open = std::function<bool(const QString &italian)>;
    BrowseRun(QQuickWindow *window, QStringList verbs, Open open, QObject *parent = nullptr);
    void start();

private:
    void openNext();
    void frameSwapped();
    void finish(int exitCode);

    QQuickWindow *m_window;
    QStringList m_verbs;
    Open m_open;
    QTimer m_stall;
    int m_next = 0;
    bool m_waiting = false;
    bool m_done = false;
};

// VmHWM of this process in kB (the most it has ever had resident), -1 when unknown.
qint64 peakResidentKilobytes();

// "390x844" → 390×844; an invalid size for anything else.
QSize parseSize(const QString &text);

} // namespace norvella
