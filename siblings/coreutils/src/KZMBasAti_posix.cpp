#include <coreutils/KZMBasAtiGlobalLock.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <pthread.h>

namespace {

constinit pthread_mutex_t g_processLock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;

class PosixMutex : public KZMBasAtiMutex {
public:
    ~PosixMutex() override { pthread_mutex_destroy(&m_mutex); }
    void Lock() override { pthread_mutex_lock(&m_mutex); }
    void Unlock() override { pthread_mutex_unlock(&m_mutex); }

private:
    pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

}  // namespace

KZMBasAtiMutex* KZMBasAtiDefaultMutex() { return new PosixMutex; }

KZMBasAtiGlobalLock::KZMBasAtiGlobalLock() { pthread_mutex_lock(&g_processLock); }
KZMBasAtiGlobalLock::~KZMBasAtiGlobalLock() { pthread_mutex_unlock(&g_processLock); }
