#include <alloc/mem_TBThreadLock.h>
#include <platform/platform.h>
#include <process/alert_loop.h>

#include <atomic>
#include <csignal>

namespace {

// Linux numbers, on every system.
constexpr int kSignals[] = {2, 15, 20, 18, 10, 12};
constexpr std::uint32_t kAlerts = sizeof kSignals / sizeof kSignals[0];

constinit std::atomic<std::uint32_t> g_servingThread{0};

}  // namespace

std::uint32_t ServeAlerts(const AlertHandler* handlers, platform::Handle started) noexcept {
    if (handlers[0]) std::signal(SIGINT, handlers[0]);
    g_servingThread = platform::ThreadId();
    platform::MakeQueue();
    platform::Signal(started);
    bool stopped = false;
    platform::Message message;
    while (!stopped && platform::NextMessage(message) && message.number == kAlertMessage) {
        mem_TBThreadLock(true);
        if (message.first < kAlerts)
            handlers[message.first](kSignals[message.first]);
        else if (message.first == kAlertStop)
            stopped = true;
        mem_TBThreadLock(false);
    }
    g_servingThread = 0;
    if (handlers[0]) std::signal(SIGINT, SIG_DFL);
    return stopped ? 0 : 1;
}

bool InAlertHandler() { return g_servingThread == platform::ThreadId(); }
