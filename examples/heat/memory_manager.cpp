#include "memory_manager.h"

#include <runtime/KZMBasShared.h>
#include <runtime/KZMBas_SingletonRegistry.h>

#include <cstdio>
#include <memory>

#include "tables.h"

namespace heat {
namespace {

constexpr int kFinalizer = 29;  // runs in the first phase of the shut-down, as its last

constexpr char kRows[] = "node label to row";
constexpr char kTemperatures[] = "node label to temperature";

struct Pools {
    KZMBasCamPool rows{kRows};
    KZMBasCamPool temperatures{kTemperatures};
};
std::unique_ptr<Pools> g_pools;
std::unique_ptr<srm_ResourceConstData> g_description;  // too large for the stack

void Name(char (&place)[srm_ResourceConstData::kNameSize], const char* name) {
    std::snprintf(place, sizeof place, "%s", name);
}

std::unique_ptr<srm_ResourceConstData> Describe() {
    auto description = std::make_unique<srm_ResourceConstData>();
    Name(description->m_resourceNames[kRowResource], kRows);
    Name(description->m_resourceNames[kTemperatureResource], kTemperatures);
    const char* const phases[] = {"reading",    "meshing", "numbering",
                                  "assembling", "solving", "writing"};
    constexpr int kWriting = 5;
    for (int i = 0; i <= kWriting; ++i) Name(description->m_phaseNames[i], phases[i]);
    constexpr int kSteadyHeat = 0;
    Name(description->m_procedureNames[kSteadyHeat], "steady heat conduction");

    // While the results are written nobody asks for rows any more.
    constexpr int kPurgeRows = 1;
    description->LocalPurgeId()[kRowResource] = kPurgeRows;
    description->m_resourceOfPurgeId[kPurgeRows] = kRowResource;
    auto& purgeables = description->m_purgeables[kSteadyHeat][kWriting];
    purgeables[0] = 1;
    purgeables[1] = kPurgeRows;
    return description;
}

}  // namespace

void MemoryManager::Install() {
    g_pools = std::make_unique<Pools>();
    g_description = Describe();
    SetPtrGetPool(&MemoryManager::PoolOf);
    KZMBasSrmAllocator<kRowResource>::Initialize();
    KZMBasSrmAllocator<kTemperatureResource>::Initialize();
    omi_Singleton<KZMBas_SingletonRegistry>::Instance().Tag(kFinalizer, &MemoryManager::Remove);
}

const KZMBasCamPool& MemoryManager::RowPool() { return g_pools->rows; }
const KZMBasCamPool& MemoryManager::TemperaturePool() { return g_pools->temperatures; }

const srm_ResourceConstData& MemoryManager::Description() { return *g_description; }

KZMBasCamPool* MemoryManager::PoolOf(srm_ResourceEnums resource) {
    if (g_pools == nullptr) return nullptr;
    switch (static_cast<int>(resource)) {
        case kRowResource:
            return &g_pools->rows;
        case kTemperatureResource:
            return &g_pools->temperatures;
        default:
            return nullptr;  // the general heap
    }
}

void MemoryManager::Remove() {
    KZMBasSrmAllocator<kRowResource>::Finalize();
    KZMBasSrmAllocator<kTemperatureResource>::Finalize();
    g_pools.reset();
    g_description.reset();
}

LibrarySession::LibrarySession() {
    KZMBasShared_initialize(m_modules);
    MemoryManager::Install();
}

LibrarySession::~LibrarySession() {
    KZMBas_SingletonRegistry& registry = omi_Singleton<KZMBas_SingletonRegistry>::Instance();
    registry.Destroy(SingletonDestructPhase(0));
    registry.Destroy(SingletonDestructPhase(1));
    KZMBasShared_finalize(m_modules);
}

}  // namespace heat
