#pragma once
#include <kzm_export.h>

#include <cstddef>
#include <cstdint>

// What the tiny blocks occupy, for tests. Not installed.
struct mem_TinyFigures {
    bool inUse;  // false under sanitizers, where every block comes from the C library
    bool reserved;
    std::size_t committedBytes;
    std::uint64_t blocksOut;  // alive, or free in the stock of a thread
};
KZM_API mem_TinyFigures mem_TinyState();

// While nothing is reserved: whether reserving shall fail from now on, as when addresses are short.
KZM_API void mem_RefuseTinyRegion(bool refuse);
