#pragma once
#include <kzm_export.h>

#include <cstddef>

// A recursive lock made by KZMBasAtiThreadingModel::newMutex(). Delete it unlocked.
class KZM_API KZMBasAtiMutex {
public:
    KZMBasAtiMutex() = default;
    KZMBasAtiMutex(const KZMBasAtiMutex&) = delete;
    KZMBasAtiMutex& operator=(const KZMBasAtiMutex&) = delete;
    virtual ~KZMBasAtiMutex();

    // Lock waits while another thread holds the lock; a thread that holds it unlocks as often as it
    // has locked.
    virtual void Lock() = 0;
    virtual void Unlock() = 0;

    // In the core utilities' heap, whoever deletes.
    static void* operator new(std::size_t size);
    static void operator delete(void* block);
};
