#pragma once
#include <kzm_export.h>

#include <cstddef>

// The product's heap. Every function throws std::bad_alloc when memory is exhausted; a request for
// 0 bytes is none and yields null or a block that may be freed, as the C library does. Blocks of
// any of these functions go back through mem_Free, from any thread.
KZM_API void* mem_Malloc(std::size_t size);

// As realloc: the block keeps its contents up to the lesser size. On exhaustion the old block stays
// as it was. With size 0 the block is freed and null comes back.
KZM_API void* mem_Realloc(void* block, std::size_t size);

// Null is allowed.
KZM_API void mem_Free(void* block) noexcept;

// The storage behind operator new: never null, also for 0 bytes.
KZM_API void* mem_OperatorNewThrow(std::size_t size);
KZM_API void* mem_OperatorNewThrowBuiltin(std::size_t size);

// The path for objects of a few bytes, such as share counts: no header per block, blocks of one
// size lie side by side. A block is aligned as an object of its size can need, so 12 bytes only to
// 4. Fastest while the library is started. Beyond 512 bytes as mem_OperatorNewThrow.
KZM_API void* mem_OperatorNewTinyThrow(std::size_t size);

#ifdef KZM_INLINE_HEAP  // of the compact allocation library, where the system allows it
#include <host/host_hand.h>

// Bodies for inlining only: what the thread has in hand needs no call. The functions themselves are
// those of the library.
extern inline __attribute__((gnu_inline)) void* mem_Malloc(std::size_t size) {
    if (__builtin_constant_p(size) && size - 1 < host_heap::kLargestSmall)
        if (void* const block = host_heap::FromHand(host_heap::AlignedClassOf(size))) [[likely]]
            return block;
    return host_heap::TakeElsewhere(size);
}

extern inline __attribute__((gnu_inline)) void mem_Free(void* block) noexcept {
    if (!host_heap::ToHand(block)) [[unlikely]]
        host_heap::GiveBackElsewhere(block);
}

extern inline __attribute__((gnu_inline)) void* mem_OperatorNewThrow(std::size_t size) {
    return mem_Malloc(size ? size : 1);
}

extern inline __attribute__((gnu_inline)) void* mem_OperatorNewTinyThrow(std::size_t size) {
    if (size - 1 < 32)
        if (void* const block = host_heap::FromHand(host_heap::ClassOf(size))) [[likely]]
            return block;
    return host_heap::TakePackedElsewhere(size);
}
#endif

// mem_Free for the block of an object of this constant size that came, as a rule, from
// mem_OperatorNewThrow, or from mem_OperatorNewTinyThrow. Right for every block, quicker for those.
[[gnu::always_inline]] inline void mem_FreeSized(void* block,
                                                 [[maybe_unused]] std::size_t size) noexcept {
#ifdef KZM_INLINE_HEAP
    if (size <= host_heap::kLargestSmall) {
        if (!host_heap::ToHand(block, host_heap::AlignedClassOf(size))) [[unlikely]]
            host_heap::GiveBackElsewhere(block);
        return;
    }
#endif
    mem_Free(block);
}
[[gnu::always_inline]] inline void mem_FreeTiny(void* block,
                                                [[maybe_unused]] std::size_t size) noexcept {
#ifdef KZM_INLINE_HEAP
    if (size <= host_heap::kLargestSmall) {
        if (!host_heap::ToHand(block, host_heap::ClassOf(size))) [[unlikely]]
            host_heap::GiveBackElsewhere(block);
        return;
    }
#endif
    mem_Free(block);
}
