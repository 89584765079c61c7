#pragma once
#include <generics/HashValue.h>
#include <kzm_export.h>
#include <omi/omi_StdIterator.h>
#include <runtime/mem_AllocationOperators.h>

#include <iterator>
#include <utility>

template <class K, class V>
class HashCursor;
template <class K, class V>
class HashIterator;

// The exception for a table whose buckets cannot be had: a std::bad_alloc with the text "bad
// allocation".
[[noreturn]] KZM_API void HashTableRaiseBadAllocation();

// One entry of a hash table, in the chain of its bucket.
template <class K, class V>
class HashTableEntry : public mem_AllocationOperatorsTiny {
public:
    // In front of the entry `n`, which may be null.
    HashTableEntry(const K& k, const V& v, HashTableEntry* n) : key(k), value(v), next(n) {}

    // The value may be changed in place; the chain belongs to the table.
    const K key;
    V value;
    HashTableEntry* next;
};

// A place in a hash table: the bucket, and the place in its chain counted from 1; 0 is no entry.
struct iterState {
    // Written by the table.
    unsigned int bucket;
    unsigned int position;

    // All places without an entry are equal.
    bool operator==(const iterState& other) const {
        return position == other.position && (position == 0 || bucket == other.bucket);
    }
};

// Compact chained hash table with a fixed number of buckets, for pointer and unsigned keys. Choose
// the number of buckets near the number of entries that you expect: the table never rehashes, and
// finding a key costs the length of a chain. For keys in clusters omi_UintTable is faster.
//
// Entries stay where they are until they are deleted. Arguments may lie in the table. When memory
// runs out, std::bad_alloc leaves the entries as they were. One thread at a time.
template <class K, class V>
class HashTable {
public:
    // What CurrentEntry refers to.
    using Entry = HashTableEntry<K, V>;
    using const_iterator = omi_StdIterator<HashCursor<K, V>>;
    using value_type = std::pair<K, V>;

    explicit HashTable(unsigned int buckets);  // at least one is made
    template <std::input_iterator It>          // over pairs; inserts them in order
    HashTable(It first, It last, unsigned int buckets) : HashTable(buckets) {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }
    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;
    ~HashTable();

    // Copies the value out; false, and `value` as it was, if the key has no entry.
    bool LookUp(const K& key, V& value) const {
        const Entry* const entry = Find(key);
        if (entry) value = entry->value;
        return entry != nullptr;
    }

    // The place of the key's entry, or one at position 0.
    HashIterator<K, V> find(const K& key) const;

    // All entries by place: buckets ascending, each chain from its front. Next walks the chain from
    // its front; begin() and end(), over pairs of key and value, do not.
    iterState First() const { return FirstFrom(0); }
    iterState Next(const iterState& state) const;
    const_iterator begin() const;
    const_iterator end() const;

    // For states with an entry.
    Entry& CurrentEntry(const iterState& state) const;
    K CurrentKey(const iterState& state) const { return CurrentEntry(state).key; }
    V CurrentValue(const iterState& state) const { return CurrentEntry(state).value; }

    bool operator==(const HashTable& other) const;  // equal keys with equal values

    void dump() const;  // on standard output: bucket, key and value of each entry, a line each

    // Replaces the value of a key that has an entry; else puts a new one at its bucket's front.
    void Insert(const K& key, const V& value) {
        if (Entry* const entry = Find(key))
            entry->value = value;
        else
            Prepend(key, value);
    }

    // The value of the key; one that has no entry gets one with a zero value.
    V& operator[](const K& key) {
        Entry* const entry = Find(key);
        return (entry ? entry : Prepend(key, V()))->value;
    }

    void Delete(const K& key);  // of an absent key: nothing
    void Clear();               // keeps the buckets

private:
    friend struct kzm_Layout;
    friend class HashCursor<K, V>;

    Entry*& Bucket(const K& key) const { return m_buckets[HashValue(key, m_bucketCount)]; }

    Entry* Find(const K& key) const {
        Entry* entry = Bucket(key);
        while (entry && !(entry->key == key)) entry = entry->next;
        return entry;
    }

    Entry* Prepend(const K& key, const V& value) {
        Entry*& front = Bucket(key);
        return front = new Entry(key, value, front);
    }

    iterState FirstFrom(unsigned int bucket) const;

    Entry** m_buckets;  // owned; the front of each chain
    unsigned int m_bucketCount;
};

// The place of an entry in a table. Deleting an entry of the same bucket, or inserting one, moves
// what it refers to.
template <class K, class V>
class HashIterator {
public:
    // At a place that the table gave, such as First().
    HashIterator(const HashTable<K, V>& table, const iterState& state)
        : m_table(&table), m_state(state) {}

    // Whether it stands on no entry, its place, and the move to the next one: O(chain).
    bool IsDone() const { return m_state.position == 0; }
    const iterState& State() const { return m_state; }
    void Next() { m_state = m_table->Next(m_state); }

    // These need an entry.
    K CurrentKey() const { return m_table->CurrentKey(m_state); }
    V& CurrentValue() const { return m_table->CurrentEntry(m_state).value; }

    bool operator==(const HashIterator& other) const = default;

private:
    friend struct kzm_Layout;
    const HashTable<K, V>* m_table;
    iterState m_state;
};

// The walk behind begin() and end() of a hash table; it ends when its entry is deleted.
template <class K, class V>
class HashCursor {
public:
    using value_type = std::pair<K, V>;

    // The end of every table, or the first entry of one.
    HashCursor() = default;
    explicit HashCursor(const HashTable<K, V>& table) : m_table(&table) { Enter(0); }

    // Moves within a chain, then on to the next bucket that has one. At the end Next does nothing;
    // CurrentItem needs an entry.
    bool IsDone() const { return !m_entry; }
    void Next() {
        if (!m_entry) return;
        m_entry = m_entry->next;
        if (!m_entry) Enter(m_bucket + 1);
    }
    omi_PairItem<K, V> CurrentItem() const { return {m_entry->key, m_entry->value}; }
    // Whether both stand on the same entry.
    bool operator==(const HashCursor& other) const { return m_entry == other.m_entry; }

private:
    void Enter(unsigned int bucket) {
        m_bucket = m_table->FirstFrom(bucket).bucket;
        m_entry = m_bucket < m_table->m_bucketCount ? m_table->m_buckets[m_bucket] : nullptr;
    }

    const HashTable<K, V>* m_table = nullptr;
    const HashTableEntry<K, V>* m_entry = nullptr;
    unsigned int m_bucket = 0;
};

template <class K, class V>
typename HashTable<K, V>::const_iterator HashTable<K, V>::begin() const {
    return const_iterator(HashCursor<K, V>(*this));
}
template <class K, class V>
typename HashTable<K, V>::const_iterator HashTable<K, V>::end() const {
    return const_iterator();
}

#define HASH_TABLES(X)     \
    X(unsigned int, void*) \
    X(void*, unsigned int)

#define HASH_DECLARE_TABLE(K, V)      \
    KZM_DECLARE(HashTableEntry<K, V>) \
    KZM_DECLARE(HashTable<K, V>)      \
    KZM_DECLARE(HashIterator<K, V>)
HASH_TABLES(HASH_DECLARE_TABLE)
