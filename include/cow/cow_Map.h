#pragma once
#include <coreutils/atr_String.h>
#include <cow/cow_COW.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_KeyValue.h>
#include <cow/cow_List.h>
#include <cow/cow_MapWalk.h>
#include <cow/cow_String.h>
#include <omi/omi_BlkBitVect.h>

#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>

// Bit i of an integer key; false from bit 32 on.
inline bool cow_MapBit(unsigned int key, int i) { return i < 32 && (key >> i & 1) != 0; }
inline bool cow_MapBit(int key, int i) { return cow_MapBit(static_cast<unsigned int>(key), i); }

// The same one after the other from bit 0 on, for the length of a descent.
template <class K>
class cow_MapBits {
public:
    explicit cow_MapBits(const K& key) : m_key(key), m_next(0) {}
    bool Next() { return cow_MapBit(m_key, m_next++); }

private:
    const K& m_key;
    int m_next;
};
template <class K>
requires(std::same_as<K, int> || std::same_as<K, unsigned int>) class cow_MapBits<K> {
public:
    explicit cow_MapBits(K key) : m_bits(static_cast<unsigned int>(key)) {}
    bool Next() {
        const bool bit = m_bits & 1;
        m_bits >>= 1;
        return bit;
    }

private:
    unsigned int m_bits;
};

// A node of cow_Map. Every node sits behind a handle of its own, so that copies of a map share
// nodes one by one. The entry it derives from comes first in memory: key, then value.
template <class K, class V>
class cow_MapNode : public cow_KeyValue<K, V> {
public:
    // What iterators show of a node, and what holds it: a null handle is an empty subtree.
    using Entry = cow_KeyValue<K, V>;
    using Handle = cow_COW<cow_MapNode, cow_Direct<cow_MapNode>>;

    // Without children.
    cow_MapNode(const K& k, const V& v) : Entry{k, v}, m_children{kNone, kNone} {}
    cow_MapNode(const cow_MapNode& other) = default;  // shares the children
    cow_MapNode& operator=(const cow_MapNode&) = delete;
    ~cow_MapNode();

    // The subtrees of keys whose bit at this depth is 0 or 1. Whoever writes through them keeps
    // keys where cow_MapBit finds them.
    const Handle& Child0() const { return m_children[0]; }
    const Handle& Child1() const { return m_children[1]; }
    Handle& Child(bool bit) { return m_children[bit]; }
    const Handle& Child(bool bit) const { return m_children[bit]; }

private:
    friend struct kzm_Layout;
    static constexpr cow_MapNode* kNone = nullptr;

    // Child 0, child 1; null referent: no such child. An array, since half of the guesses that a
    // branch on a bit makes are wrong.
    Handle m_children[2];
};

// Map from integer or text keys to values of V that is copied in constant time: a copy shares every
// node, and a write then duplicates only the nodes on the way to its key. A binary tree in which
// the bits of the searched key, from bit 0 at the root on, tell the way (cow_MapBit); keys are
// only tested for equality. Entries are in no useful order; for key order take
// cow_ConstMapSortedIt, or cow_Btree if most walks want it.
//
// A look-up visits at most 33 nodes for integer keys. Text keys branch on few of their bits, so
// keys that agree in the low bits of their bytes form a chain: n such keys cost O(n) each. Text
// keys with zero bytes inside are not supported.
//
// References to values and iterators of begin() end with the next change of this very map, but not
// with changes of its copies. A reference for writing must not be kept while the map is copied: the
// copy would see what is written through it. When memory runs out, std::bad_alloc leaves all
// entries as they were. One thread at a time for a map and all its copies.
template <class K, class V>
class cow_Map {
public:
    // For code that walks the nodes by itself, from Root on.
    using Node = cow_MapNode<K, V>;
    using Handle = typename Node::Handle;
    using key_type = K;
    using mapped_type = V;
    using value_type = cow_KeyValue<K, V>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = cow_MapWalk<Node>;
    using iterator = const_iterator;

    // Takes no memory but a counter.
    cow_Map() : m_root(static_cast<Node*>(nullptr)), m_size(0) {}
    cow_Map(const cow_Map& other) = default;

    // As Insert for one after the other: of equal keys the last value stays. Elements are
    // cow_KeyValue, std::pair or alike.
    cow_Map(std::initializer_list<value_type> entries) : cow_Map(entries.begin(), entries.end()) {}
    template <std::input_iterator It>
    cow_Map(It first, It last) : cow_Map() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }

    // Safe also if `other` is a value inside this map.
    cow_Map& operator=(const cow_Map& other) noexcept {
        const std::int32_t size = other.m_size;
        m_root = other.m_root;
        m_size = size;
        return *this;
    }
    ~cow_Map() = default;

    // Size and IsEmpty are O(1), IsMember a look-up. None of them copies anything.
    int Size() const { return m_size; }
    bool IsEmpty() const { return m_size == 0; }
    bool IsMember(const K& key) const { return FindNode(key) != nullptr; }

    // The key's value, null if it is no member: a look-up and a test in one.
    const V* FindValue(const K& key) const {
        const Node* const node = FindNode(key);
        return node ? &node->value : nullptr;
    }

    // The value of a key that must be a member; otherwise the process ends.
    const V& ConstGet(const K& key) const {
        const Node* const node = FindNode(key);
        if (!node) std::abort();
        return node->value;
    }

    // For writing: the nodes from the root to the key's become this map's own. The key must be a
    // member; otherwise the process ends.
    V& Get(const K& key) {
        Handle& place = Descend(key);
        if (place.IsNull()) std::abort();
        return place.GetPtr()->value;
    }

    // Gives the key this value, in place of any it had. Always true: IsMember tells beforehand
    // whether the key is new. Key and value may lie in this map.
    bool Insert(const K& key, const V& value);

    // False, and nothing is copied, if the key is no member. The key may lie in this map.
    bool Remove(const K& key);

    // Never detach. Every node comes before its children, child 0 before child 1.
    const_iterator begin() const { return const_iterator(Root()); }
    const_iterator end() const { return const_iterator(); }

    // Equal keys with equal values; the values' own ==, also between maps that share nodes.
    friend bool operator==(const cow_Map& a,
                           const cow_Map& b) requires std::equality_comparable<V> {
        if (a.m_size != b.m_size) return false;
        for (const auto& [key, value] : a) {
            const Node* const node = b.FindNode(key);
            if (!node || !(node->value == value)) return false;
        }
        return true;
    }

    // The topmost node and what holds it, for code that walks the nodes by itself.
    const Handle& RootHandle() const { return m_root; }
    const Node* Root() const { return m_root.GetPtr(); }  // null for an empty map

private:
    friend struct kzm_Layout;

    const Node* FindNode(const K& key) const {
        const Node* node = m_root.GetPtr();
        for (cow_MapBits<K> bits(key); node && !(node->key == key);)
            node = node->Child(bits.Next()).GetPtr();
        return node;
    }

    // The handle of the key's node, or the null one where it would be; nodes on the way, and the
    // key's own, are made private.
    Handle& Descend(const K& key) {
        Handle* place = &m_root;
        for (cow_MapBits<K> bits(key); place->HasValue();) {
            Node& node = place->Get();
            if (node.key == key) break;
            place = &node.Child(bits.Next());
        }
        return *place;
    }

    static Node* NewNode(const K& key, const V& value);
    static Handle* Successor(Node& node);
    static void PullUp(Handle& top);
    static void MoveEntriesUp(Handle& top);
    static void PullUpCopies(Handle& top);

    Handle m_root;  // null referent: empty
    std::int32_t m_size;
};

// In two groups, which are compiled side by side. Clients with others include cow_Map.impl.h.
#define COW_MAPS_1(X)              \
    X(int, int)                    \
    X(int, unsigned int)           \
    X(int, float)                  \
    X(int, double)                 \
    X(int, cow_FixedArray<int>)    \
    X(int, cow_FixedArray<double>) \
    X(int, cow_List<int>)          \
    X(int, cow_List<float>)        \
    X(int, cow_List<cow_String>)   \
    X(int, cow_String)             \
    X(int, omi_BlkBitVect)         \
    X(unsigned int, int)           \
    X(unsigned int, unsigned int)  \
    X(unsigned int, atr_String)    \
    X(unsigned int, cow_String)
#define COW_MAPS_2(X)                     \
    X(atr_String, cow_List<atr_String>)   \
    X(cow_String, int)                    \
    X(cow_String, unsigned int)           \
    X(cow_String, float)                  \
    X(cow_String, double)                 \
    X(cow_String, cow_String)             \
    X(cow_String, cow_FixedArray<double>) \
    X(cow_String, cow_List<int>)          \
    X(cow_String, cow_List<float>)        \
    X(cow_String, cow_List<double>)       \
    X(cow_String, cow_List<cow_String>)   \
    X(cow_String, atr_String)
#define COW_DECLARE_MAP(...)                                                             \
    KZM_DECLARE(cow_CountedHld<cow_MapNode<__VA_ARGS__>>)                                \
    KZM_DECLARE(cow_COW<cow_MapNode<__VA_ARGS__>, cow_Direct<cow_MapNode<__VA_ARGS__>>>) \
    KZM_DECLARE(cow_MapNode<__VA_ARGS__>)                                                \
    KZM_DECLARE(cow_Map<__VA_ARGS__>)
COW_MAPS_1(COW_DECLARE_MAP)
COW_MAPS_2(COW_DECLARE_MAP)
