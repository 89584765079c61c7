#pragma once
#include <kzm_export.h>

// Process-wide list of named objects, in which singletons announce themselves. It exists between
// KZMBasAlloc_initialize and the matching KZMBasAlloc_finalize, which forgets what is left in it.
// Objects are not owned. Every operation may be called from any thread.
class KZM_API omi_SingletonRegistry {
public:
    static omi_SingletonRegistry* Instance();  // null while the allocation library is stopped

    // The name is copied; a name that is listed already gets the new object. Null is the name "".
    // If memory is exhausted, std::bad_alloc leaves and the list stays as it was.
    void Add(const char* name, void* object);

    // An unknown name is ignored.
    void Remove(const char* name);

    void* Find(const char* name) const;  // null if there is none

private:
    friend struct mem_RegistryAccess;
    struct Entry;
    constexpr omi_SingletonRegistry() = default;
    Entry** Slot(const char* name);

    Entry* m_first = nullptr;  // owned chain, newest first
};
