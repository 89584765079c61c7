#pragma once
#include <cow/cow_Btree.h>

#include <cassert>

// Walks a tree in key order, both ways. It shares the tree like a copy: it goes on over the entries
// as they were when it was made, whatever happens to the tree, and while it lives a write to the
// tree copies nodes. In a loop that writes nothing, begin() and end() of the tree do the same
// without sharing.
//
//     for (cow_BtreeIterator<int, double> it(tree); !it.IsDone(); it.Next())
//         Use(it.CurrentKey(), it.CurrentValue());
//
// A new iterator stands on the first entry. The moves answer whether they arrived at an entry; past
// either end the iterator is done, and only First and Last bring it back.
template <class K, class V>
class cow_BtreeIterator {
public:
    using const_iterator = typename cow_Btree<K, V>::const_iterator;

    // Stands on the first entry, or is done if there is none.
    explicit cow_BtreeIterator(const cow_Btree<K, V>& tree) : m_tree(tree), m_walk(tree.begin()) {}
    cow_BtreeIterator(const cow_BtreeIterator& other) = default;
    // The other tree and the other position. Copies share the tree.
    cow_BtreeIterator& operator=(const cow_BtreeIterator& other) {
        m_walk = other.m_walk;
        m_tree = other.m_tree;
        return *this;
    }
    ~cow_BtreeIterator() = default;

    // Moves, which answer whether there is an entry where they arrived. Next and Previous of an
    // iterator that is done do nothing.
    bool First() { return m_walk.First(); }
    bool Last() { return m_walk.Last(); }
    bool Next() { return m_walk.Next(); }
    bool Previous() { return m_walk.Previous(); }
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

    // All entries, whatever the position.
    const_iterator begin() const { return m_tree.begin(); }
    const_iterator end() const { return m_tree.end(); }

private:
    cow_Btree<K, V> m_tree;
    const_iterator m_walk;
};

#define COW_DECLARE_BTREE_ITERATOR(...) KZM_DECLARE(cow_BtreeIterator<__VA_ARGS__>)
COW_BTREES_1(COW_DECLARE_BTREE_ITERATOR)
COW_BTREES_2(COW_DECLARE_BTREE_ITERATOR)
