#pragma once
#include <process/omi_AlertListener.h>

#include <thread>

#include "progress.h"

namespace heat {

// What the job hears from outside while this object lives; one at a time. Ctrl-C (or SIGINT) and
// the terminate alert stop the job, the user alert 1 prints how far it is. SIGTERM and SIGUSR1 are
// passed on as these alerts.
class Alerts {
public:
    explicit Alerts(Progress& progress);
    ~Alerts();
    Alerts(const Alerts&) = delete;
    Alerts& operator=(const Alerts&) = delete;

    // Until this is called, a stop ends the process at once; from then on the job asks StopSignal
    // and brings its results home.
    void StopGently();

    int StopSignal() const;  // 2 after Ctrl-C, 15 after a terminate alert, 0 before

private:
    void PassSignalsOn(omi_AlertTrigger trigger);

    std::thread m_signals;
};

}  // namespace heat
