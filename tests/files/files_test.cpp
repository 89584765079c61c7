#include <files/KZMBasFilStracePhase.h>
#include <support/memory_failure.h>

#include <optional>

namespace {

TEST(StracePhase, PhasesNestAndAMemoryFailureOpensNone) {
    const KZMBasFilStracePhase outer("read");
    ForEveryAllocationFailure([] { return std::optional<KZMBasFilStracePhase>(); },
                              [](auto& inner) { inner.emplace("mesh"); },
                              [](auto&, bool opened) {
                                  EXPECT_EQ(KZMBasFilStracePhase::Path(),
                                            opened ? "read/mesh" : "read");
                              });
    EXPECT_EQ(KZMBasFilStracePhase::Path(), "read");
}

}  // namespace
