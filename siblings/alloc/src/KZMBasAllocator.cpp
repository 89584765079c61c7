#include <alloc/KZMBasAllocator.h>
#include <alloc/mem_alloc.h>

#include <new>

KZMBasAllocator::~KZMBasAllocator() = default;

const KZMBasAllocator& KZMBasAllocator::LargeBlockAllocator(const KZMBasAllocator& proposed) const {
    return proposed;
}

void* KZMBasHeapAllocator::Alloc(unsigned size) {
    try {
        return mem_OperatorNewThrow(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* KZMBasHeapAllocator::Alloc(unsigned size, unsigned& granted) {
    void* const block = Alloc(size);
    granted = block ? size : 0;
    return block;
}

void KZMBasHeapAllocator::Free(void* block) { mem_Free(block); }
void* KZMBasHeapAllocator::allocate(unsigned size, const void*) { return Alloc(size); }
void KZMBasHeapAllocator::deallocate(void* block, unsigned) { mem_Free(block); }
