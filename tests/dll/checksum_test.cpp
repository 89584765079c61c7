#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>

// Floating point must end in the same bits on every platform.
TEST(Platforms, ComputeTheSameBits) {
    double running = 0.1;
    std::uint64_t sum = 0x243F6A8885A308D3u;
    for (int step = 1; step <= 20000; ++step) {
        running = std::sqrt(running * 1.000001 + 1.0 / step) - running / 3.0f;
        sum = (std::rotl(sum, 23) ^ std::bit_cast<std::uint64_t>(running)) * 0x9E3779B97F4A7C15u;
    }
    EXPECT_EQ(sum, 3800912515718976073u);
}
