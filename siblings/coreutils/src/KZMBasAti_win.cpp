#include <coreutils/KZMBasAtiGlobalLock.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <windows.h>

namespace {

constinit INIT_ONCE g_once = INIT_ONCE_STATIC_INIT;
constinit CRITICAL_SECTION g_processLock{};

// Critical sections, since a process that is ending may still enter one whose owner was killed.
BOOL CALLBACK CreateProcessLock(PINIT_ONCE, void*, void**) {
    InitializeCriticalSection(&g_processLock);
    return TRUE;
}

class WindowsMutex : public KZMBasAtiMutex {
public:
    WindowsMutex() { InitializeCriticalSection(&m_section); }
    ~WindowsMutex() override { DeleteCriticalSection(&m_section); }
    void Lock() override { EnterCriticalSection(&m_section); }
    void Unlock() override { LeaveCriticalSection(&m_section); }

private:
    CRITICAL_SECTION m_section;
};

}  // namespace

KZMBasAtiMutex* KZMBasAtiDefaultMutex() { return new WindowsMutex; }

KZMBasAtiGlobalLock::KZMBasAtiGlobalLock() {
    InitOnceExecuteOnce(&g_once, &CreateProcessLock, nullptr, nullptr);
    EnterCriticalSection(&g_processLock);
}
KZMBasAtiGlobalLock::~KZMBasAtiGlobalLock() { LeaveCriticalSection(&g_processLock); }
