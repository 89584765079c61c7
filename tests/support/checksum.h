#pragma once
#include <bit>
#include <concepts>
#include <cstdint>

// One number over the final state of a randomised test. The test expects a constant, so that every
// platform must reach the very same state:
//
//     Checksum sum;
//     for (double v : list) sum.Add(v);
//     EXPECT_EQ(sum.Value(), 0x1F2E3D4C5B6A7988u);
//
// Integers count by value, whatever their size; floating-point numbers by their bits. Draw random
// numbers as rng() % n: distributions may differ.
class Checksum {
public:
    void Add(std::integral auto value) { Mix(static_cast<std::uint64_t>(value)); }
    void Add(double value) { Mix(std::bit_cast<std::uint64_t>(value)); }

    std::uint64_t Value() const { return m_value; }

private:
    void Mix(std::uint64_t value) {
        m_value = (std::rotl(m_value, 23) ^ value) * 0x9E3779B97F4A7C15u;
    }

    std::uint64_t m_value = 0x243F6A8885A308D3u;
};
