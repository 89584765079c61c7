// Containers from keys to values with one set of members, so that one workload runs over all:
//
//     Insert(key, value)   of a key that is not there
//     At(key)              the value of a key that is there
//     Has(key)
//     Erase(key)           of a key that is there
//     Size()
//     Each(f)              f(key, value) for every entry, in the container's order
//
// They copy by copying. A peer that is not installed is Missing.
#pragma once

#include <cow/cow_Btree.h>
#include <cow/cow_Map.h>
#include <omi/HashTable.h>
#include <omi/omi_IntTable.h>

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <unordered_map>

#include "support/workload.h"
#ifdef KZM_BENCH_ABSL
#include <absl/container/btree_map.h>
#include <absl/container/flat_hash_map.h>
#endif
#ifdef KZM_BENCH_BOOST
#include <boost/container/flat_map.hpp>
#endif
#ifdef KZM_BENCH_JUDY
#include <Judy.h>
#endif
#ifdef KZM_BENCH_QT
#include <QHash>
#include <QMap>
#include <QString>
#endif
#ifdef KZM_BENCH_ROBIN
#include <tsl/robin_map.h>
#endif

namespace bench {

// As the standard's maps.
template <class Map>
class Keyed {
public:
    using Key = typename Map::key_type;
    using Value = typename Map::mapped_type;

    void Insert(const Key& key, const Value& value) { m_map.emplace(key, value); }
    const Value& At(const Key& key) const { return m_map.find(key)->second; }
    bool Has(const Key& key) const { return m_map.find(key) != m_map.end(); }
    void Erase(const Key& key) { m_map.erase(key); }
    std::size_t Size() const { return m_map.size(); }
    void Reserve(std::size_t n) requires requires(Map map) { map.reserve(n); }
    { m_map.reserve(n); }
    template <class F>
    void Each(F f) const {
        for (const auto& [key, value] : m_map) f(key, value);
    }

private:
    Map m_map;
};

template <class K, class V>
class Keyed<cow_Map<K, V>> : public cow_Map<K, V> {
public:
    using Key = K;
    using Value = V;
    static constexpr const char* kWho = "cow_Map";

    const V& At(const K& key) const { return this->ConstGet(key); }
    bool Has(const K& key) const { return this->IsMember(key); }
    void Erase(const K& key) { this->Remove(key); }
    template <class F>
    void Each(F f) const {
        for (const auto& [key, value] : *this) f(key, value);
    }
};

template <class K, class V>
class Keyed<cow_Btree<K, V>> : public cow_Btree<K, V> {
public:
    using Key = K;
    using Value = V;
    static constexpr const char* kWho = "cow_Btree";

    void Insert(const K& key, const V& value) { this->InsertUnlessMember(key, value); }
    const V& At(const K& key) const { return this->ConstFind(key); }
    bool Has(const K& key) const { return this->IsMember(key); }
    void Erase(const K& key) { this->Remove(key); }
    std::size_t Size() const {  // trees do not count
        std::size_t size = 0;
        Each([&](const K&, const V&) { ++size; });
        return size;
    }
    template <class F>
    void Each(F f) const {
        for (const auto& [key, value] : *this) f(key, value);
    }
};

template <class V, class A>
class Keyed<omi_IntTable<V, A>> : public omi_IntTable<V, A> {
public:
    using Key = int;
    using Value = V;
    static constexpr const char* kWho = "omi_IntTable";

    Keyed() = default;
    Keyed(const Keyed& other) : omi_IntTable<V, A>(other) {}

    const V& At(int key) const { return this->ConstGet(key); }
    bool Has(int key) const { return this->IsMember(key); }
    void Erase(int key) { this->Remove(key); }
    template <class F>
    void Each(F f) const {
        for (const auto& [key, value] : *this) f(key, value);
    }
};

template <class K, class V>
inline constexpr const char* kWho<Keyed<std::map<K, V>>> = "std::map";
template <class K, class V>
inline constexpr const char* kWho<Keyed<std::unordered_map<K, V>>> = "std::unordered_map";
template <class K, class V>
using StdMap = Keyed<std::map<K, V>>;
template <class K, class V>
using StdHash = Keyed<std::unordered_map<K, V>>;

#ifdef KZM_BENCH_ABSL
template <class K, class V>
inline constexpr const char* kWho<Keyed<absl::btree_map<K, V>>> = "absl::btree_map";
template <class K, class V>
inline constexpr const char* kWho<Keyed<absl::flat_hash_map<K, V>>> = "absl::flat_hash_map";
template <class K, class V>
using AbslMap = Keyed<absl::btree_map<K, V>>;
template <class K, class V>
using AbslHash = Keyed<absl::flat_hash_map<K, V>>;
#else
template <class, class>
using AbslMap = Missing;
template <class, class>
using AbslHash = Missing;
#endif

#ifdef KZM_BENCH_ROBIN
template <class K, class V>
inline constexpr const char* kWho<Keyed<tsl::robin_map<K, V>>> = "tsl::robin_map";
template <class K, class V>
using RobinHash = Keyed<tsl::robin_map<K, V>>;
#else
template <class, class>
using RobinHash = Missing;
#endif

#ifdef KZM_BENCH_BOOST
template <class K, class V>
inline constexpr const char* kWho<Keyed<boost::container::flat_map<K, V>>> = "boost::flat_map";
template <class K, class V>
using BoostFlat = Keyed<boost::container::flat_map<K, V>>;
#else
template <class, class>
using BoostFlat = Missing;
#endif

#ifdef KZM_BENCH_QT
// QMap and QHash share their entries between copies until one is written.
template <class Map>
class QtKeyed {
public:
    using Key = typename Map::key_type;
    using Value = typename Map::mapped_type;

    void Insert(const Key& key, const Value& value) { m_map.insert(key, value); }
    const Value& At(const Key& key) const { return *m_map.constFind(key); }
    bool Has(const Key& key) const { return m_map.contains(key); }
    void Erase(const Key& key) { m_map.remove(key); }
    std::size_t Size() const { return static_cast<std::size_t>(m_map.size()); }
    void Reserve(std::size_t n) requires requires(Map map) { map.reserve(1); }
    { m_map.reserve(static_cast<int>(n)); }
    template <class F>
    void Each(F f) const {
        for (auto it = m_map.cbegin(); it != m_map.cend(); ++it) f(it.key(), it.value());
    }

private:
    Map m_map;
};
template <class K, class V>
inline constexpr const char* kWho<QtKeyed<QMap<K, V>>> = "Qt::QMap";
template <class K, class V>
inline constexpr const char* kWho<QtKeyed<QHash<K, V>>> = "Qt::QHash";
template <class K, class V>
using QtMap = QtKeyed<QMap<K, V>>;
template <class K, class V>
using QtHash = QtKeyed<QHash<K, V>>;
using QtTextMap = QtMap<QString, int>;
using QtTextHash = QtHash<QString, int>;
#else
using QtTextMap = Missing;
using QtTextHash = Missing;
template <class, class>
using QtMap = Missing;
template <class, class>
using QtHash = Missing;
#endif

#ifdef KZM_BENCH_JUDY
// A word to a word; V may be a number or a pointer of up to that size.
template <class K, class V>
class JudyL {
public:
    using Key = K;
    using Value = V;
    static constexpr const char* kWho = "Judy::JudyL";

    JudyL() = default;
    JudyL(const JudyL& other) {
        Word_t index = 0;
        for (void* cell = JudyLFirst(other.m_array, &index, nullptr); cell;
             cell = JudyLNext(other.m_array, &index, nullptr))
            *static_cast<Word_t*>(static_cast<void*>(JudyLIns(&m_array, index, nullptr))) =
                *static_cast<Word_t*>(cell);
    }
    JudyL& operator=(const JudyL&) = delete;
    ~JudyL() { JudyLFreeArray(&m_array, nullptr); }

    void Insert(K key, V value) {
        std::memcpy(JudyLIns(&m_array, Index(key), nullptr), &value, sizeof value);
    }
    V At(K key) const {
        V value;
        std::memcpy(&value, JudyLGet(m_array, Index(key), nullptr), sizeof value);
        return value;
    }
    bool Has(K key) const { return JudyLGet(m_array, Index(key), nullptr) != nullptr; }
    void Erase(K key) { JudyLDel(&m_array, Index(key), nullptr); }
    std::size_t Size() const { return JudyLCount(m_array, 0, ~Word_t{0}, nullptr); }
    template <class F>
    void Each(F f) const {
        Word_t index = 0;
        for (const void* cell = JudyLFirst(m_array, &index, nullptr); cell;
             cell = JudyLNext(m_array, &index, nullptr)) {
            V value;
            std::memcpy(&value, cell, sizeof value);
            f((K)index, value);
        }
    }

private:
    static Word_t Index(K key) { return (Word_t)key; }

    void* m_array = nullptr;
};
#else
template <class, class>
using JudyL = Missing;
#endif

}  // namespace bench
