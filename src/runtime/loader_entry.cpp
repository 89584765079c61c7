#include <runtime/KZMBasShared.h>
#include <runtime/loader_entry.h>

namespace {
constinit int g_countOfLoader = 0;
constinit bool g_started = false;
}  // namespace

void kzm_LibraryLoaded() noexcept {
    try {
        KZMBasShared_initialize(g_countOfLoader);
        g_started = true;
    } catch (...) {
    }
}

void kzm_LibraryUnloaded() noexcept {
    if (!g_started) return;
    try {
        KZMBasShared_finalize(g_countOfLoader);
    } catch (...) {
    }
}
