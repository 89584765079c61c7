#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <platform/platform.h>
#include <runtime/KZMBas_SingletonRegistry.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

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
    // The second phase alone / the first / then the second / left after both.
    const std::pair<SingletonDestructCondition, const char*> cases[] = {
        {{false, false, false},
         "6 7 11 23 8 25 13 15 28 29 27 / "
         "20 10 5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 13 15 27 / 1 12 14 16 17 19 22 24 26 "},
        {{true, false, false},
         "6 7 11 23 8 25 13 15 28 29 27 / "
         "20 10 2 3 4 9 11 14 24 18 21 28 29 / 6 7 23 8 25 13 15 27 / 1 5 12 16 17 19 22 26 "},
        {{false, true, false},
         "6 7 11 23 8 25 26 12 16 22 17 13 15 18 19 28 29 27 / "
         "1 10 20 5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 26 12 16 22 17 13 15 19 27 / 14 24 "},
        {{false, false, true},
         "6 7 11 23 8 25 13 15 18 28 29 27 / "
         "5 2 3 4 9 11 18 21 28 29 / 6 7 23 8 25 13 15 27 / 1 10 12 14 16 17 19 20 22 24 26 "}};
    for (const auto& [condition, called] : cases) {
        std::string text;
        for (const auto& phases : {std::vector{1}, {-1, 2, INT_MAX, 0, 1, 0, 1}}) {
            Leftovers();
            Registry().Condition() = condition;
            []<int... kIds>(std::integer_sequence<int, kIds...>) { Tag<kIds...>(); }
            (std::make_integer_sequence<int, 30>());
            for (const int phase : phases) {
                Run(phase);
                if (!g_called.empty()) text += Called() + "/ ";
            }
        }
        EXPECT_EQ(text + Leftovers(), called);
    }
}

void Restless() {
    Finalizer<5>();
    Registry().Destroy(SingletonDestructPhaseFirst);
    Registry().Destroy(5);
    Registry().Destroy(7);
    Registry().Destroy();
    Registry().Tag(5, Restless);
    Tag<8>();
}

TEST_F(SingletonRegistry, FinalizersMayTagAndDestroyAndRunOnce) {
    const std::pair<void (*)(), const char*> cases[] = {
        {[] { EXPECT_EQ(Registry().Destroy(5), 1); }, "5 7 8 "},
        {[] { Run(0); }, "5 7 8 "},
        {[] { omi_SingletonBase<KZMBas_SingletonRegistry>::Finalize(); }, "5 7 "}};
    for (const auto& [end, called] : cases) {
        Registry().Tag(5, Restless);
        Registry().Tag(9, nullptr);
        Tag<7>();
        end();
        EXPECT_EQ(Registry().Destroy(5), 0);
        Registry().Destroy(8);
        EXPECT_EQ(Called(), called);
    }
}

TEST_F(SingletonRegistry, LeftoversEndInAscendingOrderAndAreReportedOnRequest) {
    const auto run = [](const char* variable, long failAt) {
        platform::SetEnvironment("KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON", variable);
        Tag<2000000, 7, 0, -3, INT_MIN>();
        testing::internal::CaptureStdout();
        for (const int id : {3, INT_MAX}) EXPECT_EQ(Registry().Destroy(id), 0) << id;
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

}  // namespace
