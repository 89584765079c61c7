#pragma once
#include <cow/cow_List.impl.h>  // not all lists of values are held by the library
#include <cow/cow_Map.h>

// The keys and the values of a map as lists, both in the order of its iteration.
template <class K, class V>
class cow_MapUtils {
public:
    // The key and the value at equal positions belong together. O(n).
    static cow_List<K> cow_Keys(const cow_Map<K, V>& map);
    static cow_List<V> cow_Values(const cow_Map<K, V>& map) requires
        std::default_initializable<V>;  // as list elements must be
};

#define COW_DECLARE_MAP_UTILS(...) KZM_DECLARE(cow_MapUtils<__VA_ARGS__>)
COW_MAPS_1(COW_DECLARE_MAP_UTILS)
COW_MAPS_2(COW_DECLARE_MAP_UTILS)
