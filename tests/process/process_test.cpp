#include <gtest/gtest.h>
#include <platform/platform.h>
#include <process/bcu_ResourceMonitor.h>
#include <process/omn_FPESetting.h>

#include <cmath>
#include <cstdio>
#include <tuple>

namespace {

volatile double g_zero = 0;
volatile double g_huge = 1e308;
double (*const kOperations[])() = {[] { return 1.0 / g_zero; }, [] { return g_zero / g_zero; },
                                   [] { return g_huge * 10; }};

TEST(FloatingPointDeathTest, TrapsStopTheProcessWhereWantedAndNotIgnored) {
    const std::tuple<const char*, bool, bool> cases[] = {
        {nullptr, false, false}, {"0", false, false}, {"1", false, true},
        {"00", false, true},     {"no", false, true}, {"1", true, false}};
    for (const auto& [wish, ignore, trapping] : cases) {
        platform::SetEnvironment("GLOBAL_ENABLE_FPE", wish);
        omn_ignoreFPESetting(ignore);
        omn_globalFPESetting();
        EXPECT_EQ(omn_currentFPEState().trapping, trapping) << (wish ? wish : "unset");
        if (trapping) continue;
        for (const auto operation : kOperations) EXPECT_FALSE(std::isfinite(operation()));
    }
    platform::SetEnvironment("GLOBAL_ENABLE_FPE", "1");
    omn_ignoreFPESetting(false);
    for (const auto operation : kOperations)
        EXPECT_DEATH((omn_globalFPESetting(), std::printf("%g", operation())), "");
    platform::SetEnvironment("GLOBAL_ENABLE_FPE", nullptr);
    omn_globalFPESetting();
}

TEST(ResourceMonitor, MeasuresFromItsRestart) {
    bcu_ResourceMonitor& monitor = omi_Singleton<bcu_ResourceMonitor>::Instance();
    while (monitor.ProcessorSeconds() < 0.05) g_huge = g_huge / 1.0;
    const double before = monitor.ElapsedSeconds();
    monitor.Restart();
    EXPECT_TRUE(monitor.ElapsedSeconds() < before && monitor.ProcessorSeconds() < 0.05);
}

}  // namespace
