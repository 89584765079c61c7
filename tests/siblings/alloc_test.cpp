#include <alloc/KZMBasAlloc.h>
#include <alloc/KZMBasAllocator.h>
#include <alloc/KZMBasMemPoolCow.h>
#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <alloc/mem_TBThreadLock.h>
#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistryHook.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>

namespace {

// Runs the library for the length of a test, whether or not something else has started it.
struct RunningAlloc {
    RunningAlloc() { KZMBasAlloc_initialize(m_count); }
    ~RunningAlloc() { KZMBasAlloc_finalize(m_count); }
    int m_count = 0;
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
    int count = 0;
    // Whatever runs already is stopped for the length of the test.
    int outer = 0;
    while (omi_SingletonRegistry::Instance()) KZMBasAlloc_finalize(count), ++outer;
    count = 0;
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
    while (outer-- > 0) KZMBasAlloc_initialize(count);
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
