#include <gtest/gtest.h>
#include <platform/platform.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <support/memory_failure.h>

#include <climits>
#include <string>
#include <utility>

namespace {

std::string g_called;

template <int kId>
void Finalizer() {
    g_called += std::to_string(kId) + " ";
}

KZMBas_SingletonRegistry& Registry() { return omi_Singleton<KZMBas_SingletonRegistry>::Instance(); }

template <int... kIds>
void TagAll(std::integer_sequence<int, kIds...>) {
    (Registry().Tag(kIds, Finalizer<kIds>), ...);
}

std::string Called() { return std::exchange(g_called, std::string()); }

class SingletonRegistry : public testing::Test {
protected:
    void SetUp() override {
        omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
        g_called.clear();
    }
    void TearDown() override { SetUp(); }

    static void Run(int phase) { Registry().Destroy(static_cast<SingletonDestructPhase>(phase)); }
    static std::string Leftovers() {
        omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
        return Called();
    }
};

TEST_F(SingletonRegistry, PhasesFinalizeTheirIdsInOrder) {
    struct {
        SingletonDestructCondition condition;
        const char* called;  // first phase / then the second / the second alone / left after both
    } const cases[] = {
        {{false, false, false},
         "20 10 5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 13 15 27 / "
         "6 7 11 23 8 25 13 15 28 29 27 / 1 12 14 16 17 19 22 24 26 "},
        {{true, false, false},
         "20 10 2 3 4 9 11 14 24 18 21 28 29 / 6 7 23 8 25 13 15 27 / "
         "6 7 11 23 8 25 13 15 28 29 27 / 1 5 12 16 17 19 22 26 "},
        {{false, true, false},
         "1 10 20 5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 26 12 16 22 17 13 15 19 27 / "
         "6 7 11 23 8 25 26 12 16 22 17 13 15 18 19 28 29 27 / 14 24 "},
        {{false, false, true},
         "5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 13 15 27 / "
         "6 7 11 23 8 25 13 15 18 28 29 27 / 1 10 12 14 16 17 19 20 22 24 26 "},
        {{true, true, true},
         "1 10 2 3 4 9 11 14 24 18 21 28 29 / 6 7 23 8 25 26 12 16 22 17 13 15 19 27 / "
         "6 7 11 23 8 25 26 12 16 22 17 13 15 18 19 28 29 27 / 5 20 "},
    };
    for (const auto& [condition, called] : cases) {
        const auto restart = [&wanted = condition] {
            omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
            const SingletonDestructCondition fresh = Registry().Condition();
            EXPECT_FALSE(fresh.condition1 || fresh.condition2 || fresh.condition3);
            Registry().Condition() = wanted;
            TagAll(std::make_integer_sequence<int, 30>());
            Called();
        };
        restart();
        Run(1);
        const std::string secondAlone = Called();
        restart();
        for (const int none : {-1, 2, INT_MAX}) Run(none);
        std::string text;
        for (const int phase : {0, 1}) {
            Run(phase);
            text += Called() + "/ ";
        }
        Run(0);
        Run(1);
        EXPECT_EQ(text + secondAlone + "/ " + Leftovers(), called);
    }
}

TEST_F(SingletonRegistry, AnIdAndItsNegativeAreDifferent) {
    KZMBas_SingletonRegistry& registry = Registry();
    registry.Tag(-3, Finalizer<-3>);
    registry.Tag(INT_MIN, Finalizer<INT_MIN>);
    registry.Tag(INT_MAX, Finalizer<0>);
    registry.Tag(INT_MAX, Finalizer<INT_MAX>);  // replaces
    registry.Tag(0, Finalizer<0>);
    EXPECT_EQ(registry.Destroy(3), 0);
    for (const int id : {-3, INT_MIN, INT_MAX, 0}) {
        EXPECT_EQ(registry.Destroy(id), 1);
        EXPECT_EQ(Called(), std::to_string(id) + " ");
        EXPECT_EQ(registry.Destroy(id), 0);
    }
    EXPECT_EQ(Called(), "");
}

void TagsItself() {
    g_called += "self ";
    Registry().Tag(5, TagsItself);
}

void EndsSevenAndTagsEight() {
    g_called += "six ";
    Registry().Destroy(7);
    Registry().Tag(8, Finalizer<8>);
}

TEST_F(SingletonRegistry, FinalizersMayTagAndDestroy) {
    Registry().Tag(5, TagsItself);
    EXPECT_EQ(Registry().Destroy(5), 1);
    EXPECT_EQ(Registry().Destroy(5), 0);
    EXPECT_EQ(Called(), "self ");
    Registry().Tag(6, EndsSevenAndTagsEight);
    Registry().Tag(7, Finalizer<7>);
    Registry().Tag(9, Finalizer<9>);
    EXPECT_EQ(Leftovers(), "six 7 9 ");  // what is tagged meanwhile is dropped
}

TEST_F(SingletonRegistry, AFinalizerDoesNotRunAgainFromWithin) {
    const auto again = [] {
        Finalizer<5>();
        Registry().Destroy(5);
        Run(0);
        Registry().Destroy();
    };
    Registry().Tag(5, again);
    Registry().Tag(9, nullptr);
    Run(0);
    EXPECT_EQ(Called(), "5 ");
    Registry().Tag(5, again);
    EXPECT_EQ(Leftovers(), "5 ");
}

TEST_F(SingletonRegistry, LeftoversEndInAscendingOrderAndAreReportedOnRequest) {
    const auto run = [](const char* variable) {
        platform::SetEnvironment("KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON", variable);
        Registry().Tag(2000000, Finalizer<2000000>);
        Registry().Tag(7, Finalizer<7>);
        Registry().Tag(0, Finalizer<0>);
        Registry().Tag(-3, Finalizer<-3>);
        Registry().Tag(INT_MIN, Finalizer<INT_MIN>);
        testing::internal::CaptureStdout();
        EXPECT_EQ(Leftovers(), "7 2000000 ");
        return testing::internal::GetCapturedStdout();
    };
    EXPECT_EQ(run("no"),
              "Singleton with ID -2147483648 is registered but not finalized\n"
              "Singleton with ID -3 is registered but not finalized\n"
              "Singleton with ID 0 is registered but not finalized\n"
              "Singleton with ID 7 is now finalized in the end\n"
              "Singleton with ID 2000000 is now finalized in the end\n");
    EXPECT_EQ(run(nullptr), "");
}

TEST_F(SingletonRegistry, MemoryFailureLosesNoFinalizer) {
    struct Session {
        ~Session() { omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize(); }
    };
    const auto prepare = [] { return Session(); };
    ForEveryAllocationFailure(
        prepare,
        [](Session&) {
            Registry().Tag(2, Finalizer<2>);
            Registry().Tag(-2, Finalizer<-2>);
        },
        [](const Session&, bool tagged) {
            const int ended = Registry().Destroy(2) + Registry().Destroy(-2);
            EXPECT_TRUE(!tagged || ended == 2);
        });
    for (const long failAt : {1, 2}) {
        Registry().Tag(4, Finalizer<4>);
        Registry().Tag(3, Finalizer<3>);
        Called();
        host_heap::Watch(failAt);
        EXPECT_EQ(Leftovers(), "3 4 ");
        host_heap::Unwatch();
    }
}

}  // namespace
