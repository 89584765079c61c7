#pragma once
#include <kzm_export.h>

#include <cstddef>
#include <cstdint>

namespace small_heap {
struct ThreadCache;
}

// What a thread has in hand of the heap of small blocks: one free block of each size, so that code
// of any module takes a block and gives it back in a few instructions, without a call. Whatever
// the hand cannot do, and all of it while the hand is closed, is left to the library. Only
// <alloc/mem_alloc.h>, <alloc/mem_cell.h> and the siblings' sources include this.
namespace host_heap {

inline constexpr std::size_t kLargestSmall = 512;

// From number 1 on. After those of ClassOf come 1 KiB and, where addresses are not scarce, 2, 4 and
// 8 KiB: the blocks that tables and bit vectors are made of. Only requests for just as much get
// them, in the library. The last ones are cells.
inline constexpr unsigned kFirstCellClass = sizeof(void*) == 8 ? 37 : 34;

// A cell is a line of the caches that is taken as a whole and given back in parts, see
// <alloc/mem_cell.h>. For each kind the parts, a bit for each multiple of 8 bytes that one begins
// at.
inline constexpr unsigned kCell = 64;
inline constexpr unsigned char kCellParts[] = {0b1101, 0b101};
inline constexpr unsigned kSmallClasses = kFirstCellClass + sizeof kCellParts;

// Steps of 4 bytes up to 32, of 8 up to 128, of 32 beyond.
constexpr unsigned ClassOf(std::size_t size) {
    return static_cast<unsigned>(size <= 32    ? (size + 3) / 4
                                 : size <= 128 ? (size + 39) / 8
                                               : (size + 543) / 32);
}

// Of a block that is aligned for everything.
constexpr unsigned AlignedClassOf(std::size_t size) {
    return ClassOf((size + 15) & ~std::size_t{15});
}

struct Hand {
    char* m_region = nullptr;                    // where all small blocks lie
    std::size_t m_reach = 0;                     // size of the region; 0 while the hand is closed
    void* m_blocks[kSmallClasses] = {};          // number 0 is not null while the hand is open
    small_heap::ThreadCache* m_cache = nullptr;  // what else the thread keeps
    bool m_ended = false;
};

// A thread-local value that another module can reach without a call is not to be had on Windows.
[[gnu::tls_model("initial-exec")]] KZM_API extern constinit thread_local Hand t_hand;

// For each chunk of 64 KiB the region begins with a record of 64 bytes, the first of which is the
// class of the chunk's blocks, or 0 for cells: a part of one never comes into the hand.
inline unsigned ClassAt(const char* region, std::size_t offset) {
    return static_cast<unsigned char>(region[offset >> 16 << 6]);
}

// Null if the library is to be asked.
inline void* FromHand(unsigned sizeClass) {
    void*& inHand = t_hand.m_blocks[sizeClass];
    void* const block = inHand;
    if (block) [[likely]]
        inHand = nullptr;
    return block;
}

// False if the library is to be asked.
inline std::size_t OffsetOf(const void* block, const char* region) {
    return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(region);
}
inline bool ToHand(void* block) {
    Hand& hand = t_hand;
    const std::size_t offset = OffsetOf(block, hand.m_region);
    if (offset >= hand.m_reach) [[unlikely]]
        return false;
    void*& inHand = hand.m_blocks[ClassAt(hand.m_region, offset)];
    if (inHand) return false;
    inHand = block;
    return true;
}

// The same for a block that is, as a rule, of this class: so the processor foresees its place, and
// whoever takes the block next need not wait for the look-up.
inline bool ToHand(void* block, unsigned usualClass) {
    Hand& hand = t_hand;
    const std::size_t offset = OffsetOf(block, hand.m_region);
    if (offset >= hand.m_reach || ClassAt(hand.m_region, offset) != usualClass) [[unlikely]]
        return ToHand(block);
    void*& inHand = hand.m_blocks[usualClass];
    if (inHand) return false;
    inHand = block;
    return true;
}

// The library: these throw std::bad_alloc when memory is exhausted. 0 bytes are none.
KZM_API void* TakeElsewhere(std::size_t size);        // aligned for everything
KZM_API void* TakePackedElsewhere(std::size_t size);  // only as an object of that size can need
KZM_API void GiveBackElsewhere(void* block);          // null is allowed

// Null if the caller shall take the parts one by one.
KZM_API void* TakeCellElsewhere(unsigned kind);
KZM_API void GiveBackCellElsewhere(void* cell, unsigned kind);

// False if the library is to be asked, also for blocks from elsewhere that lie like a cell.
inline bool CellToHand(void* cell, unsigned kind) {
    Hand& hand = t_hand;
    void*& inHand = hand.m_blocks[kFirstCellClass + kind];
    if (inHand || OffsetOf(cell, hand.m_region) >= hand.m_reach) return false;
    inHand = cell;
    return true;
}

}  // namespace host_heap
