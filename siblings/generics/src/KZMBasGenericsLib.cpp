#include <generics/KZMBasGenericsLib.h>

namespace {
constinit unsigned g_starts = 0;
}

void KZMBasGenericsLib_initialize(int& count) {
    if (g_starts++ == 0) ++count;
}

void KZMBasGenericsLib_finalize(int& count) {
    if (g_starts-- == 1) --count;
}
