#pragma once
#include <cow/cow_String.h>
#include <kzm_export.h>
#include <omi/omi_IntTable.h>
#include <runtime/KZMBasSrmAllocator.h>

// A second client library of KZMBasShared: what it sees and does must be what the program sees.
namespace client {

// Addresses and settings as this module sees them.
struct View {
    const void* version;   // the singleton of the version record
    const void* registry;  // the singleton of tagged finalizers
    const void* cache;     // a singleton with a lock
    const void* pool7;     // of the allocator policies
    const void* pool63;
};
KZM_API View Look();

KZM_API void SetPool63(KZMBasCamPool* pool);
KZM_API void* Allocate63(unsigned size);  // instantiated in this module
KZM_API void Deallocate63(void* block);

KZM_API void Keep(const cow_String& text);  // shares
KZM_API const cow_String& Kept();
KZM_API omi_IntTable<int, KZMBasSrmAllocator<7>>* NewTable(int key, int value);

KZM_API void ThrowReadError(int code);
KZM_API void ThrowOwn();                // an exception class that only this module defines
KZM_API void Call(void (*function)());  // through frames of this module

}  // namespace client

// Header-only: each module has its own type information for it.
struct ClientError {
    virtual ~ClientError() = default;
    int value = 17;
};
