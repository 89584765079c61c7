#include <coreutils/KZMBasCoreUtils.h>

namespace {
constinit unsigned g_starts = 0;
}

void KZMBasCoreUtils_initialize(int& count) {
    if (g_starts++ == 0) ++count;
}

void KZMBasCoreUtils_finalize(int& count) {
    if (g_starts-- == 1) --count;
}
