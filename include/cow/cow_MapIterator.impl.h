#pragma once
#include <cow/cow_MapIterator.h>

#include <algorithm>
#include <cstdlib>

template <class K, class V>
cow_ConstMapSortedIt<K, V>::cow_ConstMapSortedIt(const cow_Map<K, V>& map)
    : m_map(map), m_nodes(nullptr), m_position(0) {
    CollectNodes();
    std::sort(m_nodes, m_nodes + Nodes(),
              [](const Node* a, const Node* b) { return a->key < b->key; });
}

// A comparison of the caller's need not be consistent, which std::sort would not survive.
template <class K, class V>
cow_ConstMapSortedIt<K, V>::cow_ConstMapSortedIt(const cow_Map<K, V>& map, Comparison comparison)
    : m_map(map), m_nodes(nullptr), m_position(0) {
    CollectNodes();
    if (m_nodes) std::qsort(m_nodes, static_cast<std::size_t>(Nodes()), sizeof(Node*), comparison);
}

template <class K, class V>
void cow_ConstMapSortedIt<K, V>::CollectNodes() {
    if (m_map.IsEmpty()) return;
    const std::size_t count = static_cast<std::size_t>(Nodes());
    if (count > static_cast<std::size_t>(-1) / sizeof(Node*)) throw std::bad_alloc();
    m_nodes = static_cast<const Node**>(mem_Malloc(count * sizeof(Node*)));
    try {
        const Node** place = m_nodes;
        for (auto walk = m_map.begin(); !walk.IsDone(); ++walk) *place++ = walk.CurrentNode();
    } catch (...) {
        mem_Free(m_nodes);
        throw;
    }
}

template <class K, class V>
int cow_ConstMapSortedIt<K, V>::AscSortCmp(const void* a, const void* b) {
    const K& x = (*static_cast<const Node* const*>(a))->key;
    const K& y = (*static_cast<const Node* const*>(b))->key;
    return x < y ? -1 : y < x ? 1 : 0;
}

template <class K, class V>
int cow_ConstMapSortedIt<K, V>::DescSortCmp(const void* a, const void* b) {
    return AscSortCmp(b, a);
}
