#pragma once
#include <coreutils/KZMBasAtiMutex.h>

// Tests replace what KZMBasAtiThreadingModel::newMutex() does, for instance to count the requests
// or to return null; a null factory restores the default. Not installed.
using KZMBasAtiMutexFactory = KZMBasAtiMutex* (*)();
KZM_API void KZMBasAtiSetMutexFactory(KZMBasAtiMutexFactory factory);
KZM_API KZMBasAtiMutex* KZMBasAtiDefaultMutex();
