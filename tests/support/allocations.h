#pragma once
#include <host/host_heap.h>

// How many blocks the operation asks for.
long AllocationsOf(auto operation) {
    host_heap::Watch();
    operation();
    const long requests = host_heap::g_probe.requests;
    host_heap::Unwatch();
    return requests;
}
