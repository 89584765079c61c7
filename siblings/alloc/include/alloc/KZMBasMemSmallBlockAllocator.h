#pragma once
#include <kzm_export.h>

// Allocator policy for tables of many small blocks: blocks up to 32 bytes lie side by side without
// a header, larger ones come from the heap. Memory is zero-filled; std::bad_alloc on exhaustion.
class KZM_API KZMBasMemSmallBlockAllocator {
public:
    static void* allocate(unsigned size);  // for 0 bytes as mem_Malloc
    static void deallocate(void* block);   // null is allowed
};
