#pragma once
#include <kzm_export.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>

// Every allocation of the sibling libraries asks this probe first. While nobody watches, that is
// one load and one branch; while a test watches, blocks are counted and the n-th request can be
// refused. Not installed: only the siblings' sources and tests include it.
namespace host_heap {

struct Probe {
    std::atomic<bool> watching{false};
    std::atomic<long> untilFailure{0};  // requests up to and including the one to refuse, 0: never
    std::atomic<long> requests{0};      // since Watch
    std::atomic<long> live{0};          // blocks taken less blocks given back since Watch
};
KZM_API extern Probe g_probe;

KZM_API bool CountRequest();  // false: refuse this one
KZM_API void CountRelease();

// Call before taking a block (a growing realloc counts as a request and keeps the block count).
inline bool Allowed() {
    return !g_probe.watching.load(std::memory_order_relaxed) || CountRequest();
}
inline void Taken() {
    if (g_probe.watching.load(std::memory_order_relaxed))
        g_probe.live.fetch_add(1, std::memory_order_relaxed);
}
inline void Released() {
    if (g_probe.watching.load(std::memory_order_relaxed)) CountRelease();
}

// Starts counting from zero; with a positive failAt the failAt-th request from now is refused once.
KZM_API void Watch(long failAt = 0);
KZM_API void Unwatch();

}  // namespace host_heap
