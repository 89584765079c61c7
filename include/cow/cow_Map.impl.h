#pragma once
#include <alloc/mem_cell.h>
#include <cow/cow_Map.h>

#include <type_traits>

namespace cow_map_detail {

// Frees what this handle alone holds without recursion, since chains of text keys may be long, and
// without memory: nodes are turned to the right until the top one has no child 0 of its own.
template <class Handle>
void TearDown(Handle& top) {
    const auto owned = [](const Handle& h) { return h.HasValue() && h.Exclusive(); };
    while (owned(top)) {
        auto* const node = top.GetPtr();
        if (owned(node->Child(false))) {
            Handle below(node->Child(false));
            node->Child(false) = below.GetPtr()->Child(true);
            below.GetPtr()->Child(true) = top;
            top = below;
        } else {
            top = node->Child(true);  // frees the node, whose children are now nobody's alone
        }
    }
}

}  // namespace cow_map_detail

template <class K, class V>
cow_MapNode<K, V>::~cow_MapNode() {
    if constexpr (!std::is_integral_v<K>) {  // else the depth is bounded
        cow_map_detail::TearDown(m_children[0]);
        cow_map_detail::TearDown(m_children[1]);
    }
}

template <class K, class V>
bool cow_Map<K, V>::Insert(const K& key, const V& value) {
    Handle& place = Descend(key);
    if (place.HasValue()) {
        place.GetPtr()->value = value;
    } else {
        place = NewNode(key, value);
        ++m_size;
    }
    return true;
}

template <class K, class V>
bool cow_Map<K, V>::Remove(const K& key) {
    Handle* place = &m_root;
    bool shared = false;  // some node above
    for (cow_MapBits<K> bits(key); place->HasValue() && !(place->GetRef().key == key);) {
        shared = shared || !place->Exclusive();
        place = &place->GetPtr()->Child(bits.Next());
    }
    if (place->IsNull()) return false;
    if (shared) {
        place = &m_root;
        for (cow_MapBits<K> bits(key); !(place->GetRef().key == key);)
            place = &place->Get().Child(bits.Next());
    }
    if constexpr (std::is_nothrow_copy_assignable_v<K> && std::is_nothrow_copy_assignable_v<V>)
        PullUp(*place);
    else
        PullUpCopies(*place);
    --m_size;
    return true;
}

// The child whose chain moves up: child 1 if there is one, else child 0; null for a leaf.
template <class K, class V>
typename cow_Map<K, V>::Handle* cow_Map<K, V>::Successor(Node& node) {
    if (node.Child1().HasValue()) return &node.Child(true);
    return node.Child0().HasValue() ? &node.Child(false) : nullptr;
}

// Drops the entry at `top`: the entries of the chain below it move up by one, then the last node
// goes. All that can fail comes first.
template <class K, class V>
void cow_Map<K, V>::PullUp(Handle& top) {
    Handle* last = &top;
    while (Handle* next = Successor(*last->GetPtr())) {
        if (!last->Exclusive()) next = Successor(last->Get());
        last = next;
    }
    if (last->Exclusive()) {
        MoveEntriesUp(top);
        *last = static_cast<Node*>(nullptr);
    } else {
        const Handle none(static_cast<Node*>(nullptr));
        MoveEntriesUp(top);
        *last = none;
    }
}

template <class K, class V>
void cow_Map<K, V>::MoveEntriesUp(Handle& top) {
    Node* node = top.GetPtr();
    while (const Handle* const next = Successor(*node)) {
        Node* const below = next->GetPtr();
        node->key = below->key;
        node->value = below->value;
        node = below;
    }
}

// The same for entries whose assignment may throw: the chain is built anew and put in place whole.
template <class K, class V>
void cow_Map<K, V>::PullUpCopies(Handle& top) {
    Handle fresh(static_cast<Node*>(nullptr));
    Handle* place = &fresh;
    const Handle none(fresh);
    for (Node* node = top.GetPtr(); const Handle* const next = Successor(*node);) {
        Node* const below = next->GetPtr();
        Node* const copy = NewNode(below->key, below->value);
        copy->Child(false) = node->Child0();
        copy->Child(true) = node->Child1();
        *place = copy;
        place = Successor(*copy);
        *place = none;
        node = below;
    }
    top = fresh;
}

template <class K, class V>
typename cow_Map<K, V>::Node* cow_Map<K, V>::NewNode(const K& key, const V& value) {
    // Where the heap is known to take nodes there as well: packed, more of them are in the caches.
    void* const block =
        kMemHasCells ? mem_OperatorNewTinyThrow(sizeof(Node)) : mem_OperatorNewThrow(sizeof(Node));
    try {
        return ::new (block) Node(key, value);
    } catch (...) {
        mem_Free(block);
        throw;
    }
}
