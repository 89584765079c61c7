#pragma once
#include <kzm_export.h>

#include <cstdint>

class omi_AlertListener;

// The alerts of a process; each reaches its handler as the Unix signal number beside it.
enum omi_AlertEnm : int {
    omi_AlertInterrupt = 0,  // 2
    omi_AlertTerminate = 1,  // 15
    omi_AlertSuspend = 2,    // 20
    omi_AlertContinue = 3,   // 18
    omi_AlertUser1 = 4,      // 10
    omi_AlertUser2 = 5,      // 12
};

// Sends alerts to the listener thread that ran when the trigger was made. A small value for any
// thread; not after the listener is disarmed, since the system may give the number to another one.
class KZM_API omi_AlertTrigger {
public:
    explicit omi_AlertTrigger(std::uint32_t threadId);             // 0: reaches nobody
    explicit omi_AlertTrigger(const omi_AlertListener& listener);  // reaches nobody if not armed

    // Whom it reaches, 0 for nobody.
    std::uint32_t ThreadId() const { return m_threadId; }

    // Returns without waiting for the handler, which must be set. Alerts of one thread are handled
    // in their order. Without a listener thread the alert is lost, and so is one for which there is
    // no room: Windows keeps 10000 waiting, Linux as many as memory holds. Takes a lock and memory:
    // not for code that interrupts its own thread, such as the handler of a Ctrl-C on Linux.
    void Alert(omi_AlertEnm alert) const;

private:
    friend struct kzm_Layout;
    std::uint32_t m_threadId;
};
