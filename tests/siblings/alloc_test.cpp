#include <alloc/KZMBasAlloc.h>
#include <alloc/KZMBasAllocator.h>
#include <alloc/KZMBasMemPoolCow.h>
#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <alloc/mem_TBThreadLock.h>
#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistryHook.h>
#include <alloc/tiny_heap_hook.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

// Runs the library for the length of a test, whether or not something else has started it.
struct RunningAlloc {
    RunningAlloc() { KZMBasAlloc_initialize(m_count); }
    ~RunningAlloc() { KZMBasAlloc_finalize(m_count); }
    int m_count = 0;
};

// Stops the library for the length of a test, however often it has been started.
struct StoppedAlloc {
    StoppedAlloc() {
        for (; omi_SingletonRegistry::Instance(); ++m_starts) KZMBasAlloc_finalize(m_count);
    }
    ~StoppedAlloc() {
        for (; m_starts > 0; --m_starts) KZMBasAlloc_initialize(m_count);
    }
    int m_count = 0;
    int m_starts = 0;
};

TEST(Heap, ZeroBytesAreNoExhaustion) {
    mem_Free(mem_Malloc(0));
    EXPECT_EQ(mem_Realloc(mem_Malloc(8), 0), nullptr);
    for (const auto take :
         {mem_OperatorNewThrow, mem_OperatorNewThrowBuiltin, mem_OperatorNewTinyThrow}) {
        void* const block = take(0);
        EXPECT_NE(block, nullptr);
        mem_Free(block);
    }
    mem_Free(nullptr);
}

TEST(Heap, ExhaustionThrowsAndKeepsTheBlock) {
    char* const block = static_cast<char*>(mem_Malloc(16));
    std::strcpy(block, "kept");
    EXPECT_THROW(mem_Realloc(block, SIZE_MAX), std::bad_alloc);
    host_heap::Watch(1);
    EXPECT_THROW(mem_Realloc(block, 1000), std::bad_alloc);
    host_heap::Unwatch();
    EXPECT_STREQ(block, "kept");
    mem_Free(block);
    EXPECT_THROW(mem_Malloc(SIZE_MAX), std::bad_alloc);
    KZMBasHeapAllocator heap;
    host_heap::Watch(1);
    EXPECT_EQ(heap.Alloc(8), nullptr);
    host_heap::Unwatch();
    unsigned granted = 0;
    KZMBasAllocator& allocator = heap;
    allocator.deallocate(allocator.Alloc(8, granted), 8);
    EXPECT_GE(granted, 8U);
}

// A block that knows its size and what must stand in it.
struct Marked {
    unsigned char* bytes;
    unsigned size;

    static Marked Take(unsigned size) {
        auto* const bytes = static_cast<unsigned char*>(mem_OperatorNewTinyThrow(size));
        std::memset(bytes, static_cast<int>(size * 7), size);
        return {bytes, size};
    }
    bool Intact() const {
        return std::all_of(bytes, bytes + size,
                           [this](unsigned char b) { return b == (size * 7) % 256; });
    }
};

TEST(TinyBlocks, AreAlignedIntactAndCostLittleMoreThanTheirSize) {
    const RunningAlloc running;
    constexpr unsigned kBlocks = 20000;
    for (unsigned size = 1; size <= 40; ++size) {
        SCOPED_TRACE(size);
        const std::size_t before = mem_TinyState().committedBytes;
        std::vector<Marked> blocks;
        for (unsigned i = 0; i < kBlocks; ++i) blocks.push_back(Marked::Take(size));
        for (const Marked& each : blocks) {
            ASSERT_TRUE(each.Intact());
            const auto alignment = std::min<std::size_t>(size & (0U - size), 16);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(each.bytes) % alignment, 0U);
        }
        const std::size_t cost = mem_TinyState().committedBytes - before;
        EXPECT_LE(cost, (size + 3) / 4 * 5 * kBlocks + 65536U);
        for (const Marked& each : blocks) mem_Free(each.bytes);
    }
}

TEST(TinyBlocks, ReallocKeepsTheContents) {
    for (const unsigned size : {1U, 4U, 31U, 32U}) {
        Marked block = Marked::Take(size);
        for (const std::size_t grown : {33, 5, 1000, 32}) {
            block.bytes = static_cast<unsigned char*>(mem_Realloc(block.bytes, grown));
            block.size = std::min(block.size, static_cast<unsigned>(grown));
            EXPECT_TRUE(std::count(block.bytes, block.bytes + block.size, block.bytes[0]) ==
                        static_cast<long>(block.size));
        }
        EXPECT_EQ(mem_Realloc(block.bytes, 0), nullptr);
    }
}

// Threads hand blocks to each other through common slots and free what others took.
TEST(TinyBlocks, MayBeFreedByAnyThread) {
    const StoppedAlloc stopped;
    for (int cycle = 0; cycle < 3; ++cycle) {
        const RunningAlloc running;
        std::array<std::atomic<unsigned char*>, 512> slots{};
        std::atomic<int> damaged{0};
        const auto work = [&](unsigned seed) {
            std::minstd_rand rng(seed);
            for (int i = 0; i < 60000; ++i) {
                const Marked block = Marked::Take(static_cast<unsigned>(rng() % 32 + 1));
                block.bytes[0] = static_cast<unsigned char>(block.size);  // what to check it by
                unsigned char* const taken = slots[rng() % slots.size()].exchange(block.bytes);
                if (!taken) continue;
                const unsigned size = taken[0];
                taken[0] = static_cast<unsigned char>(size * 7);
                if (!Marked{taken, size}.Intact()) ++damaged;
                mem_Free(taken);
            }
        };
        std::vector<std::thread> threads;
        for (unsigned seed = 1; seed <= 6; ++seed) threads.emplace_back(work, seed);
        for (std::thread& each : threads) each.join();
        EXPECT_EQ(damaged, 0);
        for (auto& slot : slots) mem_Free(slot);
    }
    EXPECT_EQ(mem_TinyState().blocksOut, 0U);
    EXPECT_FALSE(mem_TinyState().reserved);
}

TEST(TinyBlocks, MayLiveOnPastTheStopAndThenEndTheRegion) {
    const StoppedAlloc stopped;
    Marked blocks[2];
    {
        const RunningAlloc running;
        for (Marked& each : blocks) each = Marked::Take(8);
        EXPECT_EQ(mem_TinyState().reserved, mem_TinyState().inUse);
    }
    mem_Free(blocks[0].bytes);
    EXPECT_TRUE(blocks[1].Intact());
    EXPECT_EQ(mem_TinyState().blocksOut, mem_TinyState().inUse ? 1U : 0U);
    mem_Free(blocks[1].bytes);
    EXPECT_FALSE(mem_TinyState().reserved);
}

TEST(TinyBlocks, ComeFromTheHeapWhenThereAreNoAddresses) {
    const StoppedAlloc stopped;
    mem_RefuseTinyRegion(true);
    {
        const RunningAlloc running;
        const Marked block = Marked::Take(4);
        EXPECT_TRUE(block.Intact());
        EXPECT_FALSE(mem_TinyState().reserved);
        mem_Free(block.bytes);
        ForEveryAllocationFailure([] { return 0; },
                                  [](int&) { mem_Free(mem_OperatorNewTinyThrow(4)); },
                                  [](int, bool) {});
    }
    mem_RefuseTinyRegion(false);
}

TEST(SmallBlockAllocator, ReusedBlocksAreZeroed) {
    for (const unsigned size : {1U, 4U, 24U, 32U, 33U, 500U}) {
        for (int round = 0; round < 3; ++round) {
            auto* const block =
                static_cast<unsigned char*>(KZMBasMemSmallBlockAllocator::allocate(size));
            EXPECT_EQ(std::count(block, block + size, 0), static_cast<long>(size));
            std::memset(block, 0xCC, size);
            KZMBasMemSmallBlockAllocator::deallocate(block);
        }
    }
    KZMBasMemSmallBlockAllocator::deallocate(KZMBasMemSmallBlockAllocator::allocate(0));
}

TEST(SingletonRegistry, ReplacesKnownNamesAndIgnoresUnknownOnes) {
    const RunningAlloc running;
    auto* const registry = omi_SingletonRegistry::Instance();
    ASSERT_NE(registry, nullptr);
    int objects[2] = {};
    std::string name = "object";
    registry->Add(name.c_str(), &objects[0]);
    registry->Add("object", &objects[1]);
    name = "overwritten";
    EXPECT_EQ(registry->Find("object"), &objects[1]);
    registry->Remove("stranger");
    registry->Remove("object");
    EXPECT_EQ(registry->Find("object"), nullptr);
    registry->Add(nullptr, &objects[0]);
    EXPECT_EQ(registry->Find(""), &objects[0]);
    registry->Remove("");
}

TEST(SingletonRegistry, MemoryFailureAddsNothing) {
    const RunningAlloc running;
    ForEveryAllocationFailure(
        [] { return 0; },
        [](int& object) { omi_SingletonRegistry::Instance()->Add("object", &object); },
        [](int& object, bool added) {
            EXPECT_EQ(omi_SingletonRegistry::Instance()->Find("object"), added ? &object : nullptr);
            omi_SingletonRegistry::Instance()->Remove("object");
        });
}

TEST(AllocStart, TheRegistryExistsOnlyBetweenStartAndStop) {
    const StoppedAlloc stopped;
    int count = 0;
    static std::string s_seen;
    omi_SetSingletonRegistryObserver([](bool added, const char* name) {
        s_seen += (added ? "+" : "-") + std::string(name) + " ";
    });
    for (int cycle = 0; cycle < 2; ++cycle) {
        host_heap::Watch();
        KZMBasAlloc_initialize(count);
        KZMBasAlloc_initialize(count);
        EXPECT_EQ(count, 1);
        omi_SingletonRegistry::Instance()->Add("left behind", nullptr);
        if (cycle == 1) omi_Singleton<KZMBasMemPoolCow>::Instance();
        KZMBasAlloc_finalize(count);
        EXPECT_NE(omi_SingletonRegistry::Instance(), nullptr);
        KZMBasAlloc_finalize(count);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(omi_SingletonRegistry::Instance(), nullptr);
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::Unwatch();
    }
    EXPECT_EQ(s_seen, "+left behind +left behind +16KZMBasMemPoolCow -16KZMBasMemPoolCow ");
    omi_SetSingletonRegistryObserver(nullptr);
}

TEST(CowPool, CountsTrafficBySizeOnlyWhileTracking) {
    const RunningAlloc running;
    KZMBasMemPoolCow& pool = omi_Singleton<KZMBasMemPoolCow>::Instance();
    pool.Free(pool.Alloc(5), 5);
    EXPECT_EQ(pool.Total().m_taken, 0U);
    pool.SetTracking(true);
    EXPECT_EQ(*reinterpret_cast<const unsigned char*>(&pool), 1);
    void* const four = pool.Alloc(4);
    pool.Free(pool.Alloc(7), 7);
    EXPECT_EQ(pool.OfSizeClass(3).m_taken, 2U);
    EXPECT_EQ(pool.OfSizeClass(3).m_bytesTaken, 11U);
    EXPECT_EQ(pool.Total().m_bytesGivenBack, 7U);
    pool.Free(four, 4);
    pool.Free(nullptr, 4);
    EXPECT_EQ(pool.Total().m_givenBack, 2U);
    pool.ResetFigures();
    EXPECT_EQ(pool.OfSizeClass(99).m_taken, 0U);
    omi_SingletonBase<KZMBasMemPoolCow>::Finalize();
}

TEST(ThreadLock, IsRecursiveAndKeepsOtherThreadsOut) {
    long count = 0;
    const auto work = [&count] {
        for (int i = 0; i < 20000; ++i) {
            mem_TBThreadLock(true);
            mem_TBThreadLock(true);
            ++count;
            mem_TBThreadLock(false);
            mem_TBThreadLock(false);
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 40000);
}

}  // namespace
