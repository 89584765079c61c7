#include <alloc/KZMBasMemPoolCow.h>
#include <runtime/KZMBasCowTrackingAllocator.h>
#include <runtime/omi_Singleton.h>

#include <cstring>

KZMBasCowTrackingAllocator::KZMBasCowTrackingAllocator()
    : m_pool(&omi_Singleton<KZMBasMemPoolCow>::Instance()) {
    *reinterpret_cast<unsigned char*>(m_pool) = 1;
}

KZMBasCowTrackingAllocator::~KZMBasCowTrackingAllocator() {}

KZMBasCowTrackingAllocator& KZMBasCowTrackingAllocator::operator=(
    const KZMBasCowTrackingAllocator& other) {
    // Usually one and the same pool, so the ranges overlap.
    std::memmove(static_cast<void*>(m_pool), other.m_pool, sizeof *m_pool);
    return *this;
}
