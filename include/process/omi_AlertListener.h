#pragma once
#include <kzm_export.h>
#include <runtime/omi_Singleton.h>

#include <cstdint>

// The alerts of a process; each reaches its handler as the Unix signal number beside it.
enum omi_AlertEnm : int {
    omi_AlertInterrupt = 0,  // 2
    omi_AlertTerminate = 1,  // 15
    omi_AlertSuspend = 2,    // 20
    omi_AlertContinue = 3,   // 18
    omi_AlertUser1 = 4,      // 10
    omi_AlertUser2 = 5,      // 12
};

// The process's handlers for alerts.
class KZM_API omi_AlertListener : public omi_SingletonBase<omi_AlertListener> {
public:
    omi_AlertListener();
    ~omi_AlertListener();

    // Installs the handler of an alert; null takes it away. Alerts that do not exist are ignored.
    void SetHandler(omi_AlertEnm alert, void (*handler)(int signal));

private:
    friend struct kzm_Layout;
    static constexpr int kAlerts = 6;

    void (*m_handlers[kAlerts])(int);
    std::uint32_t m_threadId;  // of the listening thread, 0 while there is none
    void* m_handle;            // null while there is none
};
KZM_DECLARE_SINGLETON(omi_AlertListener)
