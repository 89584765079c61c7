#include <process/alert_loop.h>
#include <process/omi_AlertListener.h>

omi_AlertTrigger::omi_AlertTrigger(std::uint32_t threadId) : m_threadId(threadId) {}

omi_AlertTrigger::omi_AlertTrigger(const omi_AlertListener& listener)
    : m_threadId(listener.ThreadId()) {}

// On Windows 0 would be the calling thread.
void omi_AlertTrigger::Alert(omi_AlertEnm alert) const {
    if (m_threadId != 0)
        platform::Post(m_threadId, {kAlertMessage, static_cast<std::uint32_t>(alert), 0});
}
