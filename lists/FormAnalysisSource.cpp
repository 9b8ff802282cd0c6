#include "FormAnalysisSource.h"

#include "CrashLog.h"

#include <QtConcurrent/QtConcurrentRun>

namespace norvella {

namespace {
std::shared_ptr<const FormAnalysis> readAnalysis(const QString &path, const std::shared_ptr<std::atomic_bool> &cancel)
{
    if (cancel->load())
        return nullptr;
    QString error;
    std::shared_ptr<const FormAnalysis> analysis = FormAnalysis::fromFile(path, &error, cancel.get());
    if (!analysis && !cancel->load())
        CrashLog::log(QStringLiteral("The form analysis could not be read, search shows no forms: ") + error);
    return analysis;
}
} // namespace

FormAnalysisSource::FormAnalysisSource(QObject *parent) : QObject(parent) {}

FormAnalysisSource::~FormAnalysisSource()
{
    stop();
}

void FormAnalysisSource::stop()
{
    // A quit or a new database must not wait for a read nobody will look at.
    if (m_cancel)
        *m_cancel = true;
    m_cancel.reset();
    delete m_build;
}

void FormAnalysisSource::start(const QString &path)
{
    if (path != m_path) {
        stop();
        m_path = path;
        m_analysis.reset();
        m_failed = false;
    }
    if (m_path.isEmpty() || m_analysis || m_failed || m_build)
        return;
    m_cancel = std::make_shared<std::atomic_bool>(false);
    auto *build = new Build(this);
    m_build = build;
    connect(build, &Build::finished, this, [this] {
        if (take())
            emit ready();
    });
    build->setFuture(QtConcurrent::run(readAnalysis, m_path, m_cancel));
}

bool FormAnalysisSource::take()
{
    Build *build = m_build;
    if (!build || !build->isFinished())
        return false;
    m_analysis = build->result();
    m_failed = !m_analysis;
    m_cancel.reset();
    build->deleteLater();
    m_build = nullptr;
    return m_analysis != nullptr;
}

std::shared_ptr<const FormAnalysis> FormAnalysisSource::analysis()
{
    if (!m_analysis && m_build && m_build->isFinished())
        take();
    return m_analysis;
}

bool FormAnalysisSource::wait()
{
    if (m_build) {
        m_build->waitForFinished();
        take();
    }
    return m_analysis != nullptr;
}

} // namespace norvella
