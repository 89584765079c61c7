#include <alloc/mem_alloc.h>
#include <host/host_heap.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

// What no heap can serve is refused here: allocators that check their callers end the process.
bool Refused(std::size_t size) { return size > PTRDIFF_MAX || !host_heap::Allowed(); }

}  // namespace

void* mem_Malloc(std::size_t size) {
    if (Refused(size)) throw std::bad_alloc();
    void* block = std::malloc(size);
    if (!block && size != 0) throw std::bad_alloc();
    if (block) host_heap::Taken();
    return block;
}

void* mem_Realloc(void* block, std::size_t size) {
    if (!block) return mem_Malloc(size);
    if (size == 0) {
        mem_Free(block);
        return nullptr;
    }
    if (Refused(size)) throw std::bad_alloc();
    void* grown = std::realloc(block, size);
    if (!grown) throw std::bad_alloc();
    return grown;
}

void mem_Free(void* block) noexcept {
    if (!block) return;
    host_heap::Released();
    std::free(block);
}

void* mem_OperatorNewThrow(std::size_t size) { return mem_Malloc(size ? size : 1); }
void* mem_OperatorNewThrowBuiltin(std::size_t size) { return mem_Malloc(size ? size : 1); }
void* mem_OperatorNewTinyThrow(std::size_t size) { return mem_Malloc(size ? size : 1); }
