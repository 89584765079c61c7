#pragma once
#include <host/host_heap.h>
#include <host/small_heap.h>

#include <atomic>
#include <cstddef>

// The heap of the sibling libraries, what the allocation library offers included: the C library's,
// and beside it small_heap for blocks of a few bytes. Only the siblings' sources include this.
namespace host_heap {

KZM_API extern std::atomic<bool> g_watched;
inline bool Watched() { return g_watched.load(std::memory_order_relaxed); }

constexpr bool IsSmall(std::size_t size) {
    return small_heap::kInUse && size - 1 < small_heap::kLargest;
}

// Of a size: aligned for everything, or only as an object of that size can need.
constexpr unsigned AlignedClass(std::size_t size) {
    return small_heap::ClassOf((size + 15) & ~std::size_t{15});
}
constexpr unsigned PackedClass(std::size_t size) { return small_heap::ClassOf(size); }

KZM_API void* TakeUnusually(std::size_t size);
KZM_API void* TakePackedUnusually(std::size_t size);
KZM_API void GiveBackUnusually(void* block);

// Throws std::bad_alloc when memory is exhausted. Of 0 bytes comes what the C library gives, which
// may be null.
inline void* Take(std::size_t size) {
    if (IsSmall(size) && !Watched()) [[likely]]
        if (void* const block = small_heap::Take(AlignedClass(size))) [[likely]]
            return block;
    return TakeUnusually(size);
}

// Never null, and blocks lie close together.
inline void* TakePacked(std::size_t size) {
    if (IsSmall(size) && !Watched()) [[likely]]
        if (void* const block = small_heap::Take(PackedClass(size))) [[likely]]
            return block;
    return TakePackedUnusually(size);
}

// On exhaustion the old block stays as it was; size 0 frees it and yields null.
KZM_API void* Resize(void* block, std::size_t size);

// A block of any of these, from any thread. Null is allowed.
inline void GiveBack(void* block) noexcept {
    if (Watched() || !small_heap::GiveBack(block)) [[unlikely]]
        GiveBackUnusually(block);
}

// Between the two every thread keeps small blocks of its own; outside there are only those that
// are still alive. While one thread is active.
KZM_API void Start();
KZM_API void Stop();

}  // namespace host_heap
