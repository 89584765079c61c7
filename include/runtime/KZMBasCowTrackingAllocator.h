#pragma once
#include <kzm_export.h>

class KZMBasMemPoolCow;

// Making the first of these has the allocation library's copy-on-write pool keep track of its
// blocks from then on. The pool is a singleton of the process, and nothing switches tracking off
// again. An object of this class must not be used after the library has stopped.
class KZM_API KZMBasCowTrackingAllocator {
public:
    KZMBasCowTrackingAllocator();
    KZMBasCowTrackingAllocator(const KZMBasCowTrackingAllocator&) = default;
    ~KZMBasCowTrackingAllocator();

    // Copies the whole state of the other's pool into this one's.
    KZMBasCowTrackingAllocator& operator=(const KZMBasCowTrackingAllocator& other);

private:
    friend struct kzm_Layout;
    KZMBasMemPoolCow* m_pool;  // not owned
};
