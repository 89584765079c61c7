#pragma once
#include <host/small_heap.h>

namespace small_heap {

inline constexpr bool kHandIsNear = false;  // it takes a call into the library

// One that takes no part if the thread has none.
Hand& CurrentHand();

}  // namespace small_heap
