#pragma once
#include <host/small_heap.h>

namespace small_heap {

// One that takes no part if the thread has none.
KZM_API ThreadCache& CurrentCache();

}  // namespace small_heap
