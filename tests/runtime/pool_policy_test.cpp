#include <alloc/KZMBasMemPoolCow.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_IntTable.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/mem_AllocationOperators.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

// Serves dirty memory, as a pool that reuses blocks does.
struct DirtyPool : KZMBasCamPool {
    void* Alloc(unsigned size) override {
        void* const block = KZMBasCamPool::Alloc(size);
        std::memset(block, 0xCC, size);
        return block;
    }
};

template <int N>
struct PoolGuard {
    explicit PoolGuard(KZMBasCamPool* pool) { KZMBasSrmAllocator<N>::SetPool(pool); }
    ~PoolGuard() { KZMBasSrmAllocator<N>::Finalize(); }
};

KZMBasCamPool* const kNoOpinion = reinterpret_cast<KZMBasCamPool*>(KZMBasSrmNoPool);
KZMBasCamPool* g_answer = kNoOpinion;
std::string g_asked;

struct Manager : KZMBasSrmForwarder {
    Manager() {
        SetPtrGetPool([](srm_ResourceEnums resource) {
            g_asked += std::to_string(resource) + " ";
            return g_answer;
        });
        SetPtrMemorySummary([] { g_asked += "summary "; });
        SetPtrMemorySummary([](const char* phase) { g_asked += std::string(phase) + " "; });
    }
};

// Number 64 makes its allocation functions here, in the client.
TEST(PoolPolicy, BlocksAreZeroFilledWhereverTheyComeFrom) {
    DirtyPool pool;
    for (KZMBasCamPool* const each :
         {static_cast<KZMBasCamPool*>(nullptr), static_cast<KZMBasCamPool*>(&pool)}) {
        const PoolGuard<64> guard(each);
        for (const unsigned size : {0u, 1u, 16u, 4096u}) {
            auto* const block = static_cast<unsigned char*>(KZMBasSrmAllocator<64>::allocate(size));
            EXPECT_TRUE(size == 0 || std::all_of(block, block + size,
                                                 [](unsigned char byte) { return byte == 0; }));
            KZMBasSrmAllocator<64>::deallocate(block);
        }
        KZMBasSrmAllocator<64>::deallocate(nullptr);
    }
    EXPECT_EQ(pool.Requests(), 4u);
    EXPECT_EQ(pool.Blocks(), 0u);
}

TEST(PoolPolicy, ATableLivesInItsPool) {
    DirtyPool pool;
    const PoolGuard<3> guard(&pool);
    {
        omi_IntTable<int, KZMBasSrmAllocator<3>> table;
        const std::uint64_t empty = pool.Blocks();
        EXPECT_GT(empty, 0u);
        table.Insert(-5, 1);
        table.Insert(1 << 30, 2);
        EXPECT_GT(pool.Blocks(), empty);
        EXPECT_EQ(table.Size(), 2);
    }
    EXPECT_EQ(pool.Blocks(), 0u);
}

// In one case, since there is no way back from a manager.
TEST(PoolPolicy, AManagerDecidesWhatEachNumberGets) {
    DirtyPool first, second;
    const PoolGuard<7> guard(&first);
    KZMBasSrmAllocator<7>::Initialize();  // nobody to ask
    EXPECT_EQ(KZMBasSrmAllocator<7>::GetPool(), &first);
    EXPECT_EQ(KZMBasSrmAllocator<63>::GetPool(), nullptr);
    testing::internal::CaptureStdout();
    KZMBasSrmForwarder::MemorySummary();
    KZMBasSrmForwarder::MemorySummary("step 1");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "KZMBasSrmDoNothingVoid\nKZMBasSrmDoNothingPhase\n");

    const Manager manager;
    const std::pair<KZMBasCamPool*, KZMBasCamPool*> cases[] = {
        {kNoOpinion, &first}, {&second, &second}, {nullptr, nullptr}};
    for (const auto& [answer, expected] : cases) {
        g_answer = answer;
        KZMBasSrmAllocator<7>::Initialize();
        EXPECT_EQ(KZMBasSrmAllocator<7>::GetPool(), expected);
    }
    KZMBasSrmAllocator<7>::SetPool(kNoOpinion);  // stored as it is: only Initialize filters
    EXPECT_EQ(KZMBasSrmAllocator<7>::GetPool(), kNoOpinion);
    KZMBasSrmForwarder::MemorySummary();
    KZMBasSrmForwarder::MemorySummary("end");
    EXPECT_EQ(g_asked, "7 7 7 summary end ");
}

TEST(MemoryInfo, AskingForARecordMakesIt) {
    KZMBasSrmMemoryInfo info;
    EXPECT_EQ(info.GangSize("x"), 0u);
    info.AddRecord("x", 5, 99);
    info.AddRecord("x", 5, 99);
    info.AddRecord(nullptr, 1, 0);
    EXPECT_EQ(info.GangSize("x"), 2u);
    EXPECT_EQ(info.GangSize(""), 1u);
    info.PrintTable();
}

TEST(CowTracking, MakingTheAllocatorSwitchesTrackingOnAndCopyingKeepsThePool) {
    KZMBasMemPoolCow& pool = omi_Singleton<KZMBasMemPoolCow>::Instance();
    EXPECT_FALSE(pool.Tracking());
    KZMBasCowTrackingAllocator a;
    EXPECT_TRUE(pool.Tracking());
    pool.Free(pool.Alloc(40), 40);
    KZMBasCowTrackingAllocator b;
    b = a;
    EXPECT_EQ(pool.Total().m_taken, 1u);
    pool.SetTracking(false);
    pool.ResetFigures();
}

template <class Operators>
struct Item : Operators {
    virtual ~Item() = default;
    int value = 3;
};

template <class Operators>
void ExpectProductHeap() {
    host_heap::Watch();
    auto* const item = new Item<Operators>;
    EXPECT_EQ(host_heap::g_probe.live, 1);
    delete item;
    delete static_cast<Item<Operators>*>(nullptr);
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::g_probe.untilFailure = 1;
    EXPECT_THROW(new Item<Operators>, std::bad_alloc);
    alignas(Item<Operators>) unsigned char place[sizeof(Item<Operators>)];
    const long requests = host_heap::g_probe.requests;
    auto* const placed = new (place) Item<Operators>;
    EXPECT_EQ(static_cast<void*>(placed), place);
    placed->~Item<Operators>();
    EXPECT_EQ(host_heap::g_probe.requests, requests);
    host_heap::Unwatch();
}

TEST(AllocationOperators, NewAndDeleteUseTheProductHeap) {
    ExpectProductHeap<mem_AllocationOperators>();
    ExpectProductHeap<mem_AllocationOperatorsTiny>();
}

}  // namespace
