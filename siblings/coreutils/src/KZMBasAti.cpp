#include <coreutils/KZMBasAtiMutex.h>
#include <coreutils/KZMBasAtiThreadingModel.h>
#include <coreutils/KZMBasAtiThreadingModelHook.h>
#include <host/host_take.h>

#include <atomic>

namespace {
constinit std::atomic<KZMBasAtiMutexFactory> g_mutexFactory{&KZMBasAtiDefaultMutex};
}

KZMBasAtiMutex::~KZMBasAtiMutex() = default;

void* KZMBasAtiMutex::operator new(std::size_t size) { return host_heap::Take(size); }
void KZMBasAtiMutex::operator delete(void* block) { host_heap::GiveBack(block); }

KZMBasAtiMutex* KZMBasAtiThreadingModel::newMutex() { return g_mutexFactory.load()(); }

void KZMBasAtiSetMutexFactory(KZMBasAtiMutexFactory factory) {
    g_mutexFactory.store(factory ? factory : &KZMBasAtiDefaultMutex);
}
