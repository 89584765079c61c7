#include "progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace heat {
namespace {

double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

Progress::Progress(bool isShown)
    : m_descriptor(isShown ? dup(STDOUT_FILENO) : -1), m_terminal(isatty(m_descriptor) == 1) {}

Progress::~Progress() {
    End();
    if (m_descriptor >= 0) close(m_descriptor);
}

void Progress::Begin(const char* phase) {
    End();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_running = true;
        m_start = Now();
        m_phase = phase;
        m_detail = "";
        m_fraction = -1;
        m_quarter = 0;
        m_stop = false;
    }
    if (m_terminal) {
        m_ticker = std::thread([this] {
            std::unique_lock<std::mutex> lock(m_mutex);
            do Redraw();
            while (
                !m_wake.wait_for(lock, std::chrono::milliseconds(200), [this] { return m_stop; }));
        });
    } else {
        char line[80];
        std::snprintf(line, sizeof line, "%s\n", phase);
        Print(line);
    }
}

void Progress::Detail(const char* detail) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_detail = detail;
}

void Progress::Fraction(double fraction) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (fraction > m_fraction) m_fraction = fraction;
    const int quarter = static_cast<int>(m_fraction * 4);
    if (m_terminal || quarter <= m_quarter || quarter >= 4) return;
    m_quarter = quarter;
    char line[80];
    std::snprintf(line, sizeof line, "%s: %d %%\n", m_phase, quarter * 25);
    Print(line);
}

void Progress::Tell() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_running) return;
    char done[16] = "";
    if (m_fraction >= 0) std::snprintf(done, sizeof done, "%.0f %%, ", 100 * m_fraction);
    char line[160];
    std::snprintf(line, sizeof line, "%s%s: %s%s%s%.1f s\n", m_terminal ? "\r\033[K" : "", m_phase,
                  m_detail, *m_detail ? ", " : "", done, Now() - m_start);
    Print(line);
}

void Progress::End() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_running) return;
        m_running = false;
        m_stop = true;
    }
    if (m_ticker.joinable()) {
        m_wake.notify_one();
        m_ticker.join();
        Print("\r\033[K");
    }
    m_phases.push_back({cow_String(m_phase), Now() - m_start});
}

void Progress::Redraw() {
    char bar[32] = "";
    if (m_fraction >= 0) {
        constexpr int kWidth = 20;
        const int filled = static_cast<int>(m_fraction * kWidth);
        bar[0] = '[';
        for (int i = 0; i < kWidth; ++i) bar[1 + i] = i < filled ? '#' : '.';
        std::strcpy(bar + 1 + kWidth, "]");
    }
    char line[160];
    std::snprintf(line, sizeof line, "\r\033[K%-12s %6.1f s  %s%s", m_phase, Now() - m_start, bar,
                  m_detail);
    Print(line);
}

void Progress::Print(const char* text) {
    std::fflush(stdout);
    [[maybe_unused]] const auto written = write(m_descriptor, text, std::strlen(text));
}

}  // namespace heat
