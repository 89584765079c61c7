#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <alloc/omi_SingletonRegistryHook.h>
#include <coreutils/KZMBasAtiGlobalLock.h>

#include <atomic>
#include <cstring>
#include <new>

#include "mem_RegistryAccess.h"

// The name follows the entry in the same block.
struct omi_SingletonRegistry::Entry {
    Entry* m_next;
    void* m_object;
    char* Name() { return reinterpret_cast<char*>(this + 1); }
};

namespace {

constinit std::atomic<bool> g_open{false};
constinit std::atomic<omi_SingletonRegistryObserver> g_observer{nullptr};

void Tell(bool added, const char* name) {
    if (const omi_SingletonRegistryObserver observer = g_observer.load()) observer(added, name);
}

const char* OrEmpty(const char* name) { return name ? name : ""; }

}  // namespace

omi_SingletonRegistry* omi_SingletonRegistry::Instance() {
    static constinit omi_SingletonRegistry registry;
    return g_open.load(std::memory_order_acquire) ? &registry : nullptr;
}

omi_SingletonRegistry::Entry** omi_SingletonRegistry::Slot(const char* name) {
    Entry** slot = &m_first;
    while (*slot && std::strcmp((*slot)->Name(), name) != 0) slot = &(*slot)->m_next;
    return slot;
}

void omi_SingletonRegistry::Add(const char* name, void* object) {
    name = OrEmpty(name);
    const KZMBasAtiGlobalLock lock;
    Tell(true, name);
    if (Entry* const known = *Slot(name)) {
        known->m_object = object;
        return;
    }
    const std::size_t nameSize = std::strlen(name) + 1;
    Entry* const entry =
        ::new (mem_OperatorNewThrow(sizeof(Entry) + nameSize)) Entry{m_first, object};
    std::memcpy(entry->Name(), name, nameSize);
    m_first = entry;
}

void omi_SingletonRegistry::Remove(const char* name) {
    name = OrEmpty(name);
    const KZMBasAtiGlobalLock lock;
    Tell(false, name);
    Entry** const slot = Slot(name);
    if (Entry* const entry = *slot) {
        *slot = entry->m_next;
        mem_Free(entry);
    }
}

void* omi_SingletonRegistry::Find(const char* name) const {
    const KZMBasAtiGlobalLock lock;
    for (Entry* entry = m_first; entry; entry = entry->m_next)
        if (std::strcmp(entry->Name(), OrEmpty(name)) == 0) return entry->m_object;
    return nullptr;
}

void mem_RegistryAccess::Open() { g_open.store(true, std::memory_order_release); }

void mem_RegistryAccess::Close() {
    const KZMBasAtiGlobalLock lock;
    omi_SingletonRegistry* const registry = omi_SingletonRegistry::Instance();
    g_open.store(false, std::memory_order_release);
    while (omi_SingletonRegistry::Entry* const entry = registry->m_first) {
        registry->m_first = entry->m_next;
        mem_Free(entry);
    }
}

void omi_SetSingletonRegistryObserver(omi_SingletonRegistryObserver observer) {
    g_observer.store(observer);
}
