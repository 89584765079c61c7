#pragma once
#include <cow/cow_COW.h>
#include <omi/omi_IntMultiMap.h>

#include <iterator>

// The map for which the library holds handles.
#define COW_INT_MULTI_MAP_REFERENTS(X) X(omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>)

#define COW_DECLARE_INT_MULTI_MAP(...)       \
    KZM_DECLARE(cow_CountedHld<__VA_ARGS__>) \
    KZM_DECLARE(cow_COW<__VA_ARGS__, cow_Direct<__VA_ARGS__>>)
COW_INT_MULTI_MAP_REFERENTS(COW_DECLARE_INT_MULTI_MAP)

// Map from int keys to any number of int values that is passed by value: an omi_IntMultiMap whose
// copies share it until one of them is written. Costs, failures and references are those of
// cow_IntTableInt; the copy that a first write makes also compacts the chains of values.
class KZM_API cow_IntMultiMapInt {
public:
    // What copies share.
    using Map = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
    using const_iterator = Map::const_iterator;
    using value_type = Map::value_type;

    // Empty; makes the map that copies will share.
    cow_IntMultiMapInt();

    template <std::input_iterator It>  // over pairs; inserts them in order
    cow_IntMultiMapInt(It first, It last) : cow_IntMultiMapInt() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }

    // Ask without copying. A pair is looked for along the chain of its key.
    bool IsEmpty() const { return Read().IsEmpty(); }
    int Size() const { return Read().Size(); }  // pairs
    bool IsMember(const int& key) const { return Read().IsMember(key); }
    bool IsMember(const int& key, const int& value) const { return Read().IsMember(key, value); }

    // The newest value of a key that must be a member: else the process ends (abort).
    const int& ConstGet(const int& key) const { return Read().ConstGet(key); }

    // `values` becomes the values of the key, newest first. False, and it is empty, if the key is
    // not a member.
    bool ConstGetValues(const int& key, cow_List<int>& values) const {
        return Read().ConstGetValues(key, values);
    }

    // Pairs of key and value: keys ascending, the values of a key newest first. The iterators end
    // with the next write.
    const_iterator begin() const { return Read().begin(); }
    const_iterator end() const { return Read().end(); }

    bool operator==(const cow_IntMultiMapInt& other) const;  // equal chains for equal keys

    // For writing: as ConstGet, on a private map.
    int& Get(const int& key) {
        const int k = key;
        return m_map.Get().Get(k);
    }

    // Puts the value before the others of the key; true.
    bool Insert(const int& key, const int& value) {
        const int k = key;
        const int v = value;
        return m_map.Get().Insert(k, v);
    }
    // The same, unless the key has the value already: then false.
    bool InsertUnique(const int& key, const int& value) {
        const int k = key;
        const int v = value;
        return m_map.Get().InsertUnique(k, v);
    }
    // Both are true if the key was a member; the second removes every pair of key and value.
    bool Remove(const int& key) {
        const int k = key;
        return m_map.Get().Remove(k);
    }
    bool Remove(const int& key, const int& value) {
        const int k = key;
        const int v = value;
        return m_map.Get().Remove(k, v);
    }
    // Removes every pair.
    void Clear() { m_map.Get().Clear(); }

private:
    friend struct kzm_Layout;

    const Map& Read() const { return m_map.ConstGet(); }

    cow_COW<Map, cow_Direct<Map>> m_map;
};
