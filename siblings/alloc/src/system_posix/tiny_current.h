#pragma once
#include "tiny_heap.h"

namespace tiny_heap {

extern constinit thread_local ThreadCache t_cache __attribute__((tls_model("initial-exec")));

inline ThreadCache& CurrentCache() { return t_cache; }

}  // namespace tiny_heap
