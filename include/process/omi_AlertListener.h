#pragma once
#include <kzm_export.h>
#include <process/omi_AlertTrigger.h>
#include <runtime/omi_Singleton.h>

#include <cstdint>

// The process's handlers for alerts, and the thread that calls them. One object:
//
//     omi_AlertListener& alerts = omi_Singleton<omi_AlertListener>::Instance();
//     alerts.SetHandler(omi_AlertUser1, &PrintProgress);  // void PrintProgress(int signal)
//     alerts.Arm();
//     omi_AlertTrigger(alerts).Alert(omi_AlertUser1);     // from any thread
//     alerts.Disarm();
//
// Handlers run on the listener thread, one at a time, inside the allocation library's thread lock
// (mem_TBThreadLock); a handler must not throw. The one of omi_AlertInterrupt also serves Ctrl-C
// while the listener is armed, and is then called by the system: outside the lock, in the middle of
// any other code (Linux) or on a thread of the system (Windows). See docs/alerts.md.
//
// Arm, Disarm and SetHandler belong to one thread; on Windows not while it runs the entry routine
// of a module. Whoever calls Disarm must not hold the thread lock, since a handler may be waiting
// for it. Disarm before the library is unloaded: on Windows an armed listener keeps it loaded, on
// Linux unloading waits for the handler that runs, which must then not need the loader.
class KZM_API omi_AlertListener : public omi_SingletonBase<omi_AlertListener> {
public:
    // Not armed, without handlers.
    omi_AlertListener();
    ~omi_AlertListener();  // as Disarm

    // Starts the listener thread unless it runs. Alerts posted after the return are not lost. If
    // the system has no thread to give, the listener is not armed afterwards, and nothing tells.
    void Arm();

    // Stops the listener thread if it runs: alerts posted before are still handled, later ones are
    // lost. Waits as long as a handler takes, so a handler must not call it. Handlers stay
    // installed for the next Arm.
    void Disarm();

    // Installs the handler of an alert; null takes it away. Set it before its alert can come:
    // an alert without a handler ends the process. Alerts that do not exist are ignored.
    void SetHandler(omi_AlertEnm alert, void (*handler)(int signal));

    std::uint32_t ThreadId() const { return m_threadId; }  // 0 while not armed

private:
    friend struct kzm_Layout;
    static constexpr int kAlerts = 6;

    static std::uint32_t Listen(void* listener) noexcept;

    void (*m_handlers[kAlerts])(int);
    std::uint32_t m_threadId;  // of the listening thread, 0 while there is none
    void* m_handle;            // of the thread; of the event that it starts with while Arm runs
};
KZM_DECLARE_SINGLETON(omi_AlertListener)
