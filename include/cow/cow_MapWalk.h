#pragma once
#include <cow/cow_SmallStack.h>

#include <cstddef>
#include <iterator>

// Standard forward iterator over the nodes of a cow_Map, parents first, child 0 before child 1. It
// keeps nothing alive: the map, or a cow_ConstMapIterator, must hold the nodes while it walks. With
// text keys of unusual depth ++ and copying may throw std::bad_alloc.
template <class Node>
class cow_MapWalk {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = typename Node::Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    cow_MapWalk() : m_current(nullptr) {}  // the end of every map
    // Stands on that node and visits all below it.
    explicit cow_MapWalk(const Node* root) : m_current(root) {}

    reference operator*() const { return *m_current; }
    pointer operator->() const { return m_current; }

    cow_MapWalk& operator++() {
        const Node* const child0 = m_current->Child0().GetPtr();
        const Node* const child1 = m_current->Child1().GetPtr();
        if (child0) {
            if (child1) m_pending.Push(child1);
            m_current = child0;
        } else if (child1) {
            m_current = child1;
        } else if (m_pending.Empty()) {
            m_current = nullptr;
        } else {
            m_current = m_pending.Pop();
        }
        return *this;
    }
    cow_MapWalk operator++(int) {
        cow_MapWalk before(*this);
        ++*this;
        return before;
    }

    // Whether it stands on no entry; the node it stands on, null if there is none.
    bool IsDone() const { return !m_current; }
    const Node* CurrentNode() const { return m_current; }

    // Whether both stand on the same entry, or are done.
    friend bool operator==(const cow_MapWalk& a, const cow_MapWalk& b) {
        return a.m_current == b.m_current;
    }

private:
    cow_SmallStack<const Node*, 32> m_pending;  // enough for integer keys
    const Node* m_current;
};
