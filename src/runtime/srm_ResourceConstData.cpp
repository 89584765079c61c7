#include <runtime/srm_ResourceConstData.h>

#include <cassert>
#include <cstring>

// No initializer for the whole: m_resourceData must stay as it is.
srm_ResourceConstData::srm_ResourceConstData() : m_purgeIdBase(0), m_reserved(0) {
    std::memset(m_resourceNames, 0, sizeof m_resourceNames);
    std::memset(m_phaseNames, 0, sizeof m_phaseNames);
    std::memset(m_procedureNames, 0, sizeof m_procedureNames);
    std::memset(m_localPurgeId, 0, sizeof m_localPurgeId);
    std::memset(m_resourceOfPurgeId, 0, sizeof m_resourceOfPurgeId);
    std::memset(m_purgeables, 0, sizeof m_purgeables);
}

void srm_ResourceConstData::PrintPhases(std::FILE* f, int) const {
    std::fprintf(f, "Phases:\n");
    for (int p = 0; p < kPhases; ++p) std::fprintf(f, "%3d) %s\n", p, m_phaseNames[p]);
    std::fflush(nullptr);
}

void srm_ResourceConstData::PrintProcedures(std::FILE* f, int) const {
    std::fprintf(f, "Procedures:\n");
    for (int p = 0; p < kProcedures; ++p) std::fprintf(f, "%3d) %s\n", p, m_procedureNames[p]);
    std::fflush(nullptr);
}

void srm_ResourceConstData::PrintResources(std::FILE* f, int) const {
    std::fprintf(f, "Resources:\n");
    for (int r = 0; r < kResources; ++r)
        std::fprintf(f, "%3d) %-22s %3d %3d\n", r, m_resourceNames[r],
                     static_cast<int>(m_localPurgeId[r]),
                     PurgeId(static_cast<srm_ResourceEnums>(r)));
}

void srm_ResourceConstData::PrintPriorities(std::FILE* f, int) const {
    std::fprintf(f, "Priorities:\n");
    for (int i = 0; i < kProcedures; ++i) {
        std::fprintf(f, "%3d) %s\n", i, m_procedureNames[i]);
        for (int j = 0; j < kPhases; ++j) {
            const std::int32_t* const list = m_purgeables[i][j];
            const int n = list[0];
            if (n <= 0) continue;
            assert(n <= kPurgeIds);
            std::fprintf(f, "     phase %d %s: %d purgeables:\n", j, m_phaseNames[j], n);
            for (int k = 1; k <= n; ++k) {
                const int id = list[k];
                assert(id >= 0 && id < kPurgeIds);
                std::fprintf(f, "%16d", id);
                std::fprintf(f, " %s\n", m_resourceNames[m_resourceOfPurgeId[id]]);
            }
            std::fprintf(f, "\n");
        }
    }
    std::fflush(nullptr);
}
