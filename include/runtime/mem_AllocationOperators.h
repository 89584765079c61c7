#pragma once
#include <alloc/mem_alloc.h>

#include <cstddef>
#include <new>

// Base of classes whose objects live in the product's heap: a plain `new` and `delete` of a derived
// class use it, in every module; over-aligned classes do not compile. Arrays use the global heap.
// Adds no fields. Code that places such an object in memory of its own may write ::new (p) T; what
// it placed must not be deleted.
class mem_AllocationOperators {
public:
    // From the product's heap and back; std::bad_alloc if it is exhausted. The forms with a place
    // leave the memory alone.
    static void* operator new(std::size_t size) { return mem_OperatorNewThrow(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void* operator new(std::size_t, std::align_val_t) = delete;
    static void operator delete(void* block) noexcept { mem_Free(block); }
    static void operator delete(void*, void*) noexcept {}
};

// The same for objects of a few bytes: they come from the heap's tiny-block path. No base class is
// shared with the one above, since compilers would take its delete for that of other memory.
class mem_AllocationOperatorsTiny {
public:
    // From the tiny-block path and back; otherwise as above.
    static void* operator new(std::size_t size) { return mem_OperatorNewTinyThrow(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void* operator new(std::size_t, std::align_val_t) = delete;
    static void operator delete(void* block) noexcept { mem_Free(block); }
    static void operator delete(void*, void*) noexcept {}
};
