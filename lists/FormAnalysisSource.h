#pragma once

#include "FormAnalysis.h"

#include <QFutureWatcher>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <memory>

namespace norvella {

// The form analysis of one database, read on a pool thread on its own
// read-only connection (it reads every form, a few hundred milliseconds):
// the search asks it per keystroke and gets nothing until it is there.
class FormAnalysisSource : public QObject
{
    Q_OBJECT
public:
    explicit FormAnalysisSource(QObject *parent = nullptr);
    ~FormAnalysisSource() override;

    // Starts reading `path` unless it is already read, being read, or failed.
    // A different path drops what was read from the old one.
    void start(const QString &path);
    // The analysis once read, else null. A read that finished while the event
    // loop was busy is taken here.
    std::shared_ptr<const FormAnalysis> analysis();
    // Blocks until the read started ends; false when there is no analysis.
    bool wait();

signals:
    // Read in the background and taken without being asked for.
    void ready();

private:
    using Build = QFutureWatcher<std::shared_ptr<const FormAnalysis>>;
    // True when it took an analysis; the caller announces it or uses it.
    bool take();
    void stop();

    QString m_path;
    std::shared_ptr<const FormAnalysis> m_analysis;
    bool m_failed = false;
    QPointer<Build> m_build;
    std::shared_ptr<std::atomic_bool> m_cancel;
};

} // namespace norvella
