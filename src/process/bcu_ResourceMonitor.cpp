#include <platform/platform.h>
#include <process/bcu_ResourceMonitor.h>

KZM_DEFINE_SINGLETON(bcu_ResourceMonitor)

bcu_ResourceMonitor::bcu_ResourceMonitor() { Restart(); }
bcu_ResourceMonitor::~bcu_ResourceMonitor() {}

double bcu_ResourceMonitor::ElapsedSeconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

double bcu_ResourceMonitor::ProcessorSeconds() const {
    return platform::ProcessorSeconds() - m_processorAtStart;
}

void bcu_ResourceMonitor::Restart() {
    m_start = std::chrono::steady_clock::now();
    m_processorAtStart = platform::ProcessorSeconds();
}
