#include "small_system.h"

#include <dlfcn.h>
#include <pthread.h>
#include <small_current.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace {

constexpr pthread_mutex_t kUnlocked = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
constinit pthread_mutex_t g_lock = kUnlocked;
constinit pthread_key_t g_threadEnd = 0;
constinit bool g_watching = false;
constinit bool g_processMayEnd = true;

void OnThreadEnd(void* hand) {
    auto* const ending = static_cast<small_heap::Hand*>(hand);
    ending->m_ended = true;
    small_heap::ThreadEnds(*ending);
}

// What the program was started with is never unloaded. What it has loaded since registers a routine
// that runs before the entry routines when the process ends, and after them when it is unloaded.
__attribute__((constructor)) void Loaded() {
    // A child of fork begins with the heap at rest. Its thread is not the one that locked it, so
    // there unlocking is for the thread sanitizer only.
    pthread_atfork(&small_system::Lock, &small_system::Unlock, [] {
        small_system::Unlock();
        g_lock = kUnlocked;
    });
    if (void* const program = dlopen(nullptr, RTLD_LAZY)) {
        g_processMayEnd = dlsym(program, "_ZN9host_heap6t_handE") != nullptr ||
                          std::atexit([] { g_processMayEnd = true; }) != 0;
        dlclose(program);
    }
}

__attribute__((destructor)) void Unloaded() { small_system::UnwatchThreads(); }

}  // namespace

namespace host_heap {
constinit thread_local Hand t_hand{};
}

namespace small_system {

char* Reserve(std::size_t size, std::size_t alignment) {
    void* const got = mmap(nullptr, size + alignment, PROT_NONE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (got == MAP_FAILED) return nullptr;
    char* const from = static_cast<char*>(got);
    const std::size_t before = (0 - reinterpret_cast<std::uintptr_t>(from)) & (alignment - 1);
    if (before > 0) munmap(from, before);
    munmap(from + before + size, alignment - before);
    return from + before;
}

bool Commit(char* at, std::size_t size) { return mprotect(at, size, PROT_READ | PROT_WRITE) == 0; }
void Decommit(char* at, std::size_t size) { madvise(at, size, MADV_DONTNEED); }
void Release(char* region, std::size_t size) { munmap(region, size); }

void Lock() { pthread_mutex_lock(&g_lock); }
void Unlock() { pthread_mutex_unlock(&g_lock); }

bool WatchThreads() {
    g_watching = pthread_key_create(&g_threadEnd, &OnThreadEnd) == 0;
    return g_watching;
}

void UnwatchThreads() {
    if (std::exchange(g_watching, false)) pthread_key_delete(g_threadEnd);
}

bool ProcessMayEnd() { return g_processMayEnd; }

small_heap::Hand* AttachHand() {
    small_heap::Hand* const hand = &host_heap::t_hand;
    if (!g_watching || hand->m_ended || pthread_setspecific(g_threadEnd, hand) != 0) return nullptr;
    return hand;
}

}  // namespace small_system
