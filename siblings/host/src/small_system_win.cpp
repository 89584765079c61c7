#include "small_system.h"

#include <small_current.h>
#include <windows.h>
#include <winternl.h>

#include <cstdlib>

extern "C" NTSYSAPI BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace {

constexpr DWORD kDirectSlots = 64;  // those in the thread's own block

constinit INIT_ONCE g_once = INIT_ONCE_STATIC_INIT;
constinit CRITICAL_SECTION g_lock{};
constinit DWORD g_slot = TLS_OUT_OF_INDEXES;  // the hand; g_none after it has been taken back
constinit DWORD g_end = FLS_OUT_OF_INDEXES;   // tells when a thread that has one ends
constinit small_heap::Hand g_none{};

BOOL CALLBACK CreateLock(PINIT_ONCE, void*, void**) {
    InitializeCriticalSection(&g_lock);
    return TRUE;
}

// Also called by FlsFree, once for each thread that has a hand.
void NTAPI OnThreadEnd(void* hand) {
    if (!hand) return;
    small_heap::ThreadEnds(*static_cast<small_heap::Hand*>(hand));
    std::free(hand);
    TlsSetValue(g_slot, &g_none);
}

void* OfOtherSlot(DWORD slot) {
    if (slot == TLS_OUT_OF_INDEXES) return nullptr;
    const DWORD saved = GetLastError();
    void* const value = TlsGetValue(slot);
    SetLastError(saved);
    return value;
}

}  // namespace

namespace small_heap {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"  // it takes the block's address for an array's
Hand& CurrentHand() {
    const DWORD slot = g_slot;
    void* const hand = slot < kDirectSlots ? NtCurrentTeb()->TlsSlots[slot] : OfOtherSlot(slot);
    return hand ? *static_cast<Hand*>(hand) : g_none;
}
#pragma GCC diagnostic pop

}  // namespace small_heap

namespace small_system {

char* Reserve(std::size_t size, std::size_t) {  // the system aligns to 64 KiB
    return static_cast<char*>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}

bool Commit(char* at, std::size_t size) {
    return VirtualAlloc(at, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

void Decommit(char* at, std::size_t size) { VirtualFree(at, size, MEM_DECOMMIT); }
void Release(char* region, std::size_t) { VirtualFree(region, 0, MEM_RELEASE); }

// When the process ends one thread is left, and another may have been ended while it held the lock.
void Lock() {
    if (ProcessMayEnd()) return;
    InitOnceExecuteOnce(&g_once, &CreateLock, nullptr, nullptr);
    EnterCriticalSection(&g_lock);
}

void Unlock() {
    if (!ProcessMayEnd()) LeaveCriticalSection(&g_lock);
}

bool WatchThreads() {
    const DWORD slot = TlsAlloc();
    if (slot == TLS_OUT_OF_INDEXES) return false;
    g_end = FlsAlloc(&OnThreadEnd);
    if (g_end == FLS_OUT_OF_INDEXES) {
        TlsFree(slot);
        return false;
    }
    g_slot = slot;
    return true;
}

void UnwatchThreads() {
    const DWORD slot = g_slot;
    g_slot = TLS_OUT_OF_INDEXES;
    FlsFree(g_end);
    TlsFree(slot);
}

bool ProcessMayEnd() { return RtlDllShutdownInProgress() != FALSE; }

small_heap::Hand* AttachHand() {
    if (TlsGetValue(g_slot)) return nullptr;
    void* const hand = std::calloc(1, sizeof(small_heap::Hand));
    if (hand && (!FlsSetValue(g_end, hand) || !TlsSetValue(g_slot, hand))) {
        FlsSetValue(g_end, nullptr);
        std::free(hand);
        return nullptr;
    }
    return static_cast<small_heap::Hand*>(hand);
}

}  // namespace small_system
