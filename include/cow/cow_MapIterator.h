#pragma once
#include <cow/cow_Map.h>

#include <cassert>

// Visits every entry of a map, parents first, child 0 before child 1. It shares the map like a
// copy: it goes on over the entries as they were when it was made, whatever happens to the map,
// and while it lives a write to the map copies nodes. In a loop that writes nothing, begin() and
// end() of the map do the same without sharing.
//
//     for (cow_ConstMapIterator<int, double> it(map); !it.IsDone(); it.Next())
//         Use(it.CurrentKey(), it.CurrentValue());
//
// A new iterator stands on the first entry.
template <class K, class V>
class cow_ConstMapIterator {
public:
    using const_iterator = typename cow_Map<K, V>::const_iterator;

    // Stands on the first entry, or is done if there is none.
    explicit cow_ConstMapIterator(const cow_Map<K, V>& map) : m_map(map), m_walk(map.begin()) {}
    cow_ConstMapIterator(const cow_ConstMapIterator& other) = default;
    // The other map and the other position. Copies share the map.
    cow_ConstMapIterator& operator=(const cow_ConstMapIterator& other) {
        m_walk = other.m_walk;
        m_map = other.m_map;
        return *this;
    }
    ~cow_ConstMapIterator() = default;

    // Back to the first entry.
    void First() { m_walk = m_map.begin(); }

    void Next() {  // nothing happens at the end
        if (!IsDone()) ++m_walk;
    }
    // Whether it stands on no entry.
    bool IsDone() const { return m_walk.IsDone(); }

    // These two need a current entry (checked in debug builds).
    const K& CurrentKey() const {
        assert(!IsDone());
        return m_walk->key;
    }
    const V& CurrentValue() const {
        assert(!IsDone());
        return m_walk->value;
    }

    int Nodes() const { return m_map.Size(); }  // entries in all

    // All entries, whatever the position.
    const_iterator begin() const { return m_map.begin(); }
    const_iterator end() const { return m_map.end(); }

private:
    cow_Map<K, V> m_map;
    const_iterator m_walk;
};

// Visits the entries of a map in the order of a comparison, by default with ascending keys: numbers
// as numbers, texts bytewise. Shares the map as cow_ConstMapIterator does, and sorts an array of
// its nodes once, when it is made. The comparison has the form of std::qsort's and gets pointers
// to pointers to nodes:
//
//     int ByValue(const void* a, const void* b) {
//         using Node = cow_MapNode<int, double>;
//         const double x = (*static_cast<const Node* const*>(a))->value;
//         const double y = (*static_cast<const Node* const*>(b))->value;
//         return x < y ? -1 : x > y;
//     }
template <class K, class V>
class cow_ConstMapSortedIt {
public:
    // The comparison gets two pointers to `const Node*` and answers below, at or above 0.
    using Node = cow_MapNode<K, V>;
    using Comparison = int (*)(const void* a, const void* b);
    class const_iterator;

    // Sort at once, O(n log n), with an array of one pointer an entry. Both stand on the first
    // entry.
    explicit cow_ConstMapSortedIt(const cow_Map<K, V>& map);  // as with AscSortCmp, and faster
    cow_ConstMapSortedIt(const cow_Map<K, V>& map, Comparison comparison);
    cow_ConstMapSortedIt(const cow_ConstMapSortedIt&) = delete;
    cow_ConstMapSortedIt& operator=(const cow_ConstMapSortedIt&) = delete;
    ~cow_ConstMapSortedIt() { mem_Free(m_nodes); }

    // Comparisons by key, ascending and descending.
    static int AscSortCmp(const void* a, const void* b);
    static int DescSortCmp(const void* a, const void* b);

    // Back to the first entry in order.
    void First() { m_position = 0; }

    void Next() {  // nothing happens at the end
        if (!IsDone()) ++m_position;
    }
    // Whether it stands on no entry.
    bool IsDone() const { return m_position >= Nodes(); }

    // These two need a current entry (checked in debug builds).
    const K& CurrentKey() const {
        assert(!IsDone());
        return m_nodes[m_position]->key;
    }
    const V& CurrentValue() const {
        assert(!IsDone());
        return m_nodes[m_position]->value;
    }

    // Entries in all.
    int Nodes() const { return m_map.Size(); }

    // All entries in order, whatever the position; valid as long as this object.
    const_iterator begin() const { return const_iterator(m_nodes); }
    const_iterator end() const { return const_iterator(m_nodes + Nodes()); }

private:
    void CollectNodes();

    cow_Map<K, V> m_map;
    const Node** m_nodes;  // owned; null for an empty map
    int m_position;
};

// Standard forward iterator over the sorted entries; lives as long as the object that sorted them.
template <class K, class V>
class cow_ConstMapSortedIt<K, V>::const_iterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = cow_KeyValue<K, V>;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = const value_type&;

    // Made by begin() and end() of the sorting object; a default-constructed one is to be assigned.
    const_iterator() : m_place(nullptr) {}
    explicit const_iterator(const Node* const* place) : m_place(place) {}

    reference operator*() const { return **m_place; }
    pointer operator->() const { return *m_place; }
    const_iterator& operator++() {
        ++m_place;
        return *this;
    }
    const_iterator operator++(int) { return const_iterator(m_place++); }
    bool operator==(const const_iterator& other) const = default;

private:
    const Node* const* m_place;
};

#define COW_DECLARE_MAP_ITERATORS(...)             \
    KZM_DECLARE(cow_ConstMapIterator<__VA_ARGS__>) \
    KZM_DECLARE(cow_ConstMapSortedIt<__VA_ARGS__>)
COW_MAPS_1(COW_DECLARE_MAP_ITERATORS)
COW_MAPS_2(COW_DECLARE_MAP_ITERATORS)
