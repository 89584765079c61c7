#pragma once
#include <omi/omi_BlockedArray.impl.h>
#include <omi/omi_UintTable.h>

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

template <class V, class A>
bool omi_UintTableBlock<V, A>::InsertWithRoom(unsigned int local, const V& value) {
    this->SetCell(local, value);
    return m_members.Add(local);
}

template <class V, class A>
omi_UintTable<V, A>::omi_UintTable()
    : m_table(NewTable(2)),
      m_memberCount(0),
      m_slotCount(2),
      m_localMask(0xfffff),
      m_keyShift(20),
      m_innerGrowth(24),  // not 1024 as in the other constructors; the block table starts small
      m_innerShift(10) {}

template <class V, class A>
omi_UintTable<V, A>::omi_UintTable(unsigned int)
    : m_table(NewTable(128)),
      m_memberCount(0),
      m_slotCount(128),
      m_localMask(0xfffff),
      m_keyShift(20),
      m_innerGrowth(1024),
      m_innerShift(10) {}

template <class V, class A>
omi_UintTable<V, A>::omi_UintTable(unsigned int blockBits, unsigned int innerBits,
                                   unsigned int innerGrowth) {
    Initialize(blockBits, innerBits, innerGrowth);
}

template <class V, class A>
omi_UintTable<V, A>::omi_UintTable(unsigned int n, const unsigned int* keys, const V* values)
    : omi_UintTable(n) {
    for (unsigned int i = 0; i < n; ++i) Insert(keys[i], values[i]);
}

template <class V, class A>
omi_UintTable<V, A>::omi_UintTable(const omi_UintTable& other)
    : mem_AllocationOperators(),
      m_table(NewTable(other.m_slotCount)),
      m_memberCount(other.m_memberCount),
      m_slotCount(other.m_slotCount),
      m_localMask(other.m_localMask),
      m_keyShift(other.m_keyShift),
      m_innerGrowth(other.m_innerGrowth),
      m_innerShift(other.m_innerShift) {
    try {
        for (unsigned int slot = 0;
             (slot = omi_detail::NextPresent(other.m_table, slot, m_slotCount)) < m_slotCount;
             ++slot)
            m_table[slot] = NewBlock(*other.m_table[slot]);
    } catch (...) {
        DestroyBlocks();
        A::deallocate(m_table);
        throw;
    }
}

template <class V, class A>
omi_UintTable<V, A>::~omi_UintTable() {
    DestroyBlocks();
    A::deallocate(m_table);
}

template <class V, class A>
void omi_UintTable<V, A>::Clear() {
    DestroyBlocks();
    m_memberCount = 0;
}

template <class V, class A>
unsigned int omi_UintTable<V, A>::Footprint() const {
    std::uint64_t bytes = sizeof *this + std::uint64_t{m_slotCount} * sizeof(Block*);
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot)
        bytes += m_table[slot]->Footprint();
    return static_cast<unsigned int>(std::min<std::uint64_t>(bytes, UINT_MAX));
}

template <class V, class A>
void omi_UintTable<V, A>::Initialize(unsigned int blockBits, unsigned int innerBits,
                                     unsigned int innerGrowth) {
    assert(blockBits <= 32 && innerBits <= 32 - blockBits && blockBits + innerBits > 0);
    m_memberCount = 0;
    m_slotCount = 2;
    m_keyShift = 32 - blockBits;
    m_localMask = static_cast<unsigned int>((std::uint64_t{1} << m_keyShift) - 1);
    m_innerGrowth = innerGrowth;
    m_innerShift = m_keyShift - innerBits;
    m_table = NewTable(2);
}

template <class V, class A>
bool omi_UintTable<V, A>::InsertIntoNewBlock(unsigned int key, const V& value) {
    const unsigned int slot = Slot(key);
    if (slot >= m_slotCount) {
        const std::uint64_t slots = ((std::uint64_t{slot} >> 6) + 1) << 6;
        if (slots > UINT_MAX) throw std::bad_alloc();
        Block** const table = NewTable(static_cast<unsigned int>(slots));
        std::copy_n(m_table, m_slotCount, table);
        A::deallocate(m_table);
        m_table = table;
        m_slotCount = static_cast<unsigned int>(slots);
    }
    Block* const block = NewBlock(m_innerGrowth, m_innerShift);
    m_table[slot] = block;
    try {
        return InsertInto(*block, key, value);
    } catch (...) {
        m_table[slot] = nullptr;
        DestroyBlock(block);
        throw;
    }
}

template <class V, class A>
void omi_UintTable<V, A>::RemoveBlock(unsigned int slot) {
    DestroyBlock(std::exchange(m_table[slot], nullptr));
}

// Null entries, since the policy's memory is zero-filled.
template <class V, class A>
typename omi_UintTable<V, A>::Block** omi_UintTable<V, A>::NewTable(unsigned int slots) {
    const std::size_t bytes = omi_BytesFor(slots, sizeof(Block*));
    if (bytes > UINT_MAX) throw std::bad_alloc();
    return static_cast<Block**>(A::allocate(static_cast<unsigned int>(bytes)));
}

template <class V, class A>
template <class... Args>
typename omi_UintTable<V, A>::Block* omi_UintTable<V, A>::NewBlock(const Args&... args) {
    void* const memory = A::allocate(sizeof(Block));
    try {
        return ::new (memory) Block(args...);
    } catch (...) {
        A::deallocate(memory);
        throw;
    }
}

template <class V, class A>
void omi_UintTable<V, A>::DestroyBlock(Block* block) {
    block->~Block();
    A::deallocate(block);
}

template <class V, class A>
void omi_UintTable<V, A>::DestroyBlocks() {
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot)
        DestroyBlock(std::exchange(m_table[slot], nullptr));
}
