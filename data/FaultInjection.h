#pragma once

namespace norvella::FaultInjection {

// A named step of a write that must survive being killed. When the
// environment variable NORVELLA_KILL_AT holds N, the Nth step reached in this
// process kills it with SIGKILL, the way the system ends an app: no cleanup,
// no flush. The crash-safety tests walk N over every step of an update.
void point(const char *name);

} // namespace norvella::FaultInjection
