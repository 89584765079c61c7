#include <alloc/mem_alloc.h>
#include <host/host_heap.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tiny_heap.h"

namespace {

// What no heap can serve is refused here: allocators that check their callers end the process.
bool Refused(std::size_t size) { return size > PTRDIFF_MAX || !host_heap::Allowed(); }

[[noreturn]] void RaiseExhausted() { throw std::bad_alloc(); }

void* FromHeap(std::size_t size) {
    void* const block = std::malloc(size);
    if (!block && size != 0) RaiseExhausted();
    return block;
}

bool Watched() { return host_heap::g_probe.watching.load(std::memory_order_relaxed); }

[[gnu::noinline]] void* TakeUnusually(std::size_t size) {
    if (size > tiny_heap::kLargest || !tiny_heap::kInUse) return mem_OperatorNewThrow(size);
    if (!host_heap::Allowed()) RaiseExhausted();
    void* block = tiny_heap::Take(size ? size : 1);
    if (!block) block = FromHeap(tiny_heap::kLargest);
    host_heap::Taken();
    return block;
}

[[gnu::noinline]] void FreeUnusually(void* block) {
    if (!block) return;
    host_heap::Released();
    std::size_t offset;
    if (tiny_heap::Owns(block, offset))
        tiny_heap::GiveBack(block, offset);
    else
        std::free(block);
}

// Bytes, with the contents, into the heap; then the tiny block ends.
void* MoveFromTiny(void* block, std::size_t offset, std::size_t size) {
    const std::size_t held = tiny_heap::UnitsAt(offset) * std::size_t{tiny_heap::kUnit};
    if (size <= held) return block;
    void* const grown = FromHeap(size);
    std::memcpy(grown, block, held);
    tiny_heap::GiveBack(block, offset);
    return grown;
}

}  // namespace

void* mem_Malloc(std::size_t size) {
    if (Refused(size)) RaiseExhausted();
    void* const block = FromHeap(size);
    if (block) host_heap::Taken();
    return block;
}

void* mem_Realloc(void* block, std::size_t size) {
    if (!block) return mem_Malloc(size);
    if (size == 0) {
        mem_Free(block);
        return nullptr;
    }
    if (Refused(size)) RaiseExhausted();
    std::size_t offset;
    if (tiny_heap::Owns(block, offset)) return MoveFromTiny(block, offset, size);
    void* const grown = std::realloc(block, size);
    if (!grown) RaiseExhausted();
    return grown;
}

void mem_Free(void* block) noexcept {
    std::size_t offset;
    if (tiny_heap::Owns(block, offset) && !Watched()) [[likely]]
        tiny_heap::GiveBack(block, offset);
    else
        FreeUnusually(block);
}

void* mem_OperatorNewThrow(std::size_t size) { return mem_Malloc(size ? size : 1); }
void* mem_OperatorNewThrowBuiltin(std::size_t size) { return mem_Malloc(size ? size : 1); }

void* mem_OperatorNewTinyThrow(std::size_t size) {
    if (size - 1 < tiny_heap::kLargest && tiny_heap::kInUse && !Watched()) [[likely]]
        if (void* const block = tiny_heap::Take(size)) [[likely]]
            return block;
    return TakeUnusually(size);
}
