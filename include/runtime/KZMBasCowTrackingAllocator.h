#pragma once
#include <kzm_export.h>

class KZMBasMemPoolCow;

// While one of these has been made, the allocation library's copy-on-write pool keeps track of its
// blocks. The pool is a singleton of the process: nothing switches tracking off again.
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
