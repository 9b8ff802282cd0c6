#include "DatabaseCheck.h"

#include "VerbStore.h"
#include "WorkingCopy.h"

#include <sqlite3.h>

namespace norvella {

DatabaseCheck::DatabaseCheck(QString path) : m_path(std::move(path)) {}

DatabaseCheck::~DatabaseCheck()
{
    m_cancelled = true;
    {
        std::lock_guard lock(m_mutex);
        if (m_running)
            sqlite3_interrupt(m_running);
    }
    if (m_thread.joinable())
        m_thread.join();
}

void DatabaseCheck::start()
{
    if (!m_thread.joinable() && !m_cancelled)
        m_thread = std::thread([this] { run(); });
}

QString DatabaseCheck::wait()
{
    if (m_thread.joinable())
        m_thread.join();
    return m_problem;
}

void DatabaseCheck::run()
{
    const QString problem = WorkingCopy::fullCheck(m_path, [this](sqlite3 *db) {
        std::lock_guard lock(m_mutex);
        m_running = db;
        if (db && m_cancelled)
            sqlite3_interrupt(db);
    });
    if (!problem.isEmpty() && !m_cancelled)
        VerbStore::markDamaged(m_path, problem);
    m_problem = problem;
}

} // namespace norvella
