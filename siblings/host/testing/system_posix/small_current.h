#pragma once
#include <host/small_heap.h>

namespace small_heap {

inline constexpr bool kHandIsNear = true;

inline Hand& CurrentHand() { return host_heap::t_hand; }

}  // namespace small_heap
