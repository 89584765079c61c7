#include <process/omi_AlertListener.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

static std::atomic<int> g_signal{0};

int main() {
    omi_AlertListener& alerts = omi_Singleton<omi_AlertListener>::Instance();
    alerts.SetHandler(omi_AlertInterrupt, [](int signal) { g_signal = signal; });
    alerts.Arm();
    std::puts("ready");
    std::fflush(stdout);
    while (g_signal == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::printf("signal %d\n", g_signal.load());
}
