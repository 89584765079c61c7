#include <alloc/mem_TBThreadLock.h>
#include <process/alert_loop.h>

#include <csignal>

namespace {

// Linux numbers, on every system.
constexpr int kSignals[] = {2, 15, 20, 18, 10, 12};
constexpr std::uint32_t kAlerts = sizeof kSignals / sizeof kSignals[0];

}  // namespace

std::uint32_t ServeAlerts(const AlertHandler* handlers, platform::Handle started) noexcept {
    if (handlers[0]) std::signal(SIGINT, handlers[0]);
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
    if (handlers[0]) std::signal(SIGINT, SIG_DFL);
    return stopped ? 0 : 1;
}
