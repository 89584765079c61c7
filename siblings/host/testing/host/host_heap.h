#pragma once
#include <kzm_export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

// While a test watches, every allocation of the sibling libraries goes by this probe: blocks are
// counted and the n-th request can be refused. Threads other than the watching one must have
// started after it did. Not installed: only the siblings' sources and tests include it.
namespace host_heap {

struct Probe {
    std::atomic<long> untilFailure{0};  // requests up to and including the one to refuse, 0: never
    std::atomic<long> requests{0};      // since Watch
    std::atomic<long> live{0};          // blocks taken less blocks given back since Watch
};
KZM_API extern Probe g_probe;
bool Watched();

// Starts counting from zero; with a positive failAt the failAt-th request from now is refused once.
// A growing realloc counts as a request and keeps the block count.
KZM_API void Watch(long failAt = 0);
KZM_API void Unwatch();

// What the small blocks occupy.
struct SmallFigures {
    bool inUse;  // false under the address sanitizer, where every block is the C library's
    bool reserved;
    std::size_t committedBytes;
    std::uint64_t blocksOut;  // alive, or free in the stock of a thread
};
KZM_API SmallFigures SmallState();

// While nothing is reserved: whether reserving shall fail from now on, as when addresses are short.
KZM_API void RefuseRegion(bool refuse);

}  // namespace host_heap
