#include <alloc/KZMBasMemPoolCow.h>
#include <coreutils/aio_ostream.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBasSrmDCAllocator.h>
#include <runtime/KZMBasSrmMemoryInfo.h>
#include <runtime/mem_AllocationOperators.h>
#include <support/memory_failure.h>
#include <support/refused_new.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

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
    KZMBasCamPool first, second;
    Allocator::SetPool(&first);
    testing::internal::CaptureStdout();
    Allocator::Initialize();  // nobody to ask
    EXPECT_EQ(Allocator::GetPool(), &first);
    KZMBasSrmForwarder::MemorySummary();
    KZMBasSrmForwarder::MemorySummary("step 1");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "KZMBasSrmDoNothingVoid\nKZMBasSrmDoNothingPhase\n");

    const Manager manager;
    for (KZMBasCamPool* const answer :
         {kNoOpinion, &second, static_cast<KZMBasCamPool*>(nullptr)}) {
        g_answer = answer;
        Allocator::Initialize();
        EXPECT_EQ(Allocator::GetPool(), answer == kNoOpinion ? &first : answer);
    }
    Allocator::SetPool(kNoOpinion);  // stored as it is: only Initialize filters
    EXPECT_EQ(Allocator::GetPool(), kNoOpinion);
    KZMBasSrmForwarder::MemorySummary();
    KZMBasSrmForwarder::MemorySummary("end");
    EXPECT_EQ(g_asked, "7 7 7 summary end ");
    Allocator::Finalize();
}

TEST_WITH_REFUSALS(MemoryInfo, RecordsAreCountedByName) {
    KZMBasSrmMemoryInfo info;
    for (const char* const gang : {"x", "x", ""}) info.AddRecord(gang, 5, 99);
    EXPECT_EQ(info.GangSize("x") * 100 + info.GangSize(nullptr) * 10 + info.GangSize("y"), 210u);
}

TEST(MemoryInfo, TrackingGoesOnWithItsAllocator) {
    KZMBasMemPoolCow& pool = omi_Singleton<KZMBasMemPoolCow>::Instance();
    pool.Free(pool.Alloc(5), 5);
    KZMBasCowTrackingAllocator a, b;
    b = a;
    pool.Free(pool.Alloc(7), 7);
    const auto total = pool.Total();
    EXPECT_EQ(total.m_taken * 1000 + total.m_givenBack * 100 + total.m_bytesGivenBack, 1107u);
    pool.SetTracking(false);
    pool.ResetFigures();
    EXPECT_EQ(pool.Total().m_taken, 0u);
}

TEST(AllocationOperators, NewAndDeleteUseTheProductHeap) {
    const auto check = [](auto operators) {
        struct Item : decltype(operators) {
            virtual ~Item() = default;
            int value = 3;
        };
        alignas(Item) unsigned char place[sizeof(Item)];
        host_heap::Watch();
        (new (place) Item)->~Item();
        delete new Item;
        EXPECT_TRUE(host_heap::g_probe.requests == 1 && host_heap::g_probe.live == 0);
        host_heap::Unwatch();
    };
    check(mem_AllocationOperators());
    check(mem_AllocationOperatorsTiny());
}

// Hands out addresses whatever the size and writes down what it is asked for.
struct Source : KZMBasAllocator {
    void* Alloc(unsigned size) override {
        asked.push_back(size);
        return &places[asked.size() % 64];
    }
    void* Alloc(unsigned size, unsigned&) override { return Alloc(size); }
    void Free(void* block) override { freed.push_back(block); }
    void* allocate(unsigned size, const void*) override { return Alloc(size); }
    void deallocate(void* block, unsigned) override { Free(block); }

    std::vector<unsigned> asked;
    std::vector<void*> freed;
    double places[64];
};

// The four counts of bytes and the report.
std::string StateOf(const KZMBasSrmDCAllocator& arrays) {
    std::string state, report;
    for (const std::uint32_t bytes : {arrays.registeredBytes(), arrays.freedVariableBytes(),
                                      arrays.tempBytesAllocated(), arrays.tempBytesFreed()})
        state += std::to_string(bytes) + " ";
    aio_ostream os(report);
    arrays.dumpVariables(os);
    EXPECT_EQ(os.flush_count(), 3u);
    return state + report;
}
const std::string k44(44, ' ');
const std::string kHead =
    "REGISTERED MEMORY REPORT\n------------------------\n     Index    Length      Size  " + k44 +
    "Name\n     -----    ------      ----  " + k44 + "----\n";

struct Subject {
    Source source;
    KZMBasSrmDCAllocator arrays{source};
};

class WorkArrays : public testing::Test, protected Subject {};

TEST_F(WorkArrays, NumbersCountUpAreNeverUsedAgainAndAreListed) {
    for (const int i : {0, 1}) EXPECT_EQ(arrays.registerVariable(3 - i, 8 >> i, "abc"), i);
    EXPECT_EQ(arrays.registerVariable(1, 4, nullptr), 2);
    EXPECT_EQ(arrays.findVariable(arrays.getName(2)) + arrays.findVariable(nullptr), 4);
    int index = 0;
    arrays.freeVariable(index);
    const std::string name(60, 'n');
    EXPECT_EQ(arrays.registerVariable(4000000000u, 0, name.c_str()), 3);
    EXPECT_EQ(StateOf(arrays), "36 24 0 0 " + kHead + "         1         2         4" + k44 +
                                   "   abc\n         2         1         4" + k44 +
                                   "      \n         34000000000         0" + name + "\n\n");
    arrays.freeAllVariables();
    EXPECT_EQ(source.freed.size(), 4u);
    EXPECT_EQ(StateOf(arrays), "36 36 0 0 " + kHead + "\n");
    EXPECT_EQ(arrays.registerVariable(1, 1, "x"), 4);
}

TEST_F(WorkArrays, ANumberWithoutAVariableIsAnEmptyEntryOnceAskedFor) {
    for (const int asked : {7, 0}) EXPECT_EQ(arrays.getVariable(asked), nullptr);
    EXPECT_EQ(arrays.registerVariable(1, 8, "matrix"), 0);  // in place of the empty entry
    EXPECT_EQ(StateOf(arrays), "8 0 0 0 " + kHead + "         0         1         8" + k44 +
                                   "matrix\n         7         0         0" + k44 + "      \n\n");
    for (int unknown : {9, 7}) arrays.freeVariable(unknown);
    EXPECT_TRUE(source.freed == std::vector<void*>(2) && arrays.findVariable("") == -1);
}

TEST_F(WorkArrays, ProductsAndSumsOfBytesWrapAt32Bits) {
    arrays.registerVariable(0x10000, 0x10000, "a");
    arrays.registerVariable(2, -1, "b");
    arrays.freeTempData(arrays.allocTempDouble(0x20000000));
    int* const ints = arrays.allocTempInt(-1);
    EXPECT_EQ(source.asked, (std::vector<unsigned>{0, 0xFFFFFFFE, 0, 0xFFFFFFFC}));
    arrays.freeAllVariables();
    for (int times = 0; times < 2; ++times) arrays.freeTempData(ints);  // not known any more
    EXPECT_EQ(source.freed.size(), 5u);
    EXPECT_EQ(StateOf(arrays), "4294967294 4294967294 4294967292 4294967292 " + kHead + "\n");
}

TEST_F(WorkArrays, AsAGeneralAllocatorTheyServeTemporaryBlocksAlsoOfADerivedClass) {
    struct Derived : KZMBasSrmDCAllocator {
        using KZMBasSrmDCAllocator::KZMBasSrmDCAllocator;
        void* allocTempData(int n) override { return KZMBasSrmDCAllocator::allocTempData(n + 100); }
    };
    Derived derived(source);
    KZMBasAllocator& general = derived;
    unsigned granted = 77;
    general.Free(general.Alloc(1));
    general.deallocate(general.Alloc(2, granted), 2);
    general.allocate(granted - 74, nullptr);  // unchanged
    EXPECT_EQ(StateOf(derived), "0 0 306 203 " + kHead + "\n");
}

TEST_F(WorkArrays, WithoutMemoryNothingChangesAndNoBlockIsKept) {
    ForEveryAllocationFailure([] { return Subject(); },
                              [](Subject& subject) {
                                  subject.arrays.registerVariable(1, 8, "matrix");
                                  subject.arrays.allocTempData(8);
                              },
                              [](const Subject& subject, bool succeeded) {
                                  const auto& [used, kept] = subject;
                                  EXPECT_EQ(used.asked.size() * 8 - used.freed.size() * 8,
                                            kept.registeredBytes() + kept.tempBytesAllocated());
                                  EXPECT_EQ(kept.findVariable("matrix"),
                                            kept.registeredBytes() ? 0 : -1);
                                  EXPECT_EQ(kept.tempBytesAllocated(), succeeded ? 8u : 0u);
                              });
}

}  // namespace
