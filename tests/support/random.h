#pragma once
#include <random>

// Random numbers that are the same on every platform.
class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    unsigned Below(unsigned n) { return static_cast<unsigned>(m_engine() % n); }
    bool OneIn(unsigned n) { return Below(n) == 0; }

    // Numbers as sparse data has them: in clusters around the edges of words, blocks and tables.
    // Uniform ones would never meet.
    unsigned Clustered() {
        static constexpr unsigned kEdges[] = {
            0, 32, 1024, 8192, 1u << 20, 1 << 21, 3u << 20, 0x7fffff00, 0x80000000, 0xfffffff0};
        return kEdges[Below(10)] + Below(48) - 16;
    }

private:
    std::minstd_rand m_engine;
};
