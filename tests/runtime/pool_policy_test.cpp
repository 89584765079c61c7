#include <alloc/KZMBasMemPoolCow.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/mem_AllocationOperators.h>

#include <algorithm>
#include <cstring>

namespace {

// Serves dirty memory, as a pool that reuses blocks does.
struct DirtyPool : KZMBasCamPool {
    void* Alloc(unsigned n) override { return std::memset(KZMBasCamPool::Alloc(n), 0xCC, n); }
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

TEST(PoolPolicy, BlocksAreZeroFilledWhereverTheyComeFrom) {
    using Allocator = KZMBasSrmAllocator<64>;  // its functions are made here, in the client
    DirtyPool pool;
    for (const bool pooled : {false, true}) {
        Allocator::SetPool(pooled ? &pool : nullptr);
        for (const unsigned size : {0u, 1u, 16u, 4096u}) {
            auto* const block = static_cast<unsigned char*>(Allocator::allocate(size));
            EXPECT_EQ(std::count(block, block + size, 0), static_cast<long>(size));
            Allocator::deallocate(block);
        }
        Allocator::deallocate(nullptr);
        EXPECT_EQ(pool.Requests(), pooled ? 4u : 0u);
    }
    Allocator::Finalize();
    EXPECT_EQ(pool.Blocks(), 0u);
}

// In one case, since there is no way back from a manager.
TEST(PoolPolicy, AManagerDecidesWhatEachNumberGets) {
    using Allocator = KZMBasSrmAllocator<7>;
    DirtyPool first, second;
    Allocator::SetPool(&first);
    Allocator::Initialize();  // nobody to ask
    EXPECT_EQ(Allocator::GetPool(), &first);
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
        Allocator::Initialize();
        EXPECT_EQ(Allocator::GetPool(), expected);
    }
    Allocator::SetPool(kNoOpinion);  // stored as it is: only Initialize filters
    EXPECT_EQ(Allocator::GetPool(), kNoOpinion);
    KZMBasSrmForwarder::MemorySummary();
    KZMBasSrmForwarder::MemorySummary("end");
    EXPECT_EQ(g_asked, "7 7 7 summary end ");
    Allocator::Finalize();
}

TEST(MemoryInfo, RecordsAreCountedByNameAndTrackingGoesOnWithItsAllocator) {
    KZMBasSrmMemoryInfo info;
    for (const char* const gang : {"x", "x", static_cast<const char*>(nullptr)})
        info.AddRecord(gang, 5, 99);
    EXPECT_EQ(info.GangSize("x") * 100 + info.GangSize("") * 10 + info.GangSize("y"), 210u);
    KZMBasMemPoolCow& pool = omi_Singleton<KZMBasMemPoolCow>::Instance();
    pool.Free(pool.Alloc(5), 5);
    KZMBasCowTrackingAllocator a, b;
    b = a;
    pool.Free(pool.Alloc(7), 7);
    EXPECT_EQ(pool.Total().m_taken * 100 + pool.Total().m_bytesGivenBack, 107u);
    pool.SetTracking(false);
    pool.ResetFigures();
}

template <class Operators>
void ExpectProductHeap() {
    struct Item : Operators {
        virtual ~Item() = default;
        int value = 3;
    };
    host_heap::Watch();
    auto* const item = new Item;
    EXPECT_EQ(host_heap::g_probe.live, 1);
    delete item;
    EXPECT_EQ(host_heap::g_probe.live, 0);
    alignas(Item) unsigned char place[sizeof(Item)];
    (new (place) Item)->~Item();
    host_heap::g_probe.untilFailure = 1;
    EXPECT_THROW(new Item, std::bad_alloc);
    EXPECT_EQ(host_heap::g_probe.requests, 2);
    host_heap::Unwatch();
}

TEST(AllocationOperators, NewAndDeleteUseTheProductHeap) {
    ExpectProductHeap<mem_AllocationOperators>();
    ExpectProductHeap<mem_AllocationOperatorsTiny>();
}

}  // namespace
