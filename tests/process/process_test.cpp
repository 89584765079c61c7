#include <gtest/gtest.h>
#include <platform/platform.h>
#include <process/bcu_ResourceMonitor.h>
#include <process/omi_AlertListener.h>
#include <process/omn_FPESetting.h>

#include <cmath>

namespace {

volatile double g_zero = 0;
volatile double g_huge = 1e308;

class FloatingPoint : public testing::Test {
protected:
    void TearDown() override { Apply(nullptr, false); }

    static void Apply(const char* wish, bool ignore) {
        platform::SetEnvironment("GLOBAL_ENABLE_FPE", wish);
        omn_ignoreFPESetting(ignore);
        omn_globalFPESetting();
    }
};
using FloatingPointDeathTest = FloatingPoint;

TEST_F(FloatingPoint, TrapsAreOnWhereWantedAndNotIgnored) {
    struct {
        const char* wish;
        bool ignore;
        bool trapping;
    } const cases[] = {{nullptr, false, false}, {"0", false, false}, {"1", false, true},
                       {"00", false, true},     {"no", false, true}, {"1", true, false}};
    for (const auto& [wish, ignore, trapping] : cases) {
        SCOPED_TRACE(wish ? wish : "unset");
        Apply(wish, ignore);
        EXPECT_EQ(omn_currentFPEState().trapping, trapping);
        EXPECT_EQ(omn_currentFPEState().ignored, ignore);
    }
    Apply("1", true);
    EXPECT_TRUE(std::isinf(1.0 / g_zero));
    EXPECT_TRUE(std::isnan(g_zero / g_zero));
    EXPECT_TRUE(std::isinf(g_huge * 10));
}

TEST_F(FloatingPointDeathTest, ATrapEndsTheProcess) {
    double (*const operations[])() = {[] { return 1.0 / g_zero; }, [] { return g_zero / g_zero; },
                                      [] { return g_huge * 10; }};
    for (const auto operation : operations)
        EXPECT_DEATH(
            {
                Apply("1", false);
                g_zero = operation();
            },
            "");
}

TEST(ResourceMonitor, MeasuresFromItsStart) {
    bcu_ResourceMonitor& monitor = omi_Singleton<bcu_ResourceMonitor>::Instance();
    while (monitor.ProcessorSeconds() < 0.05) g_zero = g_zero * 2;
    EXPECT_GE(monitor.ElapsedSeconds(), 0.005);  // several threads may share the work
    const double before = monitor.ElapsedSeconds();
    monitor.Restart();
    EXPECT_LT(monitor.ProcessorSeconds(), 0.05);
    EXPECT_LT(monitor.ElapsedSeconds(), before);
}

TEST(AlertListener, TakesHandlersOfTheAlertsThatExist) {
    omi_AlertListener& listener = omi_Singleton<omi_AlertListener>::Instance();
    for (int alert = -1; alert <= 6; ++alert)
        listener.SetHandler(static_cast<omi_AlertEnm>(alert), [](int) {});
    omi_SingletonBase<omi_AlertListener>::Finalize();
}

}  // namespace
