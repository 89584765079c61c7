#pragma once
#include <runtime/KZMBasShared.h>

namespace bench {

// To be kept at namespace scope: as in the product, the library is started while workloads run,
// also where the linker leaves out libraries that a program uses only through inline members.
struct Started {
    Started() { KZMBasShared_initialize(m_count); }
    ~Started() { KZMBasShared_finalize(m_count); }
    int m_count = 0;
};

}  // namespace bench
