#pragma once
#include <host/small_heap.h>

namespace small_heap {

[[gnu::tls_model("initial-exec")]] KZM_API extern constinit thread_local ThreadCache t_cache;

inline ThreadCache& CurrentCache() { return t_cache; }

}  // namespace small_heap
