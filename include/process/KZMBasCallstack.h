#pragma once
#include <kzm_export.h>

// Reads KRV_PARALLEL_DEBUG, if it is set, as the parallel-debug level. A text that does not begin
// with a number reads as 0, a number beyond the range of int as the nearest int. Called at the
// start of the library.
KZM_API void KZMBasCallstackInit();

// The level as last read, 0 if it never was.
KZM_API int KZMBasParallelDebugLevel();
