#pragma once
#include <alloc/mem_alloc.h>

#include <cstring>

// The allocator policy of tables that ask for no other: zero-filled memory of the product's heap.
//
// An allocator policy is a class with these two static operations: allocate returns `size` bytes
// of zero-filled memory or throws, deallocate takes back what allocate returned.
class KZMBasOmiDefaultAllocator {
public:
    // Zero-filled memory of mem_Malloc, and back; exhaustion throws std::bad_alloc.
    static void* allocate(unsigned int size) {
        void* const block = mem_Malloc(size);
        if (size > 0) std::memset(block, 0, size);
        return block;
    }
    static void deallocate(void* block) { mem_Free(block); }
};
