#pragma once
#include <kzm_export.h>

// Counted start and stop of the generics library: only the first start and the matching last stop
// act, and each adds to or subtracts from the caller's tally of running modules once.
KZM_API void KZMBasGenericsLib_initialize(int& count);
KZM_API void KZMBasGenericsLib_finalize(int& count);
