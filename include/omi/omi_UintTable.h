#pragma once
#include <omi/KZMBasOmiDefaultAllocator.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlockedArray.h>
#include <omi/omi_TableCursor.h>
#include <omi/omi_TableInstances.h>
#include <runtime/mem_AllocationOperators.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <iterator>
#include <utility>

// One block of an integer-keyed table: value cells and, under the same local keys, the bits that
// tell which cells belong to members. Cells of keys that were removed keep their old value.
template <class V, class A>
class omi_UintTableBlock : public omi_BlockedArray<V> {
public:
    // Shape as that of omi_BlockedArray; without members.
    omi_UintTableBlock(unsigned int growthStep, unsigned int shift)
        : omi_BlockedArray<V>(growthStep, shift) {}

    // Which local keys have a value.
    const omi_BlkBitVect& Members() const { return m_members; }

    // Writes the cell, then makes the key a member, true if it was none before: if memory runs out,
    // membership is unchanged.
    bool Insert(unsigned int local, const V& value) {
        const unsigned int slot = local >> (this->m_blockShift & 31);
        V* const cells = slot < this->m_slotCount ? this->m_table[slot] : nullptr;
        unsigned int* const word = m_members.Word(local);
        if (!cells || !word) [[unlikely]]
            return InsertWithRoom(local, value);
        cells[local & this->m_blockMask] = value;
        return m_members.AddTo(*word, local);
    }

    bool Remove(unsigned int local) { return m_members.Take(local); }  // true if it was a member

    // The count of its members is always exact: only the block changes them, one by one.
    bool IsEmpty() const { return m_members.m_bitCount == 0; }

    // Bytes of cells and bits, with this object.
    unsigned int Footprint() const {
        return this->ToFootprint(std::size_t{omi_BlockedArray<V>::Footprint()} +
                                 m_members.Footprint());
    }

private:
    friend struct kzm_Layout;
    bool InsertWithRoom(unsigned int local, const V& value);  // makes cells and words as needed

    omi_BlkBitVect m_members;
};

// Map from unsigned 32-bit keys to values of V, for keys such as node and element numbers. The top
// bits of a key select a block, which exists only while it has a member; the low bits select the
// cell in it. A look-up is two shifts and masks and at most three indirections, without hashing or
// comparing. Keys that lie close together share blocks: one that stands alone costs 1024 cells and
// about 2 KiB besides. Members are visited in ascending order, with begin() and end() as pairs of
// key and value, or with omi_UintTableIterator, which can also go back and sort.
//
// The policy A supplies the table and its blocks, omi_BlockedArray and omi_BlkBitVect what lies in
// them. When memory runs out, std::bad_alloc leaves the members as they were.
//
// One thread at a time; also const queries are not for concurrent use.
template <class V, class A>
class omi_UintTable : public mem_AllocationOperators {
public:
    // What FindTableBlock refers to.
    using Block = omi_UintTableBlock<V, A>;
    using const_iterator = omi_StdIterator<omi_TableCursor<unsigned int, V, A>>;
    using value_type = std::pair<unsigned int, V>;

    // Blocks of 2^20 keys; room for the keys below 2^21 at first.
    omi_UintTable();

    // Blocks of 2^20 keys; room for the keys below 2^27 at first. The argument is not used.
    explicit omi_UintTable(unsigned int);

    // The top `blockBits` of a key select the block, the next `innerBits` a group of cells that
    // appears as a whole, the rest the cell; a block makes room for `innerGrowth` groups at a time.
    // blockBits is at most 32, and blockBits + innerBits is 1 to 32 (checked in debug builds). An
    // innerGrowth of 0 stands for 128.
    omi_UintTable(unsigned int blockBits, unsigned int innerBits, unsigned int innerGrowth);

    // As omi_UintTable(unsigned), then inserts keys[i] with values[i] in order of i; of equal keys
    // the last value stays.
    omi_UintTable(unsigned int n, const unsigned int* keys, const V* values);

    // Inserts the pairs in order; of equal keys the last value stays.
    template <std::input_iterator It>
    omi_UintTable(It first, It last) : omi_UintTable() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }

    omi_UintTable& operator=(const omi_UintTable&) = delete;
    virtual ~omi_UintTable();

    // A new deep copy, owned by the caller, who ends it with delete.
    omi_UintTable* Copy() const { return new omi_UintTable(*this); }

    // O(1).
    bool IsEmpty() const { return m_memberCount == 0; }
    int Size() const { return static_cast<int>(m_memberCount); }

    // A look-up: block, then bit. Never allocates.
    bool IsMember(unsigned int key) const { return Index().IsMember(key); }

    // Copies the value out; false, and `value` as it was, if the key is not a member.
    bool ConstGetValue(unsigned int key, V& value) const {
        const V* const cell = FindCell(key);
        if (cell) value = *cell;
        return cell != nullptr;
    }

    // The address of a member's value, null for other keys.
    V* FindCell(unsigned int key) const {
        const KeyIndex index = Index();
        return index.IsMember(key) ? &index.Cell(key) : nullptr;
    }

    // The value of a key that must be a member; only that its block exists is checked, in debug
    // builds. The reference stays valid until the last member of the key's block is removed.
    V& Get(unsigned int key) { return Index().Cell(key); }
    const V& ConstGet(unsigned int key) const { return Index().Cell(key); }

    // Pairs of key and value, keys ascending. Inserting and removing keys ends the iterators.
    const_iterator begin() const {
        return const_iterator(omi_TableCursor<unsigned int, V, A>(nullptr, this));
    }
    const_iterator end() const { return const_iterator(); }

    // Equal keys with equal values.
    friend bool operator==(const omi_UintTable& a, const omi_UintTable& b) {
        return a.m_memberCount == b.m_memberCount && std::equal(a.begin(), a.end(), b.begin());
    }

    // Makes the key a member with this value, in place of any it had. True if it was none before.
    // `value` may be a value of this table.
    bool Insert(unsigned int key, const V& value) {
        Block* const block = FindTableBlock(key);
        return block ? InsertInto(*block, key, value) : InsertIntoNewBlock(key, value);
    }

    // True if the key was a member. A block without members is released at once; the table itself
    // keeps its length.
    bool Remove(unsigned int key) {
        Block* const block = FindTableBlock(key);
        return block && RemoveFrom(*block, key);
    }

    void Clear();  // releases every block, keeps the table's length

    // Bytes of this object, its table and its blocks.
    unsigned int Footprint() const;

    // The block that holds the key's cell, null where there is none. Its shape is the table's and
    // must stay.
    Block* FindTableBlock(unsigned int key) const { return Index().FindBlock(key); }

protected:
    // Copies every block; see Copy.
    omi_UintTable(const omi_UintTable& other);

private:
    friend struct kzm_Layout;
    template <class, class>
    friend class omi_UintTableIterator;
    template <class, class>
    friend class omi_IntTable;
    template <class, class>
    friend class omi_TableWalk;

    unsigned int Slot(unsigned int key) const { return Index().Slot(key); }

    // What leads from keys to cells, by value, so that loops over keys read it once.
    struct KeyIndex {
        // Beyond 32 bits, as with the sign of a negative key, there are no blocks.
        Block* FindBlock(std::uint64_t key) const {
            const std::uint64_t slot = key >> keyShift;
            return slot < slotCount ? table[slot] : nullptr;
        }
        bool IsMember(unsigned int key) const {
            const Block* const block = FindBlock(key);
            return block && block->Members().IsSet(key & localMask);
        }
        // Of a member.
        V& Cell(unsigned int key) const {
            assert(FindBlock(key));
            return CellIn(*table[Slot(key)], key);
        }
        V& CellIn(const Block& block, unsigned int key) const {
            assert(block.GetCell(key & localMask));
            const unsigned int group = (key & localMask) >> (innerShift & 31);
            return block.m_table[group][key & block.m_blockMask];
        }
        // A shift by 32 is a slot number of 0.
        unsigned int Slot(unsigned int key) const {
            return static_cast<unsigned int>(std::uint64_t{key} >> keyShift);
        }

        Block* const* table;
        unsigned int slotCount;
        unsigned int localMask;
        unsigned int keyShift;
        unsigned int innerShift;
    };
    KeyIndex Index() const { return {m_table, m_slotCount, m_localMask, m_keyShift, m_innerShift}; }

    bool InsertInto(Block& block, unsigned int key, const V& value) {
        const bool added = block.Insert(key & m_localMask, value);
        m_memberCount += added;
        return added;
    }

    bool RemoveFrom(Block& block, unsigned int key) {
        const bool removed = block.Remove(key & m_localMask);
        m_memberCount -= removed;
        if (block.IsEmpty()) [[unlikely]]
            RemoveBlock(Slot(key));
        return removed;
    }

    bool InsertIntoNewBlock(unsigned int key, const V& value);
    void RemoveBlock(unsigned int slot);
    void Initialize(unsigned int blockBits, unsigned int innerBits, unsigned int innerGrowth);
    static Block** NewTable(unsigned int slots);
    template <class... Args>
    static Block* NewBlock(const Args&... args);
    static void DestroyBlock(Block* block);
    void DestroyBlocks();

    Block** m_table;  // from the policy; m_slotCount entries, null where there is no block
    unsigned int m_memberCount;
    unsigned int m_slotCount;
    unsigned int m_localMask;
    unsigned int m_keyShift;
    unsigned int m_innerGrowth;  // growth step and shift of each block's cells
    unsigned int m_innerShift;
};

#define OMI_DECLARE_UINT_TABLE(V, A)      \
    KZM_DECLARE(omi_UintTableBlock<V, A>) \
    KZM_DECLARE(omi_UintTable<V, A>)
OMI_TABLE_INSTANCES(OMI_DECLARE_UINT_TABLE)
