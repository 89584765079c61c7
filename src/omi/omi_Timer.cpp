#include <omi/omi_Timer.h>
#include <platform/platform.h>

#include <chrono>

omi_Timer::omi_Timer() { Reset(); }

void omi_Timer::Start() {
    if (m_running) return;
    m_before.wall += m_latest.wall;
    m_before.processor += m_latest.processor;
    m_latest = {};
    m_running = true;
    m_start = Now();
}

void omi_Timer::Stop() {
    if (!m_running) return;
    m_latest = LatestRun();
    m_running = false;
}

void omi_Timer::Reset() {
    m_start = m_latest = m_before = {};
    m_running = false;
}

double omi_Timer::GetElapsedTime() const {
    return 1e-9 * static_cast<double>(m_before.wall + LatestRun().wall);
}

double omi_Timer::GetElapsedStartTime() const {
    return 1e-9 * static_cast<double>(LatestRun().wall);
}

double omi_Timer::GetTotalCpuTime() const { return m_before.processor + LatestRun().processor; }

omi_Timer::Reading omi_Timer::Now() {
    const auto wall = std::chrono::steady_clock::now().time_since_epoch();
    return {std::chrono::duration_cast<std::chrono::nanoseconds>(wall).count(),
            platform::ProcessorSeconds()};
}

omi_Timer::Reading omi_Timer::LatestRun() const {
    if (!m_running) return m_latest;
    const Reading now = Now();
    return {now.wall - m_start.wall, now.processor - m_start.processor};
}
