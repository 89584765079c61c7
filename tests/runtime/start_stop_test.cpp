#include <alloc/KZMBasAlloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasCoreUtils.h>
#include <cow/cow_Btree.h>
#include <errors/KZMBasUtils.h>
#include <errors/KZMBasUtlVersion.h>
#include <files/KZMBasFilStracePhase.h>
#include <files/KZMBasUtlIOStats.h>
#include <generics/KZMBasGenericsLib.h>
#include <platform/platform.h>
#include <process/KZMBasCallstack.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <process/bcu_ResourceMonitor.h>
#include <process/omi_AlertListener.h>
#include <process/omn_FPESetting.h>
#include <runtime/KZMBasShared.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/rgx_ReCompileCache.h>
#include <support/memory_failure.h>
#include <support/registry_record.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <memory>
#include <thread>
#include <tuple>
#include <vector>

namespace {

bool Running() { return omi_SingletonRegistry::Instance() != nullptr; }

// Loading has started the library; each case begins with it stopped and leaves it started.
class StartStop : public testing::Test {
protected:
    StartStop() { KZMBasShared_finalize(m_balance); }
    ~StartStop() override { KZMBasShared_initialize(m_balance); }
    int m_balance = 0;
};

TEST_F(StartStop, OnlyTheFirstStartAndTheMatchingLastStopAct) {
    int first = 0, second = 0, last = 0;
    KZMBasShared_initialize(first);
    EXPECT_EQ(first, 13);
    KZMBasShared_initialize(second);
    KZMBasShared_initializeC();
    KZMBasShared_finalize(second);
    KZMBasShared_finalizeC();
    EXPECT_TRUE(second == 0 && Running());
    KZMBasShared_finalize(last);  // a tally belongs to its caller
    EXPECT_TRUE(first + last == 0 && !Running());
    for (const auto call : {KZMBasShared_finalize, KZMBasShared_initialize}) {
        call(last);  // a stop too many is ignored and swallows the next start
        EXPECT_TRUE(last == -13 && !Running());
    }
}

TEST_F(StartStop, WhatAClientStartedByItselfIsNotCountedAgainAndStays) {
    using Function = void (*)(int&);
    const Function pairs[][2] = {{KZMBasCoreUtils_initialize, KZMBasCoreUtils_finalize},
                                 {KZMBasGenericsLib_initialize, KZMBasGenericsLib_finalize},
                                 {KZMBasAlloc_initialize, KZMBasAlloc_finalize},
                                 {KZMBasUtils_initialize, KZMBasUtils_finalize}};
    for (const auto& [initialize, finalize] : pairs) {
        int own = 0, shared = 0;
        initialize(own);
        KZMBasShared_initialize(shared);
        EXPECT_TRUE(own == 1 && shared == 12);
        KZMBasShared_finalize(shared);
        finalize(own);
        EXPECT_TRUE(shared == 0 && own == 0);
    }
}

TEST_F(StartStop, SingletonsAreMadeOnUseAndEndInOneOrder) {
    int count = 0;
    KZMBasShared_initialize(count);
    omi_Singleton<KZMBas_SingletonRegistry>::Instance();
    auto& transfers = omi_Singleton<KZMBasUtlIOStats>::Instance();
    transfers.CountRead(5), transfers.CountWrite(6), transfers.CountWrite(7);
    EXPECT_EQ(transfers.Reads().bytes * 100 + transfers.Writes().count, 502u);
    EXPECT_LT(omi_Singleton<bcu_ResourceMonitor>::Instance().ProcessorSeconds(),
              platform::ProcessorSeconds());
    const auto& version = omi_Singleton<KZMBasUtlVersion>::Instance();
    for (const int other : {-1, KZM_VERSION + 1, KZM_VERSION + 1000000})
        EXPECT_TRUE(version.Serves() && !version.Serves(other));
    rgx_ReCompileCache::Instance().Store(nullptr, &count, nullptr);
    EXPECT_EQ(rgx_ReCompileCache::Instance().Find(""), &count);
    EXPECT_EQ(rgx_ReCompileCache::Instance().Find("a"), nullptr);
    omi_Singleton<omi_AlertListener>::Instance();
    const KZMBasFilStracePhase outer("read");  // ends after the library
    {
        const KZMBasFilStracePhase inner("mesh"), nameless(nullptr);
        EXPECT_EQ(KZMBasFilStracePhase::Path(), "read/mesh/");
    }
    EXPECT_EQ(KZMBasFilStracePhase::Path(), "read");
    RegistryRecord record;
    KZMBasShared_finalize(count);
    EXPECT_EQ(record.Take(),
              "-KZMBasFilStracePhase::Impl -omi_AlertListener -rgx_ReCompileCache "
              "-KZMBasUtlVersion -KZMBasUtlExcModelSingleton -bcu_ResourceMonitor "
              "-KZMBasUtlIOStats -KZMBas_SingletonRegistry ");
}

TEST_F(StartStop, CyclesLeaveNoBlockBehindAndAStartWithoutMemoryTheLibraryStopped) {
    struct Program {
        int count = 0;
        ~Program() {
            if (count) KZMBasShared_finalize(count);
        }
    };
    const auto work = [](Program& program) {
        KZMBasShared_initialize(program.count);
        omi_Singleton<KZMBas_SingletonRegistry>::Instance().Tag(-3, nullptr);
        rgx_ReCompileCache::Instance().Store("a+", nullptr, [](void*) {});
        const KZMBasFilStracePhase outer("a name that needs memory of its own"), inner("cycle");
        KZMBasOmniProcessInfo::Initialize();
        KZMBasOmniProcessInfo::SaveEnvironment("Z:\\no such directory\\file");
    };
    ForEveryAllocationFailure(
        [] { return Program(); }, work,
        [](const Program& program, bool) { EXPECT_EQ(program.count, Running() ? 13 : 0); });
    host_heap::Watch();
    for (int times = 0; times < 10000; ++times) {
        Program program;
        work(program);
    }
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

TEST_F(StartStop, TheEnvironmentIsReadAtEachStart) {
    const std::tuple<const char*, bool, const char*, int> cases[] = {
        {"1", true, "7", 7},
        {"0", false, "abc", 0},
        {"01", false, " -3x", -3},
        {"yes", false, nullptr, -3},
        {"1 ", false, "99999999999999999999", INT_MAX},
        {nullptr, false, "0", 0}};
    for (const auto& [ignore, ignored, level, levelRead] : cases) {
        omn_ignoreFPESetting(false);
        platform::SetEnvironment("KVL_IGNORE_FPE", ignore);
        platform::SetEnvironment("KRV_PARALLEL_DEBUG", level);
        const unsigned applied = omn_currentFPEState().applied;
        int count = 0;
        KZMBasShared_initialize(count);
        EXPECT_EQ(omn_currentFPEState().ignored, ignored);
        EXPECT_EQ(omn_currentFPEState().applied, applied + 1);
        EXPECT_STREQ(platform::Environment("KVL_IGNORE_FPE"), ignored ? "0" : ignore);
        EXPECT_EQ(KZMBasParallelDebugLevel(), levelRead);
        KZMBasShared_finalize(count);
    }
}

TEST(ProcessEnd, LeavesToThreadsAtWorkWhatTheyHave) {
    const auto end = [] {
        std::atomic<bool> working = false;
        std::thread([&working] {
            std::vector<std::unique_ptr<int, decltype(&mem_Free)>> blocks;
            for (unsigned i = 0; i < 500; ++i) blocks.emplace_back(nullptr, &mem_Free);
            cow_Btree<cow_String, cow_String> tree;
            for (unsigned i = 0;; ++i, working = i >= 100000) {
                blocks[i * i % 500].reset(new (mem_OperatorNewTinyThrow(8 + i % 9)) int(3));
                if (tree.Find(cow_String()) != cow_String()) std::abort();
            }
        }).detach();
        while (!working) std::this_thread::yield();
        std::exit(5);
    };
    for (int i = 0; i < 5; ++i) EXPECT_EXIT(end(), testing::ExitedWithCode(5), "");
}

}  // namespace
