#pragma once
#include <cow/cow_SmallStack.h>

#include <cstddef>
#include <iterator>

// Standard bidirectional iterator over the nodes of a cow_Btree in key order. It keeps nothing
// alive: the tree, or a cow_BtreeIterator, must hold the nodes while it walks. A step takes a few
// instructions on average and the height of the tree at most.
template <class Node>
class cow_BtreeWalk {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = typename Node::Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    cow_BtreeWalk() : m_root(nullptr) {}
    explicit cow_BtreeWalk(const Node* root) : m_root(root) {}  // stands behind the last entry

    reference operator*() const { return *CurrentNode(); }
    pointer operator->() const { return CurrentNode(); }
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
        return a.CurrentNode() == b.CurrentNode();
    }

    // Where there is no entry to stand on, these answer false and the walk is done.
    bool First() {
        m_path.Clear();
        DescendLeft(m_root);
        return !IsDone();
    }
    bool Last() {
        m_path.Clear();
        DescendRight(m_root);
        return !IsDone();
    }
    bool Next() {
        if (IsDone()) return false;
        if (const Node* const right = m_path.Top()->Right())
            DescendLeft(right);
        else
            Ascend([](const Node* parent) { return parent->Right(); });
        return !IsDone();
    }
    bool Previous() {
        if (IsDone()) return false;
        if (const Node* const left = m_path.Top()->Left())
            DescendRight(left);
        else
            Ascend([](const Node* parent) { return parent->Left(); });
        return !IsDone();
    }

    // Whether it stands on no entry; the node it stands on, null if there is none.
    bool IsDone() const { return m_path.Empty(); }
    const Node* CurrentNode() const { return IsDone() ? nullptr : m_path.Top(); }

private:
    void DescendLeft(const Node* node) {
        for (; node; node = node->Left()) m_path.Push(node);
    }
    void DescendRight(const Node* node) {
        for (; node; node = node->Right()) m_path.Push(node);
    }
    // Up past every node that lies on the given side of its parent.
    template <class Side>
    void Ascend(Side side) {
        const Node* node;
        do {
            node = m_path.Top();
            m_path.Pop();
        } while (!m_path.Empty() && side(m_path.Top()) == node);
    }

    cow_SmallStack<const Node*, 48> m_path;  // from the root to the current node; empty at the end
    const Node* m_root;
};
