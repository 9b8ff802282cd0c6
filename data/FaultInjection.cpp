#include "FaultInjection.h"

#include <QtGlobal>

#include <atomic>
#include <csignal>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace norvella::FaultInjection {

namespace {
int killAt()
{
    static const int n = [] {
        bool ok = false;
        const int value = qEnvironmentVariableIntValue("NORVELLA_KILL_AT", &ok);
        return ok ? value : 0;
    }();
    return n;
}
std::atomic<int> reached{0};
} // namespace

void point(const char *name)
{
    const int n = killAt();
    if (n <= 0)
        return;
    if (reached.fetch_add(1) + 1 != n)
        return;
    std::fprintf(stderr, "norvella: killed at step %d (%s)\n", n, name);
    std::fflush(stderr);
#ifdef Q_OS_UNIX
    ::kill(::getpid(), SIGKILL);
#endif
    std::abort();
}

} // namespace norvella::FaultInjection
