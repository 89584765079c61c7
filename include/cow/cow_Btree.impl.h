#pragma once
#include <cow/cow_Btree.h>
#include <cow/cow_NullValue.h>

#include <algorithm>
#include <cstddef>

// The way from a node down to the place of a change: at each level the node and the side where it
// goes on. Every node on it is private. It outlives rotations further down, since those change what
// a node's link holds but not the node.
template <class K, class V>
class cow_BtreeWay {
public:
    using Node = cow_BtreeNode<K, V>;
    using Handle = typename Node::Handle;

    explicit cow_BtreeWay(Node& top) : m_top(&top) {
        m_steps.Reserve(static_cast<std::size_t>(top.Depth()) + 1);
    }

    // Goes down to the key. Null if it is there, the way then ending at its node; else the empty
    // link where it belongs.
    Handle** Descend(const K& key) {
        const cow_BtreeOrder<K> order(key);
        return m_top->m_depth <= Node::kMostGuesses ? DescendGuessing(order)
                                                    : DescendByIndex(order);
    }

    // Adds the way to the in-order successor of the node that it ends at, which has a right child.
    void DescendToSuccessor() {
        Node* node = &End();
        for (unsigned side = Node::kRight; node->m_children[side]; side = Node::kLeft) {
            node = &(*StepDown(*node, side))->Get();
        }
    }

    std::size_t Length() const { return m_steps.Size(); }
    Handle*& LastLink() { return LinkOf(m_steps.Top()); }
    Handle*& PopLink() { return LinkOf(m_steps.Pop()); }

    // `node` now stands at a level, the way going on to its right.
    void Replace(std::size_t level, Node& node) {
        if (level < Length()) m_steps[level] = StepFrom(node, Node::kRight);
        if (level == 0) m_top = &node;
    }

    // From the end of the way up: computes every depth anew and balances every node but the top
    // one. True where that needs no balance. If a node that is to be turned up cannot be copied,
    // the depths are still brought up to date before the exception goes on.
    bool Rebalance() {
        Node& end = End();
        const bool isBalanced = end.UpdateDepth();
        return RebalanceAbove(isBalanced, end.m_depth);
    }
    // The same where a node without children has just been put at the end.
    bool RebalanceAboveLeaf() { return RebalanceAbove(true, 0); }

private:
    using Cell = cow_BtreeCell<Node>;

    // As the look-ups of the same names in cow_BtreeNode.
    Handle** DescendGuessing(const cow_BtreeOrder<K>& order) {
        for (Node* node = m_top;;) {
            const int sign = order(node->key);
            if (sign == 0) return nullptr;
            Handle** link;
            if (sign > 0)
                link = StepDown(*node, Node::kRight);
            else
                link = StepDown(*node, Node::kLeft);
            if (!*link) return link;
            node = &(*link)->Get();
        }
    }
    Handle** DescendByIndex(const cow_BtreeOrder<K>& order) {
        for (Node* node = m_top;;) {
            // One of them comes next, and of the other the depth is asked on the way back.
            Cell::Prefetch(node->m_children[Node::kLeft]);
            Cell::Prefetch(node->m_children[Node::kRight]);
            unsigned isBehind;
            if (!order.Differs(node->key, isBehind)) return nullptr;
            Handle** const link = StepDown(*node, isBehind);
            if (!*link) return link;
            node = &(*link)->Get();
        }
    }
    Handle** StepDown(Node& node, unsigned side) {
        m_steps.PushReserved(StepFrom(node, side));
        return &node.m_children[side];
    }

    // The node's address plus the side; nodes lie at even addresses.
    using Step = char*;
    static Step StepFrom(Node& node, unsigned side) {
        return reinterpret_cast<char*>(&node) + side;
    }
    static unsigned SideOf(Step step) { return reinterpret_cast<std::uintptr_t>(step) & 1; }
    static Node* NodeOf(Step step) { return reinterpret_cast<Node*>(step - SideOf(step)); }
    static Handle*& LinkOf(Step step) { return NodeOf(step)->m_children[SideOf(step)]; }

    bool RebalanceAbove(bool isBalanced, int height) {
        const Step* const first = &m_steps[0];
        const Step* at = first + Length();
        try {
            while (at != first) {
                const Step step = *--at;
                if (!isBalanced) [[unlikely]] {
                    Handle*& link = LinkOf(step);
                    link = link->GetPtr()->Balance(link);
                    height = link->GetPtr()->m_depth;
                }
                Node* const node = NodeOf(step);
                isBalanced = node->UpdateDepth(SideOf(step), height);
                height = node->m_depth;
            }
        } catch (...) {
            for (;; --at) {
                NodeOf(*at)->SetMaxDepth();
                if (at == first) throw;
            }
        }
        return isBalanced;
    }

    Node& End() { return Length() == 0 ? *m_top : *LastLink()->GetPtr(); }

    Node* m_top;
    cow_SmallStack<Step, 48> m_steps;
};

template <class K, class V>
cow_BtreeNode<K, V>::cow_BtreeNode(const cow_BtreeNode& other)
    : Entry(other), m_children{nullptr, nullptr}, m_depth(other.m_depth) {
    if (other.m_children[kLeft]) m_children[kLeft] = Cell::NewSharing(*other.m_children[kLeft]);
    try {
        if (other.m_children[kRight])
            m_children[kRight] = Cell::NewSharing(*other.m_children[kRight]);
    } catch (...) {
        Cell::Destroy(m_children[kLeft]);
        throw;
    }
}

// Without recursion and without memory: the nodes that only this one holds are turned to the right
// until the top one has no left child of its own, and go one by one.
template <class K, class V>
cow_BtreeNode<K, V>::~cow_BtreeNode() {
    for (Handle* top : {m_children[kLeft], m_children[kRight]}) {
        while (top && top->Exclusive()) {
            cow_BtreeNode* const node = top->GetPtr();
            Handle* const left = node->m_children[kLeft];
            Handle* rest = left;
            if (left && left->Exclusive()) {
                node->m_children[kLeft] = left->GetPtr()->m_children[kRight];
                left->GetPtr()->m_children[kRight] = top;
            } else {
                rest = node->m_children[kRight];
                node->m_children[kRight] = nullptr;
                Cell::Destroy(top);
            }
            top = rest;
        }
        Cell::Destroy(top);
    }
}

template <class K, class V>
V* cow_BtreeNode<K, V>::Find(const K& k) {
    const cow_BtreeOrder<K> order(k);
    for (cow_BtreeNode* node = this;;) {
        unsigned isBehind;
        if (!order.Differs(node->key, isBehind)) return &node->value;
        Handle* const next = node->m_children[isBehind];
        if (!next) return nullptr;
        node = &next->Get();
    }
}

template <class K, class V>
bool cow_BtreeNode<K, V>::InsertUnlessMember(const K& k, const V& v) {
    cow_BtreeWay<K, V> way(*this);
    Handle** const link = way.Descend(k);
    if (!link) return false;
    *link = Cell::New(k, v);
    way.RebalanceAboveLeaf();
    return true;
}

template <class K, class V>
bool cow_BtreeNode<K, V>::Remove(const K& k) {
    cow_BtreeWay<K, V> way(*this);
    if (way.Descend(k) || way.Length() == 0) return false;
    Handle*& link = way.LastLink();
    Handle* const gone = link;
    Handle* const rest = gone->GetPtr()->RemoveNode(way);
    link = rest;
    Cell::Destroy(gone);
    way.Rebalance();
    return true;
}

template <class K, class V>
typename cow_BtreeNode<K, V>::Handle* cow_BtreeNode<K, V>::RemoveNode(cow_BtreeWay<K, V>& way) {
    if (!m_children[kRight]) {
        Handle* const rest = m_children[kLeft];
        m_children[kLeft] = nullptr;
        if (way.Length() != 0) way.PopLink();
        return rest;
    }
    const std::size_t level = way.Length();
    way.DescendToSuccessor();
    Handle*& link = way.PopLink();
    Handle* const successor = link;
    cow_BtreeNode& node = *successor->GetPtr();
    link = node.m_children[kRight];
    node.m_children[kLeft] = m_children[kLeft];
    node.m_children[kRight] = m_children[kRight];
    m_children[kLeft] = nullptr;
    m_children[kRight] = nullptr;
    way.Replace(level, node);
    return successor;
}

template <class K, class V>
typename cow_BtreeNode<K, V>::Handle* cow_BtreeNode<K, V>::Balance(Handle* self) {
    const int lean = RightHeight() - LeftHeight();
    Handle* top = nullptr;
    if (lean > 1) {
        top = m_children[kRight];
        cow_BtreeNode& node = top->Get();
        m_children[kRight] = node.m_children[kLeft];
        node.m_children[kLeft] = self;
        UpdateDepth();
        node.UpdateDepth();
    } else if (lean < -1) {
        top = m_children[kLeft];
        cow_BtreeNode& node = top->Get();
        m_children[kLeft] = node.m_children[kRight];
        node.m_children[kRight] = self;
        UpdateDepth();
        node.UpdateDepth();
    }
    return top;
}

template <class K, class V>
void cow_BtreeNode<K, V>::SetMaxDepth() {
    UpdateDepth();
}

template <class K, class V>
const V& cow_Btree<K, V>::GetNullValue() {
    return cow_NullValue<V>::Constant();
}

template <class K, class V>
V& cow_Btree<K, V>::Find(const K& key) {
    V* const value = m_root.HasValue() ? m_root.Get().Find(key) : nullptr;
    return value ? *value : cow_NullValue<V>::Scratch();
}

template <class K, class V>
bool cow_Btree<K, V>::InsertUnlessMember(const K& key, const V& value) {
    if (m_root.IsNull()) {
        m_root = cow_BtreeCell<Node>::NewNode(key, value);
        return true;
    }
    cow_BtreeWay<K, V> way(m_root.Get());
    Handle** const link = way.Descend(key);
    if (!link) return false;
    *link = cow_BtreeCell<Node>::New(key, value);
    if (!way.RebalanceAboveLeaf()) [[unlikely]]
        BalanceRoot();
    return true;
}

template <class K, class V>
bool cow_Btree<K, V>::Remove(const K& key) {
    if (m_root.IsNull()) return false;
    Node& root = m_root.Get();
    if (Compare(root.key, key) != 0) {
        if (!root.Remove(key)) return false;
        BalanceRoot();
        return true;
    }
    const bool hasSuccessor = root.Right() != nullptr;
    cow_BtreeWay<K, V> way(root);
    Handle* const rest = root.RemoveNode(way);
    if (rest) {
        m_root = *rest;
        cow_Destroy(rest);
    } else {
        m_root = static_cast<Node*>(nullptr);
    }
    if (hasSuccessor) {
        way.Rebalance();
        BalanceRoot();
    }
    return true;
}

// The tree holds its root handle by value, so a handle for the old root's new place is made here.
template <class K, class V>
void cow_Btree<K, V>::BalanceRoot() {
    Node* const root = m_root.GetPtr();
    if (!root->NeedsBalance()) return;
    Handle* const self = cow_BtreeCell<Node>::NewSharing(m_root);
    Handle* top;
    try {
        top = root->Balance(self);
    } catch (...) {
        cow_Destroy(self);
        throw;
    }
    m_root = *top;
    cow_Destroy(top);
}
