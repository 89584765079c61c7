#include <files/KZMBasFilStracePhase.h>
#include <files/KZMBasUtlIOStats.h>
#include <support/memory_failure.h>

#include <optional>

namespace {

TEST(StracePhase, OpenPhasesNest) {
    EXPECT_EQ(KZMBasFilStracePhase::Path(), "");
    {
        const KZMBasFilStracePhase outer("read");
        {
            const KZMBasFilStracePhase inner("mesh");
            EXPECT_EQ(KZMBasFilStracePhase::Path(), "read/mesh");
        }
        const KZMBasFilStracePhase unnamed(nullptr);
        EXPECT_EQ(KZMBasFilStracePhase::Path(), "read/");
    }
    EXPECT_EQ(KZMBasFilStracePhase::Path(), "");
}

TEST(StracePhase, AMemoryFailureOpensNone) {
    KZMBasFilStracePhase::Path();
    ForEveryAllocationFailure(
        [] { return std::optional<KZMBasFilStracePhase>(); },
        [](auto& phase) { phase.emplace("solve"); },
        [](auto&, bool opened) { EXPECT_EQ(KZMBasFilStracePhase::Path(), opened ? "solve" : ""); });
}

TEST(IOStats, CountTransfersUntilReset) {
    KZMBasUtlIOStats& stats = omi_Singleton<KZMBasUtlIOStats>::Instance();
    stats.CountRead(5000000000u);
    stats.CountRead(1);
    stats.CountWrite(7);
    EXPECT_EQ(stats.Reads().count, 2u);
    EXPECT_EQ(stats.Reads().bytes, 5000000001u);
    EXPECT_EQ(stats.Writes().count, 1u);
    EXPECT_EQ(stats.Writes().bytes, 7u);
    stats.Reset();
    EXPECT_EQ(stats.Reads().count + stats.Writes().bytes, 0u);
}

}  // namespace
