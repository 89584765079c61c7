#include <runtime/KZMBasShared.h>
#include <runtime/loader_entry.h>

namespace {
constinit int g_countOfLoader = 0;
constinit bool g_started = false;
constinit bool g_processEnds = false;
}  // namespace

void kzm_LibraryLoaded() noexcept {
    try {
        KZMBasShared_initialize(g_countOfLoader);
        g_started = true;
    } catch (...) {
    }
}

bool kzm_ProcessEnds() { return g_processEnds; }

void kzm_LibraryUnloaded(bool processEnds) noexcept {
    if (!g_started) return;
    g_processEnds = processEnds;
    try {
        KZMBasShared_finalize(g_countOfLoader);
    } catch (...) {
    }
}
