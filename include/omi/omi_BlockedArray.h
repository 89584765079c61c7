#pragma once
#include <kzm_export.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

class cow_String;
class omi_BlkBitVect;
class omi_BlkBitVectTrav;

namespace omi_detail {
template <class Block>
bool AllAbsent(Block* const* eight) {
    using Pair [[gnu::vector_size(16)]] = std::uint64_t;
    Pair any{};
    for (std::size_t i = 0; i < 8 * sizeof(void*); i += sizeof any) {
        Pair some;
        std::memcpy(&some, reinterpret_cast<const char*>(eight) + i, sizeof some);
        any |= some;
    }
    return (any[0] | any[1]) == 0;
}

// The first slot from this one on that has a block, `end` if there is none.
template <class Block>
unsigned NextPresent(Block* const* table, unsigned slot, unsigned end) {
    std::size_t at = slot;
    for (; at < end && !table[at]; ++at)
        while (end - at > 8 && AllAbsent(table + at + 1)) at += 8;
    return static_cast<unsigned>(at);
}
}  // namespace omi_detail

// Sparse array of T, indexed by an unsigned cell number. Cells live in blocks of 2^shift that
// appear on the first write into them; an absent block costs one pointer. For dense data that
// starts near 0 a vector is smaller. One thread at a time; concurrent readers are safe while
// nobody writes.
//
// Blocks never move while they live, so cell addresses are stable. When memory runs out,
// std::bad_alloc leaves every cell as it was; only the table of a failed write may have grown.
template <class T>
class omi_BlockedArray {
public:
    // With nSlots 0 the table waits for the first write and then grows by 128 slots at a time; else
    // nSlots is both the first size and the step. The block size is 1 << (shift modulo 32).
    omi_BlockedArray(unsigned nSlots, unsigned shift);
    omi_BlockedArray(const omi_BlockedArray& other);             // duplicates every present block
    omi_BlockedArray& operator=(const omi_BlockedArray& other);  // reuses blocks of equal shape
    virtual ~omi_BlockedArray();

    // The cell's address, null where its block is absent. Never allocates, O(1). Stays valid while
    // the table grows; ends with the block (Clear, destruction, an assignment that reshapes the
    // array or whose source lacks the block).
    T* GetCell(unsigned index) const {
        const unsigned slot = index >> (m_blockShift & 31);
        if (slot >= m_slotCount) return nullptr;
        T* const block = m_table[slot];
        return block ? block + (index & m_blockMask) : nullptr;
    }

    // Creates table and block as needed; unwritten neighbours read as T(). O(1), and O(slots) when
    // the table grows. `value` may be a cell of this array.
    void SetCell(unsigned index, const T& value) {
        T* const cell = GetCell(index);
        *(cell ? cell : NewCell(index)) = value;
    }

    // For debugging, on standard output: the bytes of each present block in memory order. A byte of
    // 0x80 or more prints as eight digits, being widened with its sign. The text depends on the
    // byte order and, for pointers and strings, on the build.
    void DumpArray();

    // Bytes of this object, its table and its blocks; the text of strings is not counted. From
    // 4 GiB on it stays at 0xFFFFFFFF.
    unsigned Footprint() const { return ToFootprint(sizeof *this + HeapBytes()); }

protected:
    void Clear();  // releases every block, keeps the table
    // Exchanges tables and shapes.
    void Swap(omi_BlockedArray& other) noexcept;

    void Realloc(unsigned n);       // grows the table to n slots; never shrinks
    void MakeBlock(unsigned slot);  // slot is below the slot count; a present block stays

    // Bytes of table and blocks, without an object; derived classes add their own size.
    std::size_t HeapBytes() const;
    static unsigned ToFootprint(std::size_t bytes);

private:
    friend struct kzm_Layout;
    friend class omi_BlkBitVect;
    template <class, class>
    friend class omi_TableWalk;
    template <class, class>
    friend class omi_BlockSource;
    template <class, class>
    friend class omi_UintTable;
    template <class, class>
    friend class omi_UintTableBlock;
    friend KZM_API void SetBitTraverseData(const omi_BlkBitVect*, omi_BlkBitVectTrav*);

    static T** NewTable(unsigned slots);  // of null entries, null for 0 slots
    // A table of copies of those blocks of `other` that are absent in `have`.
    static T** CopyOfTable(const omi_BlockedArray& other, T* const* have);
    static void FreeTable(T** table, unsigned slots);
    static void FreeBlock(T* block);
    T* NewBlock() const;
    T* NewRawBlock() const;
    void BlockCopy(T* to, const T* from) const;
    void BlockInitialize(T* block) const;
    T* NewCell(unsigned index);

    unsigned m_growthStep;  // slots added per growth, never 0
    unsigned m_slotCount;
    unsigned m_blockSize;   // cells
    unsigned m_blockShift;  // as given: 33 stays 33 though the size wraps to 2
    unsigned m_blockMask;
    T** m_table;  // owned; m_slotCount entries, null where the block is absent
};

#define OMI_BLOCKED_ARRAYS(X)         \
    X(omi_BlockedArray<double>)       \
    X(omi_BlockedArray<int>)          \
    X(omi_BlockedArray<unsigned int>) \
    X(omi_BlockedArray<void*>)        \
    X(omi_BlockedArray<cow_String>)
OMI_BLOCKED_ARRAYS(KZM_DECLARE)
