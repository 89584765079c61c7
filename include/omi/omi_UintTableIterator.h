#pragma once
#include <omi/omi_SortedRecords.h>
#include <omi/omi_UintTable.h>

// Visits the members of a table in ascending key order, or in the order of a comparison function
// over omi_TableRecord<unsigned, V>.
//
//     omi_UintTableIterator<int, KZMBasOmiDefaultAllocator> it(table);
//     for (it.First(); !it.IsDone(); it.Next()) Use(it.CurrentKey(), it.CurrentValue());
//
// It stands nowhere, IsDone, until First or Last. Changing values is fine; inserting or removing
// keys ends the walk: to remove while walking, collect the keys first. With a comparison function
// the first First or Last sorts an array of all members, O(n log n), and keys and their order stay
// those of that moment. Beyond its ends, Next and Previous do nothing in key order; in the sorted
// array they keep counting, so that one step back returns to the end that was left.
template <class V, class A>
class omi_UintTableIterator {
public:
    // Over that table, standing nowhere. Null means key order.
    explicit omi_UintTableIterator(const omi_UintTable<V, A>& table,
                                   omi_TableCompare compare = nullptr)
        : m_table(&table), m_compare(compare), m_walk(table) {}

    omi_UintTableIterator(const omi_UintTableIterator&) = delete;
    omi_UintTableIterator& operator=(const omi_UintTableIterator&) = delete;

    // To either end; done if there are no members.
    void First() {
        if (!m_compare) return m_walk.First();
        Build();
        m_sorted.First();
    }
    void Last() {
        if (!m_compare) return m_walk.Last();
        Build();
        m_sorted.Last();
    }

    // One member on, or back.
    void Next() {
        if (m_compare)
            m_sorted.Next();
        else
            m_walk.Next();
    }
    void Previous() {
        if (m_compare)
            m_sorted.Previous();
        else
            m_walk.Previous();
    }
    // Whether it stands on no member.
    bool IsDone() const { return m_compare ? m_sorted.IsDone() : m_walk.IsDone(); }

    // These three need a current member.
    unsigned int CurrentKey() const { return m_compare ? m_sorted.Current().key : m_walk.Key(); }
    const V& CurrentValue() const { return m_compare ? *m_sorted.Current().value : m_walk.Value(); }

    // In key order: goes on to the lowest key of the next block, or to the highest of the block
    // before. Before the first move only NextBlock finds one, the first; beyond an end only the
    // step back does. False, and IsDone, if there is none, and with a comparison function.
    bool NextBlock();
    bool PreviousBlock();

private:
    void Build();

    const omi_UintTable<V, A>* m_table;
    omi_TableCompare m_compare;
    omi_SortedRecords<unsigned int, V, A> m_sorted;
    omi_TableWalk<V, A> m_walk;
};

#define OMI_DECLARE_UINT_TABLE_ITERATOR(V, A) KZM_DECLARE(omi_UintTableIterator<V, A>)
OMI_TABLE_INSTANCES(OMI_DECLARE_UINT_TABLE_ITERATOR)
