#pragma once
#include <omi/omi_IntTable.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

template <class V, class A>
class omi_IntMultiMapIterator;
template <class T>
class cow_List;

// A value of a key, and the link of the value that was inserted before it, null at the end.
template <class V>
struct omi_IntMultiMapLink {
    // Values may be changed in place; links belong to the map.
    V value;
    omi_IntMultiMapLink* next;
};

// Map from signed 32-bit keys to any number of values of V each, such as the elements at each node.
// The values of a key form a chain, newest first, and may repeat. Finding a key costs what it costs
// in omi_IntTable, finding a value the length of the chain. Values come from chunks of 256 links,
// without an allocation for each; a removed value keeps its link until the next compaction, which
// runs by itself, see Remove, or by CompressValues.
//
// As a table it maps each key to its chain; changing it through the base class breaks it. The
// policy A supplies the table, the product's heap the chunks. Links, and references to values, stay
// valid until a compaction or Clear; those of a removed value can be read until then.
//
// When memory runs out, std::bad_alloc leaves the pairs as they were, except where a removal says
// otherwise. Arguments may be values of the map itself. One thread at a time, also for const
// queries.
template <class V, class A>
class omi_IntMultiMap : public omi_IntTable<void*, A> {
    using Base = omi_IntTable<void*, A>;

public:
    // What GetFirst refers to.
    using Link = omi_IntMultiMapLink<V>;
    using const_iterator = omi_StdIterator<omi_IntMultiMapIterator<V, A>>;
    using value_type = std::pair<int, V>;

    // Empty; the first value of all brings the first chunk.
    omi_IntMultiMap();

    template <std::input_iterator It>  // over pairs; inserts them in order
    omi_IntMultiMap(It first, It last) : omi_IntMultiMap() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }
    omi_IntMultiMap& operator=(const omi_IntMultiMap&) = delete;
    virtual ~omi_IntMultiMap();

    // A new deep copy with the same chains, owned by the caller, who ends it with delete.
    omi_IntMultiMap* Copy() const { return new omi_IntMultiMap(*this); }

    // O(1).
    bool IsEmpty() const { return m_entryCount == 0; }
    int Size() const { return static_cast<int>(m_entryCount); }  // pairs

    unsigned int Footprint() const;  // bytes, with all chunks

    // Whether the key has values, or that one: a walk along its chain.
    bool IsMember(int key) const { return Base::IsMember(key); }
    bool IsMember(int key, const V& value) const { return HasValue(GetFirst(key), value); }

    // The newest value of a key that must be a member: else the process ends (abort).
    V& Get(int key) { return Newest(key)->value; }
    const V& ConstGet(int key) const { return Newest(key)->value; }

    // Copies the newest value out; false, and `value` as it was, if the key is not a member.
    bool ConstGetValue(int key, V& value) const {
        const Link* const link = GetFirst(key);
        if (link) value = link->value;
        return link != nullptr;
    }

    // `values` becomes the values of the key, newest first. False, and it is empty, if the key is
    // not a member.
    bool ConstGetValues(int key, cow_List<V>& values) const;

    // The chain of the key, null if it is not a member. Values may be changed through it.
    Link* GetFirst(int key) { return Chain(key); }
    const Link* GetFirst(int key) const { return Chain(key); }

    // Pairs of key and value: keys ascending, the values of a key newest first.
    const_iterator begin() const;
    const_iterator end() const;

    // Equal chains for equal keys.
    friend bool operator==(const omi_IntMultiMap& a, const omi_IntMultiMap& b) {
        return a.m_entryCount == b.m_entryCount && std::equal(a.begin(), a.end(), b.begin());
    }

    // Puts the value in front of the key's chain; true.
    bool Insert(int key, const V& value) {
        InsertAt(FindCell(key), key, value);
        return true;
    }

    // The same, unless the key has the value already: then false. Walks the chain once.
    bool InsertUnique(int key, const V& value) {
        void** const cell = FindCell(key);
        if (cell && HasValue(static_cast<Link*>(*cell), value)) return false;
        InsertAt(cell, key, value);
        return true;
    }

    // Removes every pair of this key and value. True if the key was a member, also if it had no
    // such value. Removing the last pair of all is a Clear. When more than 256 links have been
    // handed out and less than about a third of them are in use, all chains are compacted; if
    // memory runs out then, the exception leaves with the pairs removed.
    bool Remove(int key, const V& value);

    // Removes the key with its values, without compacting; true if it was a member.
    bool Remove(int key);

    void Clear();  // frees every chunk

    // Rebuilds all chains side by side, in new chunks, and frees the old ones. The values of each
    // key ascend by `compare` (below 0: the first is less), those it calls equal keep their order;
    // null keeps the order of all.
    void SortValues(int (*compare)(const V&, const V&));
    void CompressValues() { SortValues(nullptr); }

protected:
    // Copies all chains, compacted.
    omi_IntMultiMap(const omi_IntMultiMap& other);

private:
    friend struct kzm_Layout;
    friend struct cow_Direct<omi_IntMultiMap>;  // copy on write copies by the copy constructor

    friend class omi_IntMultiMapIterator<V, A>;
    using Base::FindCell;  // would show the chains' addresses

    static constexpr unsigned int kChunkLinks = 256;

    struct Chunk {
        Link* links;  // room for kChunkLinks
        Chunk* next;  // older
    };

    // Chunks that are being filled; what is left in them at the end is destroyed.
    struct Chunks {
        Chunk* newest = nullptr;
        unsigned int used = kChunkLinks;  // links of the newest chunk

        Chunks() = default;
        Chunks(const Chunks&) = delete;
        Chunks& operator=(const Chunks&) = delete;
        ~Chunks();
        Link* Add(const V& value);
    };

    static bool HasValue(const Link* link, const V& value) {
        for (; link; link = link->next)
            if (link->value == value) return true;
        return false;
    }
    [[noreturn]] static void RaiseAbsentKey();  // abort()
    static void OpenChunk(Chunk*& newest);
    static void FreeChunks(Chunk* newest, unsigned int used);

    Link* Chain(int key) const {
        void** const cell = FindCell(key);
        return cell ? static_cast<Link*>(*cell) : nullptr;
    }
    Link* Newest(int key) const {
        Link* const link = Chain(key);
        if (!link) RaiseAbsentKey();
        return link;
    }

    // `cell` is the key's, null if it is not a member. Behind the first link of a chunk there is
    // room until it is full.
    void InsertAt(void** cell, int key, const V& value) {
        if (!cell || m_linksUsed - 1 >= kChunkLinks - 1) return InsertUnusually(cell, key, value);
        Link* const link = m_currentLink + 1;
        ::new (static_cast<void*>(link)) Link{value, static_cast<Link*>(*cell)};
        *cell = link;
        Count(link);
    }
    void Count(Link* link) {
        m_currentLink = link;
        ++m_linksUsed;
        ++m_linkCount;
        ++m_entryCount;
    }

    void InsertUnusually(void** cell, int key, const V& value);
    void InsertKey(int key, Link* link);
    void RemoveKey(int key, void** cell);
    void CopyChains(int (*compare)(const V&, const V&));

    unsigned int m_entryCount;  // pairs
    unsigned int m_linkCount;   // links handed out since the last Clear or compaction
    Chunk* m_chunks;            // owned, newest first; all but the newest are full
    unsigned int m_linksUsed;  // of the newest chunk; full at first, so that an insertion opens one
    Link* m_currentLink;       // handed out last
};

// Visits the pairs of a multimap: keys ascending, the values of a key newest first.
//
//     omi_IntMultiMapIterator<int, KZMBasOmiDefaultAllocator> it(map);
//     for (it.First(); !it.IsDone(); it.Next()) Use(it.CurrentKey(), it.CurrentValue());
//
// It stands nowhere, IsDone, until First. Changing the map ends the walk, changing values does not.
template <class V, class A>
class omi_IntMultiMapIterator {
public:
    using value_type = std::pair<int, V>;

    omi_IntMultiMapIterator() = default;  // over no map: always IsDone
    // Over that map, done until First.
    explicit omi_IntMultiMapIterator(const omi_IntMultiMap<V, A>& map) : m_map(&map) {}

    // First moves to the first pair there is, Next to the one after; past the last one the walk is
    // done, and stays so.
    void First() {
        if (m_map) m_keys = m_map->Walk();
        EnterChain();
    }
    void Next() {
        if (!m_link) return;
        m_link = m_link->next;
        if (m_link) return;
        m_keys.Next();
        EnterChain();
    }
    // Whether it stands on no pair.
    bool IsDone() const { return !m_link; }

    // These need a current pair.
    int CurrentKey() const { return m_keys.CurrentKey(); }
    const V& CurrentValue() const { return m_link->value; }
    omi_PairItem<int, V> CurrentItem() const { return {CurrentKey(), CurrentValue()}; }

    // Whether both stand on the same pair, or are done.
    bool operator==(const omi_IntMultiMapIterator& other) const { return m_link == other.m_link; }

private:
    void EnterChain() {
        m_link =
            m_keys.IsDone() ? nullptr : static_cast<omi_IntMultiMapLink<V>*>(m_keys.CurrentValue());
    }

    const omi_IntMultiMap<V, A>* m_map = nullptr;
    omi_TableCursor<int, void*, A> m_keys;
    const omi_IntMultiMapLink<V>* m_link = nullptr;
};

template <class V, class A>
typename omi_IntMultiMap<V, A>::const_iterator omi_IntMultiMap<V, A>::begin() const {
    omi_IntMultiMapIterator<V, A> it(*this);
    it.First();
    return const_iterator(it);
}
template <class V, class A>
typename omi_IntMultiMap<V, A>::const_iterator omi_IntMultiMap<V, A>::end() const {
    return const_iterator();
}

#define OMI_INT_MULTI_MAPS(X) X(int, KZMBasOmiDefaultAllocator)

#define OMI_DECLARE_INT_MULTI_MAP(V, A) \
    KZM_DECLARE(omi_IntMultiMap<V, A>)  \
    KZM_DECLARE(omi_IntMultiMapIterator<V, A>)
OMI_INT_MULTI_MAPS(OMI_DECLARE_INT_MULTI_MAP)
