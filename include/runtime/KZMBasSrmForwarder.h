#pragma once
#include <kzm_export.h>
#include <runtime/srm_ResourceEnums.h>

#include <cstdint>

class KZMBasCamPool;

// The address that a manager's pool look-up answers for "no opinion": it is not a pool, and a
// policy that gets it keeps what it has. A null answer, in contrast, means the general heap.
constexpr std::uintptr_t KZMBasSrmNoPool = 0xBAD1;

// The pool look-up while there is no manager: always KZMBasSrmNoPool.
KZM_API KZMBasCamPool* KZMBasSrmGetPoolNOOP(srm_ResourceEnums resource);

// Where an application plugs its memory-resource manager in. The manager derives from this class
// and installs its functions at set-up, then calls KZMBasSrmAllocator<N>::Initialize() for each
// pool; see docs/startup.md. Without one, summaries print a fixed line on standard output.
class KZM_API KZMBasSrmForwarder {
public:
    KZMBasSrmForwarder() = default;
    ~KZMBasSrmForwarder() = default;

    // Call the manager's functions, or what stands for them while there is none.
    static KZMBasCamPool* GetPool(srm_ResourceEnums resource);
    static void MemorySummary();
    static void MemorySummary(const char* phase);

    static void Initialize();  // does nothing

protected:
    // For all threads, while one is active. Null is not allowed.
    using GetPoolFunction = KZMBasCamPool* (*)(srm_ResourceEnums resource);
    using SummaryFunction = void (*)();
    using PhaseSummaryFunction = void (*)(const char* phase);
    static void SetPtrGetPool(GetPoolFunction getPool);
    static void SetPtrMemorySummary(SummaryFunction summary);
    static void SetPtrMemorySummary(PhaseSummaryFunction summary);

private:
    static GetPoolFunction pGetPool;
    static SummaryFunction pMemorySummary;
    static PhaseSummaryFunction pMemorySummaryPhase;
};
