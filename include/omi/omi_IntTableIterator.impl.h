#pragma once
#include <omi/omi_IntTable.impl.h>
#include <omi/omi_IntTableIterator.h>
#include <omi/omi_UintTableIterator.impl.h>

template <class V, class A>
void omi_IntTableIterator<V, A>::Build() {
    if (m_sorted.IsBuilt() || m_table->IsEmpty()) return;
    omi_IntTableIterator walk(*m_table);
    m_sorted.Build(walk, static_cast<unsigned int>(m_table->Size()), m_compare);
}
