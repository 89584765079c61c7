#include <host/host_heap.h>

namespace host_heap {

constinit Probe g_probe;

bool CountRequest() {
    g_probe.requests.fetch_add(1, std::memory_order_relaxed);
    if (g_probe.untilFailure.load(std::memory_order_relaxed) == 0) return true;
    return g_probe.untilFailure.fetch_sub(1, std::memory_order_relaxed) != 1;
}

void CountRelease() { g_probe.live.fetch_sub(1, std::memory_order_relaxed); }

void Watch(long failAt) {
    g_probe.untilFailure = failAt;
    g_probe.requests = 0;
    g_probe.live = 0;
    g_probe.watching = true;
}

void Unwatch() { g_probe.watching = false; }

}  // namespace host_heap
