#include <platform/platform.h>
#include <process/KZMBasCallstack.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace {
constinit int g_parallelDebugLevel = 0;
}

void KZMBasCallstackInit() {
    const char* const text = platform::Environment("KRV_PARALLEL_DEBUG");
    if (!text) return;
    const long level = std::strtol(text, nullptr, 10);
    g_parallelDebugLevel = static_cast<int>(std::clamp<long>(level, INT_MIN, INT_MAX));
}

int KZMBasParallelDebugLevel() { return g_parallelDebugLevel; }
