#pragma once
#include <kzm_export.h>

// Holds the one process-wide lock for the length of a scope. Recursive. Usable at any time, also
// before the library has started and after it has stopped.
class KZM_API KZMBasAtiGlobalLock {
public:
    KZMBasAtiGlobalLock();
    KZMBasAtiGlobalLock(const KZMBasAtiGlobalLock&) = delete;
    KZMBasAtiGlobalLock& operator=(const KZMBasAtiGlobalLock&) = delete;
    ~KZMBasAtiGlobalLock();
};
