#pragma once
#include <kzm_export.h>

// A source of memory that can be handed around as an object. Blocks go back to the allocator that
// they came from. Null means that there is no memory.
class KZM_API KZMBasAllocator {
public:
    virtual ~KZMBasAllocator();

    // Memory for any object, its contents open, and back.
    virtual void* Alloc(unsigned size) = 0;
    virtual void* Alloc(unsigned size, unsigned& granted) = 0;  // granted: what may be used
    virtual void Free(void* block) = 0;                         // null is allowed

    // The same under the names of the standard library's allocators. `hint` and `size` are hints.
    virtual void* allocate(unsigned size, const void* hint) = 0;
    virtual void deallocate(void* block, unsigned size) = 0;

    // The allocator to take large blocks from, given the one that the caller would use.
    virtual const KZMBasAllocator& LargeBlockAllocator(const KZMBasAllocator& proposed) const;

protected:
    KZMBasAllocator() = default;
    KZMBasAllocator(const KZMBasAllocator&) = default;
    KZMBasAllocator& operator=(const KZMBasAllocator&) = default;
};

// The product's heap as an allocator. Answers null where the heap throws. Has no state.
class KZM_API KZMBasHeapAllocator : public KZMBasAllocator {
public:
    // As in the base class. What is granted is what was asked for.
    void* Alloc(unsigned size) override;
    void* Alloc(unsigned size, unsigned& granted) override;
    void Free(void* block) override;
    void* allocate(unsigned size, const void* hint) override;
    void deallocate(void* block, unsigned size) override;
};
