#include <gtest/gtest.h>
#include <omi/omi_IntTable.h>
#include <omi/omi_IntTableIterator.h>
#include <runtime/KZMBasSrmAllocator.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

// The same edits must end in the same bits on every platform, floating point included.
namespace {

TEST(Platforms, ReachTheSameTableOfNumbers) {
    std::minstd_rand rng(7);
    omi_IntTable<double, KZMBasOmiDefaultAllocator> table;
    double running = 0.1;
    for (int step = 0; step < 20000; ++step) {
        // Keys cluster around the edges of blocks, on both sides of zero.
        const int key = (static_cast<int>(rng() % 7) - 3) * (1 << 20) + static_cast<int>(rng() % 9);
        if (rng() % 3 == 0) {
            table.Remove(key);
        } else {
            running = running * 1.000001 + 1.0 / static_cast<double>(1 + rng() % 1000);
            double before = 0;
            table.ConstGetValue(key, before);
            table.Insert(key, std::sqrt(running) - before / 3.0f);
        }
    }
    std::uint64_t sum = 0x243F6A8885A308D3u;
    omi_IntTableIterator<double, KZMBasOmiDefaultAllocator> it(table);
    for (it.First(); !it.IsDone(); it.Next()) {
        const auto key = static_cast<std::uint64_t>(it.CurrentKey());
        for (const std::uint64_t bits : {key, std::bit_cast<std::uint64_t>(it.CurrentValue())})
            sum = (std::rotl(sum, 23) ^ bits) * 0x9E3779B97F4A7C15u;
    }
    EXPECT_EQ(sum, 6155995008960729064u);
}

}  // namespace
