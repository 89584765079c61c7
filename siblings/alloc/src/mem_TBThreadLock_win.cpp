#include <alloc/mem_TBThreadLock.h>
#include <windows.h>

namespace {

constinit INIT_ONCE g_once = INIT_ONCE_STATIC_INIT;
constinit CRITICAL_SECTION g_lock{};

BOOL CALLBACK CreateLock(PINIT_ONCE, void*, void**) {
    InitializeCriticalSection(&g_lock);
    return TRUE;
}

}  // namespace

void mem_TBThreadLock(bool take) {
    InitOnceExecuteOnce(&g_once, &CreateLock, nullptr, nullptr);
    if (take)
        EnterCriticalSection(&g_lock);
    else
        LeaveCriticalSection(&g_lock);
}
