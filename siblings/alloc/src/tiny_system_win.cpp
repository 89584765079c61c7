#include "tiny_system.h"

#include <windows.h>

#include <cstdlib>

namespace {

constinit INIT_ONCE g_once = INIT_ONCE_STATIC_INIT;
constinit CRITICAL_SECTION g_lock{};
constinit DWORD g_slot = FLS_OUT_OF_INDEXES;
constinit DWORD g_ended = TLS_OUT_OF_INDEXES;  // set for a thread whose cache has been taken back
constinit tiny_heap::ThreadCache g_none{};

BOOL CALLBACK CreateLock(PINIT_ONCE, void*, void**) {
    InitializeCriticalSection(&g_lock);
    return TRUE;
}

// Also called by FlsFree, once for each thread that has a cache.
void NTAPI OnThreadEnd(void* cache) {
    if (!cache) return;
    tiny_heap::ThreadEnds(*static_cast<tiny_heap::ThreadCache*>(cache));
    std::free(cache);
    TlsSetValue(g_ended, &g_none);
}

}  // namespace

namespace tiny_heap {

ThreadCache& CurrentCache() {
    if (g_slot == FLS_OUT_OF_INDEXES) return g_none;
    const DWORD saved = GetLastError();
    void* const cache = FlsGetValue(g_slot);
    SetLastError(saved);
    return cache ? *static_cast<ThreadCache*>(cache) : g_none;
}

}  // namespace tiny_heap

namespace tiny_system {

char* Reserve(std::size_t size, std::size_t) {  // the system aligns to 64 KiB
    return static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}

bool Commit(char* at, std::size_t size) {
    return VirtualAlloc(at, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void Release(char* region, std::size_t) { VirtualFree(region, 0, MEM_RELEASE); }

void Lock() {
    InitOnceExecuteOnce(&g_once, &CreateLock, nullptr, nullptr);
    EnterCriticalSection(&g_lock);
}

void Unlock() { LeaveCriticalSection(&g_lock); }

bool WatchThreads() {
    g_ended = TlsAlloc();
    if (g_ended == TLS_OUT_OF_INDEXES) return false;
    g_slot = FlsAlloc(&OnThreadEnd);
    if (g_slot == FLS_OUT_OF_INDEXES) TlsFree(g_ended);
    return g_slot != FLS_OUT_OF_INDEXES;
}

void UnwatchThreads() {
    const DWORD slot = g_slot;
    g_slot = FLS_OUT_OF_INDEXES;
    if (slot == FLS_OUT_OF_INDEXES) return;
    FlsFree(slot);
    TlsFree(g_ended);
}

tiny_heap::ThreadCache* AttachCache() {
    if (TlsGetValue(g_ended)) return nullptr;
    void* const cache = std::calloc(1, sizeof(tiny_heap::ThreadCache));
    if (cache && !FlsSetValue(g_slot, cache)) {
        std::free(cache);
        return nullptr;
    }
    return static_cast<tiny_heap::ThreadCache*>(cache);
}

}  // namespace tiny_system
