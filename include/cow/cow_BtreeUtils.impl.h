#pragma once
#include <cow/cow_BtreeUtils.h>

template <class K, class V>
cow_List<K> cow_BtreeUtils<K, V>::cow_Keys(const cow_Btree<K, V>& tree) {
    cow_List<K> keys;
    for (const auto& entry : tree) keys.Append(entry.key);
    return keys;
}

template <class K, class V>
cow_List<V> cow_BtreeUtils<K, V>::cow_Values(const cow_Btree<K, V>& tree) {
    cow_List<V> values;
    for (const auto& entry : tree) values.Append(entry.value);
    return values;
}
