#pragma once
#include <omi/omi_IntTable.h>
#include <omi/omi_UintTableIterator.h>

// Visits the members of a table in ascending key order, negative keys first, or in the order of a
// comparison function over omi_TableRecord<int, V>; then one order runs over the whole table.
// States and rules are those of omi_UintTableIterator.
template <class V, class A>
class omi_IntTableIterator {
public:
    // Over that table, standing nowhere. Null means key order.
    explicit omi_IntTableIterator(const omi_IntTable<V, A>& table,
                                  omi_TableCompare compare = nullptr)
        : m_table(&table),
          m_compare(compare),
          m_negative(*table.m_negative),
          m_nonNegative(*table.m_nonNegative),
          m_negativesAhead(0) {}

    omi_IntTableIterator(const omi_IntTableIterator&) = delete;
    omi_IntTableIterator& operator=(const omi_IntTableIterator&) = delete;

    // To either end; done if there are no members.
    void First() {
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

    // The same from the other end.
    void Last() {
        if (m_compare) {
            Build();
            m_sorted.Last();
            return;
        }
        m_negativesAhead = 0;
        m_nonNegative.Last();
        EnterNegative();
    }

    // One member on.
    void Next() {
        if (m_compare) {
            m_sorted.Next();
        } else if (m_negativesAhead == 0) {
            m_nonNegative.Next();
        } else if (--m_negativesAhead > 0) {
            m_negative.Previous();  // larger magnitudes come first
        } else {
            m_nonNegative.First();
        }
    }

    // One member back.
    void Previous() {
        if (m_compare) {
            m_sorted.Previous();
        } else if (m_negativesAhead == 0) {
            if (m_nonNegative.IsDone()) return;
            m_nonNegative.Previous();
            EnterNegative();
        } else if (m_negativesAhead == m_table->m_negative->Size()) {
            m_negativesAhead = 0;  // the other half stands nowhere: done
        } else {
            m_negative.Next();
            ++m_negativesAhead;
        }
    }

    // Whether it stands on no member.
    bool IsDone() const {
        if (m_compare) return m_sorted.IsDone();
        return m_negativesAhead == 0 && m_nonNegative.IsDone();
    }

    // These two need a current member.
    int CurrentKey() const {
        if (m_compare) return m_sorted.Current().key;
        if (m_negativesAhead > 0) return static_cast<int>(0u - m_negative.Key());
        return static_cast<int>(m_nonNegative.Key());
    }
    const V& CurrentValue() const {
        if (m_compare) return *m_sorted.Current().value;
        return m_negativesAhead > 0 ? m_negative.Value() : m_nonNegative.Value();
    }

private:
    void Build();

    // Backwards, once the other half is left.
    void EnterNegative() {
        if (!m_nonNegative.IsDone() || m_table->m_negative->IsEmpty()) return;
        m_negative.First();
        m_negativesAhead = 1;
    }

    const omi_IntTable<V, A>* m_table;
    omi_TableCompare m_compare;
    omi_SortedRecords<int, V, A> m_sorted;
    omi_TableWalk<V, A> m_negative;
    omi_TableWalk<V, A> m_nonNegative;
    int m_negativesAhead;  // negative members from the current one on; 0 beyond them
};

#define OMI_DECLARE_INT_TABLE_ITERATOR(V, A) KZM_DECLARE(omi_IntTableIterator<V, A>)
OMI_TABLE_INSTANCES(OMI_DECLARE_INT_TABLE_ITERATOR)
