#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <alloc/mem_alloc.h>

#include <cstring>

void* KZMBasMemSmallBlockAllocator::allocate(unsigned size) {
    if (size == 0) return mem_Malloc(0);
    return std::memset(mem_OperatorNewTinyThrow(size), 0, size);
}

void KZMBasMemSmallBlockAllocator::deallocate(void* block) { mem_Free(block); }
