#include <alloc/KZMBasAlloc.h>
#include <alloc/KZMBasAllocator.h>
#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

// Starts or stops the library for the length of a test.
struct RunningAlloc {
    RunningAlloc() { KZMBasAlloc_initialize(m_count); }
    ~RunningAlloc() { KZMBasAlloc_finalize(m_count); }
    int m_count = 0;
};
struct StoppedAlloc {  // however often it has been started
    StoppedAlloc() {
        for (; omi_SingletonRegistry::Instance(); ++m_starts) KZMBasAlloc_finalize(m_count);
    }
    ~StoppedAlloc() {
        for (; m_starts > 0; --m_starts) KZMBasAlloc_initialize(m_count);
    }
    int m_count = 0, m_starts = 0;
};

TEST(Heap, ZeroBytesAreNoExhaustionWhichThrowsAndKeepsTheBlock) {
    for (const auto take : {mem_Malloc, mem_OperatorNewThrow, mem_OperatorNewTinyThrow})
        mem_Free(take(0));
    char* const block = static_cast<char*>(mem_Malloc(16));
    std::strcpy(block, "kept");
    EXPECT_THROW(mem_Realloc(block, SIZE_MAX), std::bad_alloc);
    EXPECT_THROW(mem_Malloc(SIZE_MAX), std::bad_alloc);
    host_heap::Watch(1);
    EXPECT_THROW(mem_Realloc(block, 1000), std::bad_alloc);
    host_heap::Watch(1);
    EXPECT_EQ(KZMBasHeapAllocator().Alloc(8), nullptr);
    host_heap::Unwatch();
    EXPECT_STREQ(block, "kept");
    EXPECT_EQ(mem_Realloc(block, 0), nullptr);
}

// Aligned blocks whose bytes all tell their size.
unsigned char* Take(unsigned size) {
    void* const block = mem_OperatorNewTinyThrow(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % std::min(size & (0U - size), 16U), 0U);
    return static_cast<unsigned char*>(std::memset(block, static_cast<int>(size), size));
}
bool Intact(const unsigned char* block, unsigned size) {
    return std::count(block, block + size, size) == static_cast<long>(size);
}

TEST(TinyBlocks, CostLittleMoreThanTheirSizeAndMayGrow) {
    const RunningAlloc running;
    for (unsigned size = 1; size <= 40; ++size) {
        const std::size_t before = host_heap::SmallState().committedBytes;
        std::vector<unsigned char*> blocks(20000);
        for (unsigned char*& each : blocks) each = Take(size);
        EXPECT_LE(host_heap::SmallState().committedBytes - before,
                  (size + 3) / 4 * 100000 + 65536U);
        for (unsigned char*& each : blocks) {
            each = static_cast<unsigned char*>(mem_Realloc(each, size + 8));
            ASSERT_TRUE(Intact(each, size)) << size;
            mem_Free(each);
        }
    }
}

TEST(TinyBlocks, GiveTheirMemoryBackToOtherSizesAndToTheSystem) {
    const RunningAlloc running;
    std::vector<void*> blocks(200000);
    const auto mebibytes = [] {
        return static_cast<int>(host_heap::SmallState().committedBytes >> 20);
    };
    for (void*& each : blocks) each = mem_Malloc(512);
    const int most = mebibytes();
    for (void* const each : blocks) mem_Free(each);
    const int kept = mebibytes();
    EXPECT_LE(kept, most * 3 / 4);
    for (void*& each : blocks) each = mem_Malloc(32);
    EXPECT_EQ(mebibytes(), kept);
    for (void* const each : blocks) mem_Free(each);
}

// Threads hand blocks to each other through common slots and free what others took.
TEST(TinyBlocks, MayBeFreedByAnyThreadAndAfterTheStop) {
    const StoppedAlloc stopped;
    for (int cycle = 0; cycle < 3; ++cycle) {
        std::array<std::atomic<unsigned char*>, 512> slots{};
        std::atomic<int> damaged{0};
        const auto work = [&](unsigned seed) {
            std::minstd_rand rng(seed);
            for (int i = 0; i < 60000; ++i) {
                unsigned char* const fresh = Take(static_cast<unsigned>(rng() % 200 + 1));
                unsigned char* const taken = slots[rng() % slots.size()].exchange(fresh);
                if (taken && !Intact(taken, taken[0])) ++damaged;
                mem_Free(taken);
            }
        };
        {
            const RunningAlloc running;
            std::vector<std::thread> threads;
            for (unsigned seed = 1; seed <= 6; ++seed) threads.emplace_back(work, seed);
            for (std::thread& each : threads) each.join();
            EXPECT_EQ(damaged, 0);
            EXPECT_EQ(host_heap::SmallState().reserved, host_heap::SmallState().inUse);
        }
        unsigned char* const last = slots[0].exchange(nullptr);
        for (auto& slot : slots) mem_Free(slot);
        EXPECT_TRUE(Intact(last, last[0]));
        EXPECT_EQ(host_heap::SmallState().blocksOut, host_heap::SmallState().inUse ? 1U : 0U);
        mem_Free(last);
        EXPECT_FALSE(host_heap::SmallState().reserved);
    }
}

TEST(TinyBlocks, ComeFromTheHeapWhenThereAreNoAddresses) {
    const StoppedAlloc stopped;
    host_heap::RefuseRegion(true);
    {
        const RunningAlloc running;
        ForEveryAllocationFailure(
            [] { return 0; }, [](int&) { mem_Free(Take(4)); },
            [](int, bool) { EXPECT_FALSE(host_heap::SmallState().reserved); });
    }
    host_heap::RefuseRegion(false);
}

}  // namespace
