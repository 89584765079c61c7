#pragma once
#include <cow/cow_SmallStack.h>

#include <cstddef>
#include <iterator>

// Standard bidirectional iterator over the nodes of a cow_Btree in key order. It keeps nothing
// alive: the tree, or a cow_BtreeIterator, must hold the nodes while it walks. A step takes a few
// instructions on average; the height of the tree at most, as every change of direction does.
template <class Node>
class cow_BtreeWalk {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = typename Node::Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    cow_BtreeWalk() : cow_BtreeWalk(nullptr) {}
    explicit cow_BtreeWalk(const Node* root)  // stands behind the last entry
        : m_current(nullptr), m_root(root), m_ahead(kRight) {}

    reference operator*() const { return *m_current; }
    pointer operator->() const { return m_current; }
    cow_BtreeWalk& operator++() {
        Next();
        return *this;
    }
    cow_BtreeWalk operator++(int) {
        cow_BtreeWalk before(*this);
        Next();
        return before;
    }
    cow_BtreeWalk& operator--() {
        IsDone() ? Last() : Previous();
        return *this;
    }
    cow_BtreeWalk operator--(int) {
        cow_BtreeWalk before(*this);
        --*this;
        return before;
    }
    // Whether both stand on the same entry, or are done.
    friend bool operator==(const cow_BtreeWalk& a, const cow_BtreeWalk& b) {
        return a.m_current == b.m_current;
    }

    // Where there is no entry to stand on, these answer false and the walk is done.
    bool First() { return Begin<kRight>(); }
    bool Last() { return Begin<kLeft>(); }
    bool Next() { return Step<kRight>(); }
    bool Previous() { return Step<kLeft>(); }

    // Whether it stands on no entry; the node it stands on, null if there is none.
    bool IsDone() const { return !m_current; }
    const Node* CurrentNode() const { return m_current; }

private:
    enum Side { kLeft, kRight };

    static const Node* Child(const Node* node, Side side) {
        return side == kLeft ? node->Left() : node->Right();
    }
    static constexpr Side Opposite(Side side) { return side == kLeft ? kRight : kLeft; }

    template <Side ahead>
    bool Begin() {
        m_pending.Clear();
        m_current = nullptr;
        m_ahead = ahead;
        if (!m_root) return false;
        m_pending.Reserve(static_cast<std::size_t>(m_root->Depth()));
        EnterSubtree<ahead>(m_root);
        return true;
    }

    template <Side ahead>
    bool Step() {
        if (IsDone()) return false;
        if (m_ahead != ahead) [[unlikely]]
            Turn();
        if (const Node* const child = Child(m_current, ahead))
            EnterSubtree<ahead>(child);
        else
            m_current = m_pending.Empty() ? nullptr : m_pending.Pop();
        return !IsDone();
    }

    template <Side ahead>
    void EnterSubtree(const Node* node) {
        for (; const Node* const before = Child(node, Opposite(ahead)); node = before)
            m_pending.PushReserved(node);
        m_current = node;
    }

    // The other nodes above the current one become those that are pending: the way down from the
    // root turns back where it meets a pending node and goes ahead at any other.
    [[gnu::noinline]] void Turn() {
        const std::size_t before = m_pending.Size();
        std::size_t met = 0;
        for (const Node* node = m_root; node != m_current;) {
            const bool isPending = met < before && m_pending[met] == node;
            if (isPending)
                ++met;
            else
                m_pending.PushReserved(node);
            node = Child(node, isPending ? Opposite(m_ahead) : m_ahead);
        }
        m_pending.DropFirst(before);
        m_ahead = Opposite(m_ahead);
    }

    // Above the current node, those that the walk has still to visit, in the direction of its last
    // step; the next one is the last. Never more than the height of the tree.
    cow_SmallStack<const Node*, 48> m_pending;
    const Node* m_current;  // null behind the last entry
    const Node* m_root;
    Side m_ahead;  // the direction
};
