#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>

namespace norvella::test {

// Root passes every permission check, so a read-only folder or an unreadable
// file means nothing to it. Dropping the override capabilities from the calling
// thread's effective set, while it lives, makes chmod bite as it does for a user.
class PermissionsEnforced
{
public:
    PermissionsEnforced()
    {
        if (::geteuid() != 0) {
            m_active = true;
            return;
        }
        if (::syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct lowered[2];
        std::memcpy(lowered, m_saved, sizeof lowered);
        lowered[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
        m_lowered = m_active = ::syscall(SYS_capset, &m_header, lowered) == 0;
    }
    ~PermissionsEnforced()
    {
        if (m_lowered)
            ::syscall(SYS_capset, &m_header, m_saved);
    }
    PermissionsEnforced(const PermissionsEnforced &) = delete;
    PermissionsEnforced &operator=(const PermissionsEnforced &) = delete;

    bool active() const { return m_active; }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
    bool m_active = false;
    bool m_lowered = false;
};

} // namespace norvella::test
