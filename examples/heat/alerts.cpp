#include "alerts.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstdlib>

namespace heat {
namespace {

std::atomic<Progress*> g_progress{nullptr};
std::atomic<bool> g_isGentle{false};
std::atomic<int> g_stopSignal{0};
std::atomic<bool> g_isOver{false};

// Called in the middle of any other code, by Ctrl-C: only what a signal handler may do.
void Stop(int signal) {
    if (!g_isGentle) std::_Exit(128 + signal);
    g_stopSignal = signal;
}

void TellProgress(int) { g_progress.load()->Tell(); }

// A handler of these could not post an alert, which takes a lock. So every thread blocks them, and
// one waits for them.
sigset_t PassedOn() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    return signals;
}

}  // namespace

Alerts::Alerts(Progress& progress) {
    g_progress = &progress;
    g_isGentle = false;
    g_stopSignal = 0;
    g_isOver = false;
    const sigset_t signals = PassedOn();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // threads made later inherit it

    omi_AlertListener& listener = omi_Singleton<omi_AlertListener>::Instance();
    listener.SetHandler(omi_AlertInterrupt, &Stop);
    listener.SetHandler(omi_AlertTerminate, &Stop);
    listener.SetHandler(omi_AlertUser1, &TellProgress);
    listener.Arm();
    m_signals = std::thread([this, &listener] { PassSignalsOn(omi_AlertTrigger(listener)); });
}

Alerts::~Alerts() {
    g_isOver = true;
    pthread_kill(m_signals.native_handle(), SIGUSR1);
    m_signals.join();
    omi_Singleton<omi_AlertListener>::Instance().Disarm();
    const sigset_t signals = PassedOn();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void Alerts::StopGently() { g_isGentle = true; }

int Alerts::StopSignal() const { return g_stopSignal; }

void Alerts::PassSignalsOn(omi_AlertTrigger trigger) {
    const sigset_t signals = PassedOn();
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && !g_isOver) {
        trigger.Alert(signal == SIGTERM ? omi_AlertTerminate : omi_AlertUser1);
    }
}

}  // namespace heat
