#pragma once
#include <omi/omi_UintTable.impl.h>
#include <omi/omi_UintTableIterator.h>

template <class V, class A>
bool omi_UintTableIterator<V, A>::NextBlock() {
    if (m_compare) return false;
    m_walk.NextBlock();
    return !m_walk.IsDone();
}

template <class V, class A>
bool omi_UintTableIterator<V, A>::PreviousBlock() {
    if (m_compare) return false;
    m_walk.PreviousBlock();
    return !m_walk.IsDone();
}

template <class V, class A>
void omi_UintTableIterator<V, A>::Build() {
    if (m_sorted.IsBuilt() || m_table->IsEmpty()) return;
    omi_UintTableIterator walk(*m_table);
    m_sorted.Build(walk, m_table->m_memberCount, m_compare);
}
