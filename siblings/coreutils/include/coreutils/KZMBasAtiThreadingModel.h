#pragma once
#include <coreutils/KZMBasAtiMutex.h>

// Source of the locks of the product.
class KZM_API KZMBasAtiThreadingModel {
public:
    // A new lock, owned by the caller. Throws std::bad_alloc when memory is exhausted.
    static KZMBasAtiMutex* newMutex();
};
