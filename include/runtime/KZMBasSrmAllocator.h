#pragma once
#include <alloc/mem_alloc.h>
#include <coreutils/KZMBasCamPool.h>
#include <kzm_export.h>
#include <runtime/KZMBasSrmForwarder.h>

#include <cstring>

// Allocator policy on the memory resource N: takes zero-filled blocks from pool N, or from the
// general heap while no pool is set, as at load. Choose it for tables whose memory the application
// wants to account for or to serve from a pool of its own:
//
//     omi_IntTable<double, KZMBasSrmAllocator<7>> temperatures;
//
// Blocks do not remember where they came from: set, initialize and finalize the policy only while
// none of its blocks is alive. Numbers 0 to 62 are ready in the library; of 63 and 64 it holds the
// pool, and a container that names them makes the two allocation functions itself. No lock.
template <int N>
class KZM_API KZMBasSrmAllocator {
    static_assert(srm_FirstResource <= N && N <= srm_LastResource);

public:
    // Never tested here: exhaustion is reported by the pool or the heap.
    static void* allocate(unsigned size);
    static void deallocate(void* block);

    static KZMBasCamPool* GetPool();           // null: the general heap
    static void SetPool(KZMBasCamPool* pool);  // not owned
    // Asks the manager for pool N; without a manager, what is set stays.
    static void Initialize();

    static void Finalize();  // back to the general heap

    void DebugPrint() const;  // does nothing

private:
    static KZMBasCamPool* m_pool;
};

template <int N>
KZMBasCamPool* KZMBasSrmAllocator<N>::m_pool = nullptr;

template <int N>
void* KZMBasSrmAllocator<N>::allocate(unsigned size) {
    KZMBasCamPool* const pool = m_pool;
    void* const block = pool ? pool->Alloc(size) : mem_Malloc(size);
    if (size > 0) std::memset(block, 0, size);
    return block;
}

template <int N>
void KZMBasSrmAllocator<N>::deallocate(void* block) {
    if (m_pool)
        m_pool->Free(block);
    else
        mem_Free(block);
}

template <int N>
KZMBasCamPool* KZMBasSrmAllocator<N>::GetPool() {
    return m_pool;
}

template <int N>
void KZMBasSrmAllocator<N>::SetPool(KZMBasCamPool* pool) {
    m_pool = pool;
}

template <int N>
void KZMBasSrmAllocator<N>::Initialize() {
    KZMBasCamPool* const pool = KZMBasSrmForwarder::GetPool(static_cast<srm_ResourceEnums>(N));
    if (reinterpret_cast<std::uintptr_t>(pool) != KZMBasSrmNoPool) m_pool = pool;
}

template <int N>
void KZMBasSrmAllocator<N>::Finalize() {
    m_pool = nullptr;
}

template <int N>
void KZMBasSrmAllocator<N>::DebugPrint() const {}

// clang-format off
#define KZM_SRM_WHOLE_POOLS(X)                                                       \
    X(0) X(1) X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14)  \
    X(15) X(16) X(17) X(18) X(19) X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27)    \
    X(28) X(29) X(30) X(31) X(32) X(33) X(34) X(35) X(36) X(37) X(38) X(39) X(40)    \
    X(41) X(42) X(43) X(44) X(45) X(46) X(47) X(48) X(49) X(50) X(51) X(52) X(53)    \
    X(54) X(55) X(56) X(57) X(58) X(59) X(60) X(61) X(62)
// clang-format on
#define KZM_SRM_MANAGED_POOLS(X) X(63) X(64)

#define KZM_SRM_DECLARE(N) extern template class KZMBasSrmAllocator<N>;
#define KZM_SRM_MANAGEMENT(PREFIX, N)                                    \
    PREFIX template KZMBasCamPool* KZMBasSrmAllocator<N>::GetPool();     \
    PREFIX template void KZMBasSrmAllocator<N>::SetPool(KZMBasCamPool*); \
    PREFIX template void KZMBasSrmAllocator<N>::Initialize();            \
    PREFIX template void KZMBasSrmAllocator<N>::Finalize();              \
    PREFIX template void KZMBasSrmAllocator<N>::DebugPrint() const;      \
    PREFIX template KZMBasCamPool* KZMBasSrmAllocator<N>::m_pool;
#define KZM_SRM_DECLARE_MANAGED(N) KZM_SRM_MANAGEMENT(extern, N)
KZM_SRM_WHOLE_POOLS(KZM_SRM_DECLARE)
KZM_SRM_MANAGED_POOLS(KZM_SRM_DECLARE_MANAGED)
