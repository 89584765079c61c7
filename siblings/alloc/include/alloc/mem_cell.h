#pragma once
#include <alloc/mem_alloc.h>

#include <cstddef>

// Blocks that lie side by side in one line of the caches, for objects that are reached one through
// the other. Each is a block of its own, which goes back through mem_Free when its object ends, in
// any order; once all have gone the cell can be taken again.
enum mem_CellKind : unsigned {
    kMemCellOfThree,  // of 16, 4 and 40 bytes, at 0, 16 and 24
    kMemCellOfTwo     // of 16 and 48 bytes, at 0 and 16
};
inline constexpr std::size_t kMemCell = 64;  // bytes, and what cells are aligned to

#ifdef KZM_INLINE_HEAP
#define KZM_HAS_CELLS true
#else
#define KZM_HAS_CELLS false
#endif
// Whether there are any for code that is compiled like this.
constexpr bool kMemHasCells = KZM_HAS_CELLS;
#undef KZM_HAS_CELLS

// Null where the heap has no cells or no memory for one, or a test counts blocks: then the caller
// takes its blocks one by one. Never throws.
[[gnu::always_inline]] inline void* mem_TakeCell([[maybe_unused]] mem_CellKind kind) {
#ifdef KZM_INLINE_HEAP
    if (void* const cell = host_heap::FromHand(host_heap::kFirstCellClass + kind)) [[likely]]
        return cell;
    return host_heap::TakeCellElsewhere(kind);
#else
    return nullptr;
#endif
}

// All blocks of a cell at once; none of them may have been given back.
[[gnu::always_inline]] inline void mem_FreeCell(void* cell, mem_CellKind kind) noexcept {
#ifdef KZM_INLINE_HEAP
    if (!host_heap::CellToHand(cell, kind)) [[unlikely]]
        host_heap::GiveBackCellElsewhere(cell, kind);
#else
    char* const first = static_cast<char*>(cell);
    if (kind == kMemCellOfThree) mem_Free(first + 24);
    mem_Free(first + 16);
    mem_Free(first);
#endif
}
