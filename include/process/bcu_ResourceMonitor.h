#pragma once
#include <kzm_export.h>
#include <runtime/omi_Singleton.h>

#include <chrono>

// What the process has used since the monitor came to life or was last restarted.
class KZM_API bcu_ResourceMonitor : public omi_SingletonBase<bcu_ResourceMonitor> {
public:
    // Starts at once.
    bcu_ResourceMonitor();
    ~bcu_ResourceMonitor();

    // Wall time and processor time since the start; Restart makes both 0.
    double ElapsedSeconds() const;
    double ProcessorSeconds() const;  // of all threads together
    void Restart();

private:
    std::chrono::steady_clock::time_point m_start;
    double m_processorAtStart;
};
KZM_DECLARE_SINGLETON(bcu_ResourceMonitor)
