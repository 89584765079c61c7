#pragma once
#include <kzm_export.h>

#include <cstdint>

// Stop watch for wall time and processor time, in seconds. It is made stopped and at zero, runs
// between Start and Stop, and goes on where it stopped when it is started again. Readable at any
// time, also while it runs. Setting the system's clock does not disturb it.
class KZM_API omi_Timer {
public:
    // Stopped and at zero.
    omi_Timer();

    void Start();  // no effect while it runs
    void Stop();   // no effect while it stands
    void Reset();  // as newly made

    // Wall time during which it ran.
    double GetElapsedTime() const;

    // Wall time of the latest run: since the last Start, up to now or to the Stop after it. 0 if it
    // has not been started.
    double GetElapsedStartTime() const;

    // Processor time that all threads of the process took while it ran. Counts in the system's
    // steps, which on Windows are about 16 milliseconds.
    double GetTotalCpuTime() const;

private:
    friend struct kzm_Layout;
    struct Reading {
        std::int64_t wall;  // nanoseconds
        double processor;   // seconds
    };
    static Reading Now();
    Reading LatestRun() const;

    Reading m_start;   // of the latest run
    Reading m_latest;  // what that run took, once it has ended
    Reading m_before;  // what the runs before it took
    bool m_running;
};
