#pragma once

#include <QString>

#include <atomic>
#include <mutex>
#include <thread>

struct sqlite3;

namespace norvella {

// The whole-file check of the working copy, run on its own thread and
// connection after launch so the first frame does not wait for it. Damage it
// finds is recorded for the next launch, which repairs the copy; quitting
// interrupts it at once.
class DatabaseCheck
{
public:
    explicit DatabaseCheck(QString path);
    ~DatabaseCheck();
    DatabaseCheck(const DatabaseCheck &) = delete;
    DatabaseCheck &operator=(const DatabaseCheck &) = delete;

    void start();
    // Blocks until the check has ended; the problem it found, empty if none.
    QString wait();

private:
    void run();

    QString m_path;
    QString m_problem;
    std::thread m_thread;
    std::mutex m_mutex;
    sqlite3 *m_running = nullptr;
    std::atomic<bool> m_cancelled{false};
};

} // namespace norvella
