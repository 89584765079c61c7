#pragma once
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_StdIterator.h>

#include <cstdint>
#include <utility>

template <class V, class A>
class omi_UintTable;
template <class V, class A>
class omi_UintTableBlock;

// The walk behind begin() and end() of the integer-keyed tables, in ascending key order. Key is
// unsigned for one table, int for the two halves of a signed one, of which the negative half is
// walked downwards. Rules are those of omi_UintTableIterator in key order; this one can be copied.
template <class Key, class V, class A>
class omi_TableCursor {
    using Table = omi_UintTable<V, A>;

public:
    using value_type = std::pair<Key, V>;

    omi_TableCursor() = default;  // beyond the last member

    // On the first member. `negative` is the half to walk downwards first, or null.
    omi_TableCursor(const Table* negative, const Table* table)
        : m_half(negative), m_after(table), m_slot(negative ? negative->m_slotCount : 0) {
        NextBlock();
    }

    bool IsDone() const { return !m_block; }

    void Next() {
        if (m_block && !(m_after ? m_walk.Prev(m_local) : m_walk.Next(m_local))) NextBlock();
    }

    // These need a current member. The value is the table's own.
    Key CurrentKey() const {
        const unsigned int key = m_base + m_local;
        return static_cast<Key>(m_after ? 0u - key : key);
    }
    V& CurrentValue() const { return *m_block->GetCell(m_local); }
    omi_PairItem<Key, V> CurrentItem() const { return {CurrentKey(), CurrentValue()}; }

    friend bool operator==(const omi_TableCursor& a, const omi_TableCursor& b) {
        return a.m_block == b.m_block && a.m_local == b.m_local;
    }

private:
    bool Enter(std::int64_t slot) {
        m_block = m_half->m_table[slot];
        if (!m_block) return false;
        m_base = static_cast<unsigned int>(static_cast<std::uint64_t>(slot) << m_half->m_keyShift);
        SetBitTraverseData(&m_block->Members(), &m_walk);
        return true;
    }

    void NextBlock() {
        if (m_after) {
            if (m_half)
                while (--m_slot >= 0)
                    if (Enter(m_slot) && m_walk.Last(m_local)) return;
            m_half = m_after;
            m_after = nullptr;
            m_slot = -1;
        }
        for (const std::int64_t end = m_half->m_slotCount; ++m_slot < end;)
            if (Enter(m_slot) && m_walk.First(m_local)) return;
        m_block = nullptr;
    }

    const Table* m_half = nullptr;   // the table being walked
    const Table* m_after = nullptr;  // what comes after the negative half, null once it is reached
    omi_UintTableBlock<V, A>* m_block = nullptr;  // the current member's
    omi_BlkBitVectTrav m_walk;
    std::int64_t m_slot = 0;
    unsigned int m_base = 0;  // lowest key of the slot
    unsigned int m_local = 0;
};
