#include <alloc/KZMBasAlloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasCoreUtils.h>
#include <errors/KZMBasUtils.h>
#include <errors/KZMBasUtlVersion.h>
#include <files/KZMBasFilStracePhase.h>
#include <files/KZMBasUtlIOStats.h>
#include <generics/KZMBasGenericsLib.h>
#include <platform/platform.h>
#include <process/KZMBasCallstack.h>
#include <process/bcu_ResourceMonitor.h>
#include <process/omi_AlertListener.h>
#include <process/omn_FPESetting.h>
#include <runtime/KZMBasShared.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/rgx_ReCompileCache.h>
#include <support/memory_failure.h>
#include <support/registry_record.h>

#include <climits>
#include <optional>

namespace {

using Text = std::optional<std::string>;

Text Environment(const char* name) {
    const char* const value = platform::Environment(name);
    return value ? Text(value) : Text();
}

// Taken before main, when the library has been loaded already.
const Text g_ignoreAtLoad = Environment("KVL_IGNORE_FPE");
const omn_FPEState g_trapsAtLoad = omn_currentFPEState();

bool Running() { return omi_SingletonRegistry::Instance() != nullptr; }

// Loading has started the library; each case begins with it stopped and leaves it started.
class StartStop : public testing::Test {
protected:
    void SetUp() override {
        KZMBasShared_finalize(m_balance);
        ASSERT_EQ(m_balance, -13);
        ASSERT_FALSE(Running());
    }
    void TearDown() override {
        KZMBasShared_initialize(m_balance);
        EXPECT_EQ(m_balance, 0);
        EXPECT_TRUE(Running());
    }
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
    EXPECT_EQ(second, 0);
    EXPECT_TRUE(Running());
    KZMBasShared_finalize(last);  // a tally belongs to its caller
    EXPECT_EQ(first, 13);
    EXPECT_EQ(last, -13);
    EXPECT_FALSE(Running());
}

TEST_F(StartStop, WhatAClientStartedByItselfIsNotCountedAgainAndStays) {
    using Function = void (*)(int&);
    const Function pairs[][2] = {{KZMBasCoreUtils_initialize, KZMBasCoreUtils_finalize},
                                 {KZMBasGenericsLib_initialize, KZMBasGenericsLib_finalize},
                                 {KZMBasAlloc_initialize, KZMBasAlloc_finalize},
                                 {KZMBasUtils_initialize, KZMBasUtils_finalize}};
    for (const auto& [initialize, finalize] : pairs) {
        int own = 0;
        int shared = 0;
        initialize(own);
        EXPECT_EQ(own, 1);
        KZMBasShared_initialize(shared);
        EXPECT_EQ(shared, 12);
        KZMBasShared_finalize(shared);
        EXPECT_EQ(shared, 0);
        finalize(own);
        EXPECT_EQ(own, 0);
    }
}

TEST_F(StartStop, AStopTooManyIsIgnoredAndSwallowsTheNextStart) {
    int count = 0;
    KZMBasShared_finalize(count);
    KZMBasShared_initialize(count);
    EXPECT_EQ(count, 0);
    EXPECT_FALSE(Running());
    KZMBasShared_initialize(count);
    EXPECT_EQ(count, 13);
    KZMBasShared_finalize(count);
    EXPECT_EQ(count, 0);
}

TEST_F(StartStop, SingletonsAreMadeOnUseAndEndInOneOrder) {
    RegistryRecord record;
    int count = 0;
    KZMBasShared_initialize(count);
    EXPECT_EQ(record.Take(), "+KZMBasUtlExcModelSingleton ");
    KZMBasShared_finalize(count);
    EXPECT_EQ(record.Take(),
              "-omi_AlertListener -KZMBasUtlVersion -KZMBasUtlExcModelSingleton "
              "-bcu_ResourceMonitor -KZMBasUtlIOStats -KZMBas_SingletonRegistry ");

    KZMBasShared_initialize(count);
    omi_Singleton<KZMBas_SingletonRegistry>::Instance();
    omi_Singleton<KZMBasUtlIOStats>::Instance();
    omi_Singleton<bcu_ResourceMonitor>::Instance();
    omi_Singleton<KZMBasUtlVersion>::Instance();
    rgx_ReCompileCache::Instance();
    omi_Singleton<omi_AlertListener>::Instance();
    KZMBasFilStracePhase::Path();
    record.Take();
    KZMBasShared_finalize(count);
    EXPECT_EQ(record.Take(),
              "-KZMBasFilStracePhase::Impl -omi_AlertListener -rgx_ReCompileCache "
              "-KZMBasUtlVersion -KZMBasUtlExcModelSingleton -bcu_ResourceMonitor "
              "-KZMBasUtlIOStats -KZMBas_SingletonRegistry ");
}

void DoNothing() {}

TEST_F(StartStop, CyclesLeaveNoBlockBehind) {
    host_heap::Watch();
    for (int cycle = 0; cycle < 3; ++cycle) {
        int count = 0;
        KZMBasShared_initialize(count);
        omi_Singleton<KZMBas_SingletonRegistry>::Instance().Tag(-cycle, DoNothing);
        rgx_ReCompileCache::Instance().Store("a+", nullptr, [](void*) {});
        KZMBasFilStracePhase("cycle");
        KZMBasShared_finalize(count);
    }
    EXPECT_GT(host_heap::g_probe.requests, 0);
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

TEST_F(StartStop, AStartWithoutMemoryLeavesTheLibraryStopped) {
    struct Program {
        int count = 0;
        ~Program() {
            if (count) KZMBasShared_finalize(count);
        }
    };
    ForEveryAllocationFailure([] { return Program(); },
                              [](Program& program) { KZMBasShared_initialize(program.count); },
                              [](const Program& program, bool started) {
                                  EXPECT_EQ(program.count, started ? 13 : 0);
                                  EXPECT_EQ(Running(), started);
                              });
}

TEST_F(StartStop, TheEnvironmentIsReadAtEachStart) {
    struct {
        Text ignore;
        bool ignored;
        Text ignoreAfter;
        Text level;
        int levelRead;
    } const cases[] = {{"1", true, "0", "7", 7},
                       {"0", false, "0", "abc", 0},
                       {"01", false, "01", " -3x", -3},
                       {"yes", false, "yes", {}, -3},
                       {"1 ", false, "1 ", "99999999999999999999", INT_MAX},
                       {{}, false, {}, "0", 0}};
    for (const auto& [ignore, ignored, ignoreAfter, level, levelRead] : cases) {
        SCOPED_TRACE(ignore.value_or("unset"));
        omn_ignoreFPESetting(false);
        platform::SetEnvironment("KVL_IGNORE_FPE", ignore ? ignore->c_str() : nullptr);
        platform::SetEnvironment("KRV_PARALLEL_DEBUG", level ? level->c_str() : nullptr);
        const unsigned applied = omn_currentFPEState().applied;
        int count = 0;
        KZMBasShared_initialize(count);
        EXPECT_EQ(omn_currentFPEState().ignored, ignored);
        EXPECT_EQ(omn_currentFPEState().applied, applied + 1);
        EXPECT_EQ(Environment("KVL_IGNORE_FPE"), ignoreAfter);
        EXPECT_EQ(KZMBasParallelDebugLevel(), levelRead);
        KZMBasShared_finalize(count);
    }
}

// A death test of this style runs its statement in a second process of this program.
TEST(StartStopDeathTest, TheRequestToIgnoreTrapsIsTakenAtLoadAndNotHandedOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (!g_ignoreAtLoad) platform::SetEnvironment("KVL_IGNORE_FPE", "1");
    EXPECT_EXIT(
        std::exit(g_ignoreAtLoad == "0" && g_trapsAtLoad.ignored && g_trapsAtLoad.applied == 1 ? 42
                                                                                               : 1),
        testing::ExitedWithCode(42), "");
    platform::SetEnvironment("KVL_IGNORE_FPE", nullptr);
}

}  // namespace
