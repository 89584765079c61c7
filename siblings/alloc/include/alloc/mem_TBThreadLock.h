#pragma once
#include <kzm_export.h>

// The thread lock of the allocation library: true takes it, false releases it. Recursive; every
// take needs its release on the same thread. Usable at any time. It guards what its users agree on;
// the heap itself does not take it.
KZM_API void mem_TBThreadLock(bool take);
