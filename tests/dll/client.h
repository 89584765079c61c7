#pragma once
#include <errors/KZMBasUtlVersion.h>
#include <kzm_export.h>
#include <omi/omi_IntTable.h>
#include <runtime/KZMBasSrmAllocator.h>
#include <runtime/KZMBas_SingletonRegistry.h>
#include <runtime/rgx_ReCompileCache.h>

#include <array>

// A second client library of KZMBasShared: what it sees and does must be what the program sees.
namespace client {

using View = std::array<const void*, 5>;
using Table = omi_IntTable<int, KZMBasSrmAllocator<7>>;

// Singletons and pools as the including module sees them.
static inline View Here() {
    return {&omi_Singleton<KZMBasUtlVersion>::Instance(),
            &omi_Singleton<KZMBas_SingletonRegistry>::Instance(),
            &KZMBasAtiGlobalSingleton<rgx_ReCompileCache>::Instance(),
            KZMBasSrmAllocator<7>::GetPool(), KZMBasSrmAllocator<63>::GetPool()};
}
KZM_API View There();  // as the client sees them

KZM_API void* Allocate63(unsigned size);  // instantiated in this module
KZM_API void Deallocate63(void* block);
KZM_API Table* NewTable(int key, int value);

KZM_API void ThrowReadError(int code);
KZM_API void ThrowOwn();                // an exception class that only this module defines
KZM_API void Call(void (*function)());  // through frames of this module

}  // namespace client

// Header-only: each module has its own type information for it.
struct ClientError {
    virtual ~ClientError() = default;
};
