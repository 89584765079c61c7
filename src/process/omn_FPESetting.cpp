#include <platform/platform.h>
#include <process/omn_FPESetting.h>

#include <cstring>

namespace {
constinit omn_FPEState g_state{};
}

void omn_ignoreFPESetting(bool ignore) { g_state.ignored = ignore; }

void omn_globalFPESetting() {
    const char* const wish = platform::Environment("GLOBAL_ENABLE_FPE");
    const bool trap = wish && std::strcmp(wish, "0") != 0 && !g_state.ignored;
    g_state.trapping = platform::SetFloatingPointTraps(trap) && trap;
    ++g_state.applied;
}

omn_FPEState omn_currentFPEState() { return g_state; }
