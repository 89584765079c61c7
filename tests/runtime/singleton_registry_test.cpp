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
void Tag() {
    (Registry().Tag(kIds, Finalizer<kIds>), ...);
}

std::string Called() { return std::exchange(g_called, std::string()); }

class SingletonRegistry : public testing::Test {
protected:
    SingletonRegistry() { Leftovers(); }
    ~SingletonRegistry() override { Leftovers(); }

    static void Run(int phase) { Registry().Destroy(static_cast<SingletonDestructPhase>(phase)); }
    static std::string Leftovers() {
        omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize();
        return Called();
    }
};

TEST_F(SingletonRegistry, PhasesFinalizeTheirIdsInOrder) {
    // First phase / then the second / the second alone / left after both.
    const std::pair<SingletonDestructCondition, const char*> cases[] = {
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
        const auto run = [&wanted = condition](std::initializer_list<int> phases) {
            Leftovers();
            const SingletonDestructCondition fresh = Registry().Condition();
            EXPECT_FALSE(fresh.condition1 || fresh.condition2 || fresh.condition3);
            Registry().Condition() = wanted;
            []<int... kIds>(std::integer_sequence<int, kIds...>) { Tag<kIds...>(); }
            (std::make_integer_sequence<int, 30>());
            std::string text;
            for (const int phase : phases) {
                Run(phase);
                if (!g_called.empty()) text += Called() + "/ ";
            }
            return text;
        };
        const std::string alone = run({1});
        const std::string both = run({-1, 2, INT_MAX, 0, 1, 0, 1});
        EXPECT_EQ(both + alone + Leftovers(), called);
    }
}

void Restless() {
    Finalizer<5>();
    Registry().Destroy(5);
    Registry().Destroy(7);
    Registry().Tag(5, Restless);
    Tag<8>();
}

TEST_F(SingletonRegistry, FinalizersMayTagAndDestroyAndRunOnce) {
    Registry().Tag(5, Restless);
    EXPECT_EQ(Registry().Destroy(5), 1);
    EXPECT_EQ(Registry().Destroy(5), 0);
    EXPECT_EQ(Registry().Destroy(8), 1);
    EXPECT_EQ(Called(), "5 8 ");
    Registry().Tag(5, Restless);
    Tag<7, 9>();
    EXPECT_EQ(Leftovers(), "5 7 9 ");  // what is tagged meanwhile is dropped
    for (const bool leftover : {false, true}) {
        Registry().Tag(5, [] {
            Finalizer<5>();
            Run(0);
            Registry().Destroy();
        });
        Registry().Tag(9, nullptr);
        if (!leftover) Run(0);
        EXPECT_EQ(leftover ? Leftovers() : Called(), "5 ");
    }
}

TEST_F(SingletonRegistry, AnIdAndItsNegativeAreDifferent) {
    Tag<-3, INT_MIN, 0>();
    std::string ran;
    for (const int id : {3, -3, -3, INT_MAX, INT_MIN, INT_MIN, 0}) {
        ran += std::to_string(Registry().Destroy(id));
    }
    EXPECT_EQ(ran, "0100101");
}

TEST_F(SingletonRegistry, LeftoversEndInAscendingOrderAndAreReportedOnRequest) {
    const auto run = [](const char* variable, long failAt) {
        platform::SetEnvironment("KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON", variable);
        Tag<2000000, 7, 0, -3, INT_MIN>();
        testing::internal::CaptureStdout();
        EXPECT_EQ(Registry().Destroy(3) + Registry().Destroy(INT_MAX), 0);
        host_heap::Watch(failAt);
        EXPECT_EQ(Leftovers(), "7 2000000 ");
        host_heap::Unwatch();
        return testing::internal::GetCapturedStdout();
    };
    for (const long failAt : {0, 1, 2})
        EXPECT_EQ(run("no", failAt),
                  "Singleton with ID -2147483648 is registered but not finalized\n"
                  "Singleton with ID -3 is registered but not finalized\n"
                  "Singleton with ID 0 is registered but not finalized\n"
                  "Singleton with ID 7 is now finalized in the end\n"
                  "Singleton with ID 2000000 is now finalized in the end\n");
    EXPECT_EQ(run(nullptr, 0), "");
}

TEST_F(SingletonRegistry, MemoryFailureLosesNoFinalizer) {
    struct Session {
        ~Session() { omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize(); }
    };
    ForEveryAllocationFailure([] { return Session(); }, [](Session&) { Tag<2, -2>(); },
                              [](const Session&, bool tagged) {
                                  const int ended = Registry().Destroy(2) + Registry().Destroy(-2);
                                  EXPECT_TRUE(!tagged || ended == 2);
                              });
}

}  // namespace
