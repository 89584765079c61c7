#pragma once
#include <kzm_export.h>

// Counted start and stop of the allocation library: only the first start and the matching last stop
// act, and each adds to or subtracts from the caller's tally of running modules once. Between them
// omi_SingletonRegistry::Instance() exists. The heap works outside of the pair as well; blocks may
// live on past the stop.
KZM_API void KZMBasAlloc_initialize(int& count);
KZM_API void KZMBasAlloc_finalize(int& count);
