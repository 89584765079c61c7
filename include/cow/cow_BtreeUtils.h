#pragma once
#include <cow/cow_Btree.h>
#include <cow/cow_List.impl.h>  // not all lists of values are held by the library

// The keys and the values of a tree as lists, both in ascending key order.
template <class K, class V>
class cow_BtreeUtils {
public:
    // The key and the value at equal positions belong together. O(n).
    static cow_List<K> cow_Keys(const cow_Btree<K, V>& tree);
    static cow_List<V> cow_Values(const cow_Btree<K, V>& tree);
};

#define COW_DECLARE_BTREE_UTILS(...) KZM_DECLARE(cow_BtreeUtils<__VA_ARGS__>)
COW_BTREES_1(COW_DECLARE_BTREE_UTILS)
COW_BTREES_2(COW_DECLARE_BTREE_UTILS)
