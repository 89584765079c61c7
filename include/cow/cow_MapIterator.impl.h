#pragma once
#include <cow/cow_MapIterator.h>

#include <algorithm>
#include <cstdlib>

template <class K, class V>
cow_ConstMapSortedIt<K, V>::cow_ConstMapSortedIt(const cow_Map<K, V>& map, Comparison comparison)
    : m_map(map), m_nodes(nullptr), m_position(0) {
    if (map.IsEmpty()) return;
    const std::size_t count = static_cast<std::size_t>(map.Size());
    if (count > static_cast<std::size_t>(-1) / sizeof(Node*)) throw std::bad_alloc();
    m_nodes = static_cast<const Node**>(mem_Malloc(count * sizeof(Node*)));
    try {
        const Node** place = m_nodes;
        for (auto walk = map.begin(); !walk.IsDone(); ++walk) *place++ = walk.CurrentNode();
    } catch (...) {
        mem_Free(m_nodes);
        throw;
    }
    if (comparison == AscSortCmp)
        std::sort(m_nodes, m_nodes + count,
                  [](const Node* a, const Node* b) { return a->key < b->key; });
    else if (comparison == DescSortCmp)
        std::sort(m_nodes, m_nodes + count,
                  [](const Node* a, const Node* b) { return b->key < a->key; });
    else
        std::qsort(m_nodes, count, sizeof(Node*), comparison);
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
