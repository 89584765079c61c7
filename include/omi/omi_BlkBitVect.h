#pragma once
#include <omi/omi_BlockedArray.h>

#include <array>

namespace omi_detail {
inline constexpr std::array<unsigned char, 256> kBitsOfByte = [] {
    std::array<unsigned char, 256> bits{};
    for (unsigned i = 1; i < 256; ++i) bits[i] = static_cast<unsigned char>(bits[i / 2] + (i & 1));
    return bits;
}();
}  // namespace omi_detail

// The number of set bits, by one table look-up a byte.
inline unsigned int CountBits32(unsigned int word) {
    using omi_detail::kBitsOfByte;
    return 0u + kBitsOfByte[word & 0xff] + kBitsOfByte[word >> 8 & 0xff] +
           kBitsOfByte[word >> 16 & 0xff] + kBitsOfByte[word >> 24];
}

// Sparse set of unsigned 32-bit numbers: bit i is bit i & 31 of word i >> 5 of a blocked array with
// 8192 bits a block. Single bits cost a shift and a mask; set operations work word by word on the
// blocks that exist. For a few scattered members a sorted list is smaller: a block takes 1 KiB.
//
// The number of members is kept exact by single-bit operations; the compound operators only mark it
// stale, and the next query that needs it counts anew and gives back empty blocks. So even const
// queries are not for concurrent use, and they end traversals (omi_BlkBitVectTrav).
//
// When memory runs out, std::bad_alloc leaves the members as they were; the table may have grown
// and empty blocks may have appeared.
class KZM_API omi_BlkBitVect : public omi_BlockedArray<unsigned int> {
public:
    // Without members and blocks.
    omi_BlkBitVect() : omi_BlockedArray(kGrowthStep, kBlockShift), m_bitCount(0), m_stale(false) {}
    // Copy every block: O(blocks).
    omi_BlkBitVect(const omi_BlkBitVect& other);
    omi_BlkBitVect& operator=(const omi_BlkBitVect& other);
    ~omi_BlkBitVect() override;

    // Every member on standard error, eight a line, behind a line with their number.
    virtual void DumpList() const;

    // Bytes of this object, its table and its blocks.
    virtual unsigned int Footprint() const;

    // A shift, a mask and two loads; false where there is no block.
    bool IsSet(unsigned int i) const {
        const unsigned int* const word = Word(i);
        return word && (*word >> (i & 31) & 1);
    }

    // The number of members, modulo 2^32. O(1), O(blocks) once after compound operators.
    unsigned int Size() const {
        if (m_stale) Recount();
        return m_bitCount;
    }

    // One bit. Setting may make the block, 1 KiB.
    void SetBit(unsigned int i) { Add(i); }
    void UnsetBit(unsigned int i) { Take(i); }  // keeps the block, also when it becomes empty

    // Sets from..to, both included. With from > to, bits are set only if the two lie in different
    // words: those of `to`'s word up to `to`.
    void SetFromTo(unsigned int from, unsigned int to);

    // Removes every member and frees every block; the table stays.
    void Clear();

    // Equal members and equal shape: the same number of slots and the same blocks present. A block
    // that single-bit operations have emptied counts as present.
    bool operator==(const omi_BlkBitVect& other) const;

    // 0 for no difference, else what decides first: the difference of the numbers of members; then
    // slot by slot of the other's, a block that only one side has (the number of slots left,
    // negative if the other has it) or unequal words (1 or -1). Not antisymmetric where the tables
    // differ in length.
    int Compare(const omi_BlkBitVect& other) const;

    // By members alone, whatever the shapes. Word by word over the present blocks.
    bool Contains(const omi_BlkBitVect& other) const;  // `other` is a subset of this
    bool HasOverlap(const omi_BlkBitVect& other) const;

    omi_BlkBitVect& operator-=(const omi_BlkBitVect& other);  // frees no block
    omi_BlkBitVect& operator&=(const omi_BlkBitVect& other);  // frees blocks the other lacks
    omi_BlkBitVect& operator|=(const omi_BlkBitVect& other);  // grows to the other's slots
    omi_BlkBitVect& operator^=(const omi_BlkBitVect& other);  // grows to the other's slots

private:
    friend struct kzm_Layout;
    friend class omi_Set;  // makes the blocks of both its vectors before it changes one
    template <class, class>
    friend class omi_UintTableBlock;
    template <class, class>
    friend class omi_TableWalk;

    static constexpr unsigned int kGrowthStep = 128;
    static constexpr unsigned int kBlockShift = 8;
    static constexpr unsigned int kBlockWords = 1u << kBlockShift;
    static constexpr unsigned int kSlotShift = kBlockShift + 5;  // from bit to slot

    // The word of bit i, null where its block is absent.
    unsigned int* Word(unsigned int i) const {
        const unsigned int slot = i >> kSlotShift;
        if (slot >= m_slotCount) return nullptr;
        unsigned int* const block = m_table[slot];
        return block ? block + (i >> 5 & (kBlockWords - 1)) : nullptr;
    }

    // Whether the bit has changed.
    bool Add(unsigned int i) {
        unsigned int* const word = Word(i);
        if (!word) {
            SetBitOfNewBlock(i);
            return true;
        }
        return AddTo(*word, i);
    }
    bool AddTo(unsigned int& word, unsigned int i) {
        const unsigned int mask = 1u << (i & 31);
        if (word & mask) return false;
        word |= mask;
        ++m_bitCount;
        return true;
    }
    bool Take(unsigned int i) {
        unsigned int* const word = Word(i);
        const unsigned int mask = 1u << (i & 31);
        if (!word || !(*word & mask)) return false;
        *word &= ~mask;
        --m_bitCount;
        return true;
    }

    void OrWord(unsigned int& word, unsigned int mask) {
        m_bitCount += CountBits32(mask & ~word);
        word |= mask;
    }

    // The block, null where it is absent or its slot lies beyond the table.
    unsigned int* Block(unsigned int slot) const {
        return slot < m_slotCount ? m_table[slot] : nullptr;
    }

    void Swap(omi_BlkBitVect& other) noexcept;
    void SetBitOfNewBlock(unsigned int i);
    void MakeWordBlocks(unsigned int first, unsigned int last);
    void MakeBlocksOf(const omi_BlkBitVect& other);
    template <class Op>
    void CombineAllWords(const omi_BlkBitVect& other, Op op);
    void Recount() const;

    mutable unsigned int m_bitCount;
    mutable bool m_stale;
};
