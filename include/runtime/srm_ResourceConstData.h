#pragma once
#include <kzm_export.h>
#include <runtime/srm_ResourceEnums.h>

#include <cstdint>
#include <cstdio>

// The tables that describe the memory resources of an application: names of the resources, the
// phases and the procedures of a run, and which resources may be purged in each phase. The
// application's memory-resource manager fills the arrays; here they are looked up and printed. A
// record is 120 kilobytes: keep it off the stack.
//
// Names are zero-terminated. A resource that may be purged has a purge identifier, 0 to 44; purge
// identifiers outside that range in a list, and counts above 45, must not be printed.
class KZM_API srm_ResourceConstData {
public:
    // The extents of the tables; names have room for kNameSize - 1 bytes.
    static constexpr int kResources = srm_ResourceCount;
    static constexpr int kPhases = 22;
    static constexpr int kProcedures = 6;
    static constexpr int kPurgeIds = 45;
    static constexpr int kNameSize = 1024;

    // Everything empty and zero, but for m_resourceData, which keeps what the memory holds.
    srm_ResourceConstData();

    // The 65 local purge identifiers, to fill.
    std::int32_t* LocalPurgeId() { return m_localPurgeId; }

    // The global purge identifier: the local one plus the base, which may wrap. The resource must
    // be one of the 65.
    int PurgeId(srm_ResourceEnums resource) const {
        return static_cast<int>(static_cast<std::uint32_t>(m_localPurgeId[resource]) +
                                static_cast<std::uint32_t>(m_purgeIdBase));
    }

    // Print one table. The integer is not used. All but PrintResources flush every open output
    // stream of the process.
    void PrintPhases(std::FILE* f, int) const;
    void PrintProcedures(std::FILE* f, int) const;
    void PrintResources(std::FILE* f, int) const;
    void PrintPriorities(std::FILE* f, int) const;  // what may be purged, by procedure and phase

    // For the manager to fill: names, the local purge identifier of each resource, the resource of
    // each purge identifier, and what PurgeId adds.
    char m_resourceNames[kResources][kNameSize];
    char m_phaseNames[kPhases][kNameSize];
    char m_procedureNames[kProcedures][kNameSize];
    std::int32_t m_localPurgeId[kResources];
    std::int32_t m_resourceOfPurgeId[kPurgeIds];
    std::int32_t m_purgeIdBase;

    std::int32_t m_reserved;                  // zero, not used
    std::int32_t m_resourceData[kResources];  // the manager's own
    // The number of purge identifiers that follow, then these.
    std::int32_t m_purgeables[kProcedures][kPhases][1 + kPurgeIds];
};
