#pragma once
#include <cow/cow_Btree.h>
#include <cow/cow_NullValue.h>

#include <algorithm>
#include <cstddef>

// The way from a node down to the place of a change, as the links (fields of nodes) that lead on.
// Every node on it is private. The links outlive rotations further down, since those change what a
// link holds but not the node it lies in.
template <class K, class V>
class cow_BtreeWay {
public:
    using Node = cow_BtreeNode<K, V>;
    using Handle = typename Node::Handle;

    explicit cow_BtreeWay(Node& top) : m_top(&top) {}

    // Goes down to the key. Null if it is there, the way then ending at its node; else the empty
    // link where it belongs.
    Handle** Descend(const K& key) {
        const cow_BtreeOrder<K> order(key);
        for (Node* node = m_top;;) {
            unsigned isBehind;
            if (!order.Differs(node->key, isBehind)) return nullptr;
            Handle** const link = &node->m_children[isBehind];
            m_links.Push(link);
            if (!*link) return link;
            node = &(*link)->Get();
        }
    }

    // Adds the way to the in-order successor of the node that it ends at, which has a right child.
    void DescendToSuccessor() {
        for (Handle** link = &End().m_children[Node::kRight]; *link;
             link = &(*link)->Get().m_children[Node::kLeft])
            m_links.Push(link);
    }

    std::size_t Length() const { return m_links.Size(); }
    Handle** LastLink() const { return m_links.Top(); }
    Handle** PopLink() { return m_links.Pop(); }

    // `node` now stands at a level, the way going on to its right.
    void Replace(std::size_t level, Node& node) {
        if (level < Length()) m_links[level] = &node.m_children[Node::kRight];
        if (level == 0) m_top = &node;
    }

    // From the end of the way up: computes every depth anew and balances every node but the top
    // one. If a node that is to be turned up cannot be copied, the depths are still brought up to
    // date before the exception goes on.
    void Rebalance() {
        std::size_t level = m_links.Size();
        try {
            for (;; --level) {
                Node& node = NodeAt(level);
                const bool isBalanced = node.UpdateDepth();
                if (level == 0) return;
                if (isBalanced) [[likely]]
                    continue;
                Handle*& link = *m_links[level - 1];
                link = node.Balance(link);
            }
        } catch (...) {
            while (level-- > 0) NodeAt(level).SetMaxDepth();
            throw;
        }
    }

private:
    Node& End() { return NodeAt(m_links.Size()); }
    Node& NodeAt(std::size_t level) {
        return level == 0 ? *m_top : *(*m_links[level - 1])->GetPtr();
    }

    Node* m_top;
    cow_SmallStack<Handle**, 48> m_links;
};

namespace cow_btree_detail {

// A heap-allocated handle, from whatever makeReferent() returns: a new node or a handle to share.
template <class Handle, class MakeReferent>
Handle* NewHandle(const MakeReferent& makeReferent) {
    void* const block = mem_OperatorNewTinyThrow(sizeof(Handle));
    try {
        return ::new (block) Handle(makeReferent());
    } catch (...) {
        mem_Free(block);
        throw;
    }
}

template <class Handle>
Handle* NewSharing(const Handle& other) {
    return NewHandle<Handle>([&other]() -> const Handle& { return other; });
}

template <class Node, class K, class V>
Node* NewNode(const K& key, const V& value) {
    void* const block = mem_OperatorNewThrow(sizeof(Node));
    try {
        return ::new (block) Node(key, value);
    } catch (...) {
        mem_Free(block);
        throw;
    }
}

}  // namespace cow_btree_detail

template <class K, class V>
cow_BtreeNode<K, V>::cow_BtreeNode(const cow_BtreeNode& other)
    : Entry(other), m_children{nullptr, nullptr}, m_depth(other.m_depth) {
    using cow_btree_detail::NewSharing;
    if (other.m_children[kLeft]) m_children[kLeft] = NewSharing(*other.m_children[kLeft]);
    try {
        if (other.m_children[kRight]) m_children[kRight] = NewSharing(*other.m_children[kRight]);
    } catch (...) {
        cow_Destroy(m_children[kLeft]);
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
                cow_Destroy(top);
            }
            top = rest;
        }
        cow_Destroy(top);
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
    *link = cow_btree_detail::NewHandle<Handle>(
        [&] { return cow_btree_detail::NewNode<cow_BtreeNode>(k, v); });
    way.Rebalance();
    return true;
}

template <class K, class V>
bool cow_BtreeNode<K, V>::Remove(const K& k) {
    cow_BtreeWay<K, V> way(*this);
    if (way.Descend(k) || way.Length() == 0) return false;
    Handle** const link = way.LastLink();
    Handle* const gone = *link;
    Handle* const rest = gone->GetPtr()->RemoveNode(way);
    *link = rest;
    cow_Destroy(gone);
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
    Handle** const link = way.PopLink();
    Handle* const successor = *link;
    cow_BtreeNode& node = *successor->GetPtr();
    *link = node.m_children[kRight];
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
        m_root = cow_btree_detail::NewNode<Node>(key, value);
        return true;
    }
    if (!m_root.Get().InsertUnlessMember(key, value)) return false;
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
    Handle* const self = cow_btree_detail::NewSharing(m_root);
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
