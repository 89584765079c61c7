#pragma once
#include "tiny_heap.h"

namespace tiny_heap {

// One that belongs to no start if the thread has none.
ThreadCache& CurrentCache();

}  // namespace tiny_heap
