#pragma once
#include <host/host_hand.h>
#include <host/host_heap.h>
#include <host/small_heap.h>

#include <cstddef>

// The heap of the sibling libraries, what the allocation library offers included: the C library's,
// and beside it small_heap for blocks of a few bytes. Only the siblings' sources include this.
namespace host_heap {

constexpr bool IsSmall(std::size_t size) {
    return small_heap::kInUse && size - 1 < small_heap::kLargest;
}

// Throws std::bad_alloc when memory is exhausted. Of 0 bytes comes what the C library gives, which
// may be null.
inline void* Take(std::size_t size) {
    if constexpr (small_heap::kHandIsNear)
        if (IsSmall(size)) [[likely]]
            if (void* const block = FromHand(AlignedClassOf(size))) return block;
    return TakeElsewhere(size);
}

// Null if the library is to be asked.
inline void* PackedFromHand(std::size_t size) {
    if constexpr (small_heap::kHandIsNear)
        if (IsSmall(size)) [[likely]]
            return FromHand(ClassOf(size));
    return nullptr;
}

// Never null, and blocks lie close together.
inline void* TakePacked(std::size_t size) {
    if (void* const block = PackedFromHand(size)) return block;
    return TakePackedElsewhere(size);
}

// On exhaustion the old block stays as it was; size 0 frees it and yields null.
KZM_API void* Resize(void* block, std::size_t size);

// A block of any of these, from any thread. Null is allowed.
inline void GiveBack(void* block) noexcept {
    if constexpr (small_heap::kHandIsNear)
        if (ToHand(block)) return;
    GiveBackElsewhere(block);
}

// Between the two every thread keeps small blocks of its own; outside there are those that are
// still alive and, where the process may be ending, what threads keep that go on. While one thread
// is active, but for such.
KZM_API void Start();
KZM_API void Stop();

}  // namespace host_heap
