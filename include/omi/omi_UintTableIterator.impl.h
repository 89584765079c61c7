#pragma once
#include <omi/omi_UintTable.impl.h>
#include <omi/omi_UintTableIterator.h>

#include <algorithm>
#include <cstdint>

template <class V, class A>
void omi_UintTableIterator<V, A>::First() {
    if (m_compare) {
        Build();
        m_sorted.First();
        return;
    }
    m_slot = -1;
    NextBlock();
}

template <class V, class A>
void omi_UintTableIterator<V, A>::Last() {
    if (m_compare) {
        Build();
        m_sorted.Last();
        return;
    }
    m_slot = m_table->m_slotCount;
    PreviousBlock();
}

template <class V, class A>
bool omi_UintTableIterator<V, A>::NextBlock() {
    if (m_compare) return false;
    const std::int64_t end = m_table->m_slotCount;
    for (m_slot = std::clamp<std::int64_t>(m_slot + 1, 0, end); m_slot < end; ++m_slot)
        if (const auto* const block = Enter(m_slot); block && m_walk.First(*block)) return true;
    Leave();
    return false;
}

template <class V, class A>
bool omi_UintTableIterator<V, A>::PreviousBlock() {
    if (m_compare) return false;
    const std::int64_t last = std::int64_t{m_table->m_slotCount} - 1;
    for (m_slot = std::clamp<std::int64_t>(m_slot - 1, -1, last); m_slot >= 0; --m_slot)
        if (const auto* const block = Enter(m_slot); block && m_walk.Last(*block)) return true;
    Leave();
    return false;
}

template <class V, class A>
void omi_UintTableIterator<V, A>::Build() {
    if (m_sorted.IsBuilt() || m_table->IsEmpty()) return;
    omi_UintTableIterator walk(*m_table);
    m_sorted.Build(walk, m_table->m_memberCount, m_compare);
}

template <class V, class A>
const omi_UintTableBlock<V, A>* omi_UintTableIterator<V, A>::Enter(std::int64_t slot) {
    m_base = static_cast<unsigned int>(static_cast<std::uint64_t>(slot) << m_table->m_keyShift);
    return m_table->m_table[slot];
}
