#pragma once
#include <omi/omi_IntTable.impl.h>
#include <omi/omi_IntTableIterator.h>
#include <omi/omi_UintTableIterator.impl.h>

template <class V, class A>
void omi_IntTableIterator<V, A>::First() {
    if (m_compare) {
        Build();
        m_sorted.First();
        return;
    }
    m_negativesAhead = m_table->m_negative->Size();
    if (m_negativesAhead > 0) {
        m_negative.Last();
        m_nonNegative.Leave();
    } else {
        m_nonNegative.First();
    }
}

template <class V, class A>
void omi_IntTableIterator<V, A>::Last() {
    if (m_compare) {
        Build();
        m_sorted.Last();
        return;
    }
    m_negativesAhead = 0;
    m_nonNegative.Last();
    if (m_nonNegative.IsDone() && !m_table->m_negative->IsEmpty()) {
        m_negative.First();
        m_negativesAhead = 1;
    }
}

template <class V, class A>
void omi_IntTableIterator<V, A>::Previous() {
    if (m_compare) {
        m_sorted.Previous();
        return;
    }
    if (m_negativesAhead == 0) {
        if (m_nonNegative.IsDone()) return;
        m_nonNegative.Previous();
        if (!m_nonNegative.IsDone() || m_table->m_negative->IsEmpty()) return;
        m_negative.First();
        m_negativesAhead = 1;
    } else if (m_negativesAhead == m_table->m_negative->Size()) {
        m_negativesAhead = 0;  // the other half stands nowhere: done
    } else {
        m_negative.Next();
        ++m_negativesAhead;
    }
}

template <class V, class A>
void omi_IntTableIterator<V, A>::Build() {
    if (m_sorted.IsBuilt() || m_table->IsEmpty()) return;
    omi_IntTableIterator walk(*m_table);
    m_sorted.Build(walk, static_cast<unsigned int>(m_table->Size()), m_compare);
}
