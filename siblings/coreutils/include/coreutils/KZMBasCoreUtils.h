#pragma once
#include <kzm_export.h>

// Counted start and stop of the core utilities: only the first start and the matching last stop
// act, and each adds to or subtracts from the caller's tally of running modules once. Everything in
// the library also works outside of the pair.
KZM_API void KZMBasCoreUtils_initialize(int& count);
KZM_API void KZMBasCoreUtils_finalize(int& count);
