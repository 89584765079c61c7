#pragma once
#include <cow/cow_MapUtils.h>

template <class K, class V>
cow_List<K> cow_MapUtils<K, V>::cow_Keys(const cow_Map<K, V>& map) {
    cow_List<K> keys;
    for (const auto& entry : map) keys.Append(entry.key);
    return keys;
}

template <class K, class V>
cow_List<V> cow_MapUtils<K, V>::cow_Values(
    const cow_Map<K, V>& map) requires std::default_initializable<V> {
    cow_List<V> values;
    for (const auto& entry : map) values.Append(entry.value);
    return values;
}
