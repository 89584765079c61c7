#include "memory_manager.h"

#include <runtime/KZMBasShared.h>
#include <runtime/KZMBas_SingletonRegistry.h>

#include <memory>

#include "tables.h"

namespace heat {
namespace {

constexpr int kFinalizer = 29;  // runs in the first phase of the shut-down, as its last

struct Pools {
    KZMBasCamPool rows{"node label to row"};
    KZMBasCamPool temperatures{"node label to temperature"};
};
std::unique_ptr<Pools> g_pools;

}  // namespace

void MemoryManager::Install() {
    g_pools = std::make_unique<Pools>();
    SetPtrGetPool(&MemoryManager::PoolOf);
    KZMBasSrmAllocator<kRowResource>::Initialize();
    KZMBasSrmAllocator<kTemperatureResource>::Initialize();
    omi_Singleton<KZMBas_SingletonRegistry>::Instance().Tag(kFinalizer, &MemoryManager::Remove);
}

const KZMBasCamPool& MemoryManager::RowPool() { return g_pools->rows; }
const KZMBasCamPool& MemoryManager::TemperaturePool() { return g_pools->temperatures; }

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
