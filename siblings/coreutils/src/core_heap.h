#pragma once
#include <host/host_heap.h>

#include <cstdint>
#include <cstdlib>
#include <new>

// The heap of the core utilities, which stand below the allocation library.
namespace core_heap {

inline void* Take(std::size_t size) {
    void* const block = size <= PTRDIFF_MAX && host_heap::Allowed() ? std::malloc(size) : nullptr;
    if (!block) throw std::bad_alloc();
    host_heap::Taken();
    return block;
}

inline void GiveBack(void* block) noexcept {
    if (!block) return;
    host_heap::Released();
    std::free(block);
}

}  // namespace core_heap
