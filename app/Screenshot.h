#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QSize>
#include <QString>

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

    QQuickWindow *m_window;
    QString m_filePath;
    int m_framesLeft = 0;
    QElapsedTimer m_settled;
    int m_exitCode = 1;
    bool m_done = false;
};

// "390x844" → 390×844; an invalid size for anything else.
QSize parseSize(const QString &text);

} // namespace norvella
