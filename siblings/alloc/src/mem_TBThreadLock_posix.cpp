#include <alloc/mem_TBThreadLock.h>
#include <pthread.h>

namespace {
constinit pthread_mutex_t g_lock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
}

void mem_TBThreadLock(bool take) {
    if (take)
        pthread_mutex_lock(&g_lock);
    else
        pthread_mutex_unlock(&g_lock);
}
