#pragma once
#include <cow/cow_String.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace heat {

struct Phase {
    cow_String name;
    double seconds;
};

// Says on standard output what the job is doing and keeps the time of each phase. On a terminal one
// line is redrawn with a bar and the seconds so far; elsewhere each phase is a plain line. Writes
// to the descriptor that standard output had at construction, so that it is heard while Silence
// mutes the libraries.
class Progress {
public:
    explicit Progress(bool isShown);  // if not, it keeps the time only
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Ends the phase before and starts the next one.
    void Begin(const char* phase);
    // What the phase is at, such as "surfaces"; the text must last.
    void Detail(const char* detail);
    // How much of the phase is done, 0 to 1; phases that never say so show no bar.
    void Fraction(double fraction);
    void End();

    // Prints how far the job is as a line of its own. For any thread.
    void Tell();

    const std::vector<Phase>& Phases() const { return m_phases; }

private:
    void Redraw();
    void Print(const char* text);

    const int m_descriptor;
    const bool m_terminal;
    std::vector<Phase> m_phases;

    std::mutex m_mutex;  // guards what Tell and the redrawing thread read
    std::condition_variable m_wake;
    bool m_running = false;
    bool m_stop = false;
    double m_start = 0;
    const char* m_phase = "";
    const char* m_detail = "";
    double m_fraction = -1;
    int m_quarter = 0;
    std::thread m_ticker;
};

}  // namespace heat
