#pragma once
#include <cow/cow_List.h>

// Forward walk over the elements that a list has when the walk is made: it shares the list as a
// copy does, so later changes to the list are not seen, and the first of them has to copy the block
// table. Where nothing is changed on the way, begin() and end() of the list do without the share.
//
//     for (cow_ListIter<int> it(nodes); it.NotDone(); it.Next()) Visit(it.CurrentItem());
template <class T>
class cow_ListIter {
public:
    cow_ListIter(const cow_List<T>& list) : m_list(list) { First(); }  // at the first element

    // Back to the first element.
    void First() { EnterBlockOf(0); }
    // Whether there is a current element.
    bool NotDone() const { return m_index < m_list.m_length; }

    // Does nothing at the end.
    void Next() {
        if (!NotDone()) return;
        ++m_index;
        if (++m_item == m_blockEnd) EnterBlockOf(m_index);
    }

    // Only while NotDone(). The reference lives as long as the iterator.
    const T& CurrentItem() const { return *m_item; }
    int ArrayIndex() const { return m_index; }

    // All elements that the walk sees, wherever it stands.
    typename cow_List<T>::const_iterator begin() const { return m_list.begin(); }
    typename cow_List<T>::const_iterator end() const { return m_list.end(); }

private:
    void EnterBlockOf(int index) {
        m_index = index;
        if (!NotDone()) return;
        int run;
        m_item = m_list.Run(index, 1 << m_list.m_blockShift, run);
        m_blockEnd = m_item + run;
    }

    cow_List<T> m_list;
    const T* m_item = nullptr;
    const T* m_blockEnd = nullptr;
    int m_index = 0;
};

#define COW_DECLARE_LIST_ITER(...) KZM_DECLARE(cow_ListIter<__VA_ARGS__>)
COW_LIST_ELEMENTS(COW_DECLARE_LIST_ITER)
#undef COW_DECLARE_LIST_ITER
