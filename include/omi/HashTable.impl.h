#pragma once
#include <alloc/mem_alloc.h>
#include <omi/HashTable.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>

namespace omi_detail {
inline void PrintItem(unsigned int item) { std::printf(" %10u", item); }
inline void PrintItem(const void* item) {
    std::printf(" 0x%llx", static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(item)));
}
}  // namespace omi_detail

template <class K, class V>
HashTable<K, V>::HashTable(unsigned int buckets)
    : m_buckets(nullptr), m_bucketCount(buckets ? buckets : 1) {
    if (m_bucketCount > std::numeric_limits<std::size_t>::max() / sizeof(Entry*))
        HashTableRaiseBadAllocation();
    const std::size_t bytes = m_bucketCount * sizeof(Entry*);
    try {
        m_buckets = static_cast<Entry**>(mem_Malloc(bytes));
    } catch (const std::bad_alloc&) {
    }
    if (!m_buckets) HashTableRaiseBadAllocation();
    std::memset(m_buckets, 0, bytes);
}

template <class K, class V>
HashTable<K, V>::~HashTable() {
    Clear();
    mem_Free(m_buckets);
}

template <class K, class V>
HashIterator<K, V> HashTable<K, V>::find(const K& key) const {
    iterState state{HashValue(key, m_bucketCount), 1};
    const Entry* entry = m_buckets[state.bucket];
    for (; entry && !(entry->key == key); entry = entry->next) ++state.position;
    if (!entry) state.position = 0;
    return HashIterator<K, V>(*this, state);
}

template <class K, class V>
iterState HashTable<K, V>::Next(const iterState& state) const {
    if (state.position == 0) return state;
    if (CurrentEntry(state).next) return {state.bucket, state.position + 1};
    return FirstFrom(state.bucket + 1);
}

template <class K, class V>
typename HashTable<K, V>::Entry& HashTable<K, V>::CurrentEntry(const iterState& state) const {
    Entry* entry = m_buckets[state.bucket];
    for (unsigned int i = 1; i < state.position; ++i) entry = entry->next;
    return *entry;
}

template <class K, class V>
bool HashTable<K, V>::operator==(const HashTable& other) const {
    std::size_t count = 0;
    for (const auto& [key, value] : *this) {
        const Entry* const entry = other.Find(key);
        if (!entry || !(entry->value == value)) return false;
        ++count;
    }
    for (auto it = other.begin(); it != other.end(); ++it)
        if (count-- == 0) return false;
    return true;
}

template <class K, class V>
void HashTable<K, V>::dump() const {
    for (unsigned int bucket = 0; bucket < m_bucketCount; ++bucket) {
        for (const Entry* entry = m_buckets[bucket]; entry; entry = entry->next) {
            std::printf("%8u", bucket);
            omi_detail::PrintItem(entry->key);
            omi_detail::PrintItem(entry->value);
            std::printf("\n");
        }
    }
}

template <class K, class V>
void HashTable<K, V>::Delete(const K& key) {
    Entry** at = &Bucket(key);
    while (*at && !((*at)->key == key)) at = &(*at)->next;
    Entry* const entry = *at;
    if (!entry) return;
    *at = entry->next;
    delete entry;
}

template <class K, class V>
void HashTable<K, V>::Clear() {
    for (unsigned int bucket = 0; bucket < m_bucketCount; ++bucket) {
        Entry* entry = m_buckets[bucket];
        m_buckets[bucket] = nullptr;
        while (entry) {
            Entry* const next = entry->next;
            delete entry;
            entry = next;
        }
    }
}

// The first entry of the first bucket from this one on that has any.
template <class K, class V>
iterState HashTable<K, V>::FirstFrom(unsigned int bucket) const {
    while (bucket < m_bucketCount && !m_buckets[bucket]) ++bucket;
    return {bucket, bucket < m_bucketCount ? 1u : 0u};
}
