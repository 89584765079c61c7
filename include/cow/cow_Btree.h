#pragma once
#include <coreutils/atr_String.h>
#include <coreutils/atr_TextStart.h>
#include <cow/cow_BtreeCell.h>
#include <cow/cow_BtreeWalk.h>
#include <cow/cow_COW.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_KeyValue.h>
#include <cow/cow_List.h>
#include <cow/cow_String.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <type_traits>

// Key order of the trees, b compared with a: +1 when b sorts after a. Of two floating-point keys
// neither of which is greater, as with NaN, both count as equal.
template <class T>
requires std::is_arithmetic_v<T>
int BtreeCompare(T a, T b) { return b > a ? 1 : a > b ? -1 : 0; }

// The order of one key, which must outlive this, against many others for the length of a descent:
// as BtreeCompare(other, key). Differs answers the same as two: whether the keys differ, and in
// `isBehind`, 0 or 1, whether the one key sorts behind; for that no branch need be guessed. Texts
// look once at the switch of natural order.
template <class K>
class cow_BtreeOrder {
public:
    static constexpr bool kReadsNodeOnly = false;

    explicit cow_BtreeOrder(const K& key) : m_key(key) {}
    int operator()(const K& other) const { return BtreeCompare(other, m_key); }
    bool Differs(const K& other, unsigned& isBehind) const {
        const int sign = BtreeCompare(other, m_key);
        isBehind = sign > 0;
        return sign != 0;
    }

private:
    const K& m_key;
};
template <class K>
requires std::is_arithmetic_v<K>
class cow_BtreeOrder<K> {
public:
    static constexpr bool kReadsNodeOnly = true;

    explicit cow_BtreeOrder(K key) : m_key(key) {}
    int operator()(K other) const { return BtreeCompare(other, m_key); }
    bool Differs(K other, unsigned& isBehind) const {
        if constexpr (std::is_integral_v<K> && sizeof(K) <= 4) {
            // Computed; the instruction that sets a flag would wait for the step before.
            const std::int64_t ahead = std::int64_t{other} - std::int64_t{m_key};
            isBehind = static_cast<unsigned>(static_cast<std::uint64_t>(ahead) >> 63);
            return m_key != other;
        } else {
            isBehind = m_key > other;
            return m_key > other || m_key < other;
        }
    }

private:
    const K m_key;
};
// For texts; the order is the one that is switched on when this is made.
template <std::derived_from<atr_StringBase> K>
class cow_BtreeOrder<K> {
public:
    static constexpr bool kReadsNodeOnly = false;

    explicit cow_BtreeOrder(const K& key)
        : m_key(key),
          m_isNatural(atr_getNaturalOrder() != 0),
          m_start(m_isNatural ? atr_TextStart() : atr_TextStart(key)) {}
    int operator()(const K& other) const {
        const std::uint64_t mine = m_start.Bytes(), others = m_start.BytesOf(other);
        if (mine != others) [[likely]]
            return mine > others ? 1 : -1;
        return m_start.Decides() ? 0 : CompareWhole(other);
    }
    bool Differs(const K& other, unsigned& isBehind) const {
        const std::uint64_t mine = m_start.Bytes(), others = m_start.BytesOf(other);
        isBehind = mine > others;
        if (mine != others) [[likely]]
            return true;
        const int sign = m_start.Decides() ? 0 : CompareWhole(other);
        isBehind = sign > 0;
        return sign != 0;
    }

private:
    [[gnu::noinline]] int CompareWhole(const K& other) const {
        return m_isNatural ? strnatcmp(m_key.CStr(), other.CStr()) : m_key.Compare(other);
    }

    const K& m_key;
    const bool m_isNatural;
    const atr_TextStart m_start;
};

template <class K, class V>
class cow_BtreeWay;

// A node of cow_Btree with the subtrees below it. Each child sits behind a handle of its own, so
// that copies of a tree share nodes one by one. The entry it derives from comes first in memory:
// key, then value. Operations that write need a node that is nobody else's.
template <class K, class V>
class cow_BtreeNode : public cow_KeyValue<K, V> {
public:
    // What iterators show of a node, and what holds it: a null handle is an empty subtree.
    using Entry = cow_KeyValue<K, V>;
    using Handle = cow_COW<cow_BtreeNode, cow_Direct<cow_BtreeNode>>;

    // Without children.
    cow_BtreeNode(const K& k, const V& v) : Entry{k, v}, m_children{nullptr, nullptr}, m_depth(0) {}
    cow_BtreeNode(const cow_BtreeNode& other);  // shares the children
    cow_BtreeNode& operator=(const cow_BtreeNode&) = delete;
    ~cow_BtreeNode();

    // The sign of b against a.
    static int Compare(const K& a, const K& b) { return BtreeCompare(a, b); }

    // Null where there is no such child.
    const cow_BtreeNode* Left() const { return NodeOf(m_children[kLeft]); }
    const cow_BtreeNode* Right() const { return NodeOf(m_children[kRight]); }

    // 0 without children, else 1 more than the deeper child's.
    int Depth() const { return m_depth; }

    // The key's value in this node or below, null if it is absent.
    const V* ConstFind(const K& k) const {
        const cow_BtreeOrder<K> order(k);
        return m_depth <= kMostGuesses ? FindGuessing(order) : FindByIndex(order);
    }

    // The same for writing: the nodes on the way are made private, also if the key is absent.
    V* Find(const K& k);

    // Below this node; its depth is up to date afterwards, but only the nodes below are balanced.
    // Otherwise as in cow_Btree. Remove does not look at this node's own key.
    bool InsertUnlessMember(const K& k, const V& v);
    bool Remove(const K& k);

    // Takes this node out from above its children. Returns the handle, owned by the caller, that
    // must stand in its place: the in-order successor with this node's children, or the left child
    // where there is no right one, or null. Puts the nodes whose depths are stale on `way`; the
    // class of that is in cow_Btree.impl.h, which a caller includes.
    Handle* RemoveNode(cow_BtreeWay<K, V>& way);

    // `self` is the handle that points at this node. If the depths of the children differ by more
    // than one, turns the deeper child up, makes `self` a handle below it, and returns the handle
    // that must stand in the place of `self`; else null. A child that is missing and one without
    // children count the same. The children's depths must be up to date. If the deeper child cannot
    // be copied, nothing has changed.
    Handle* Balance(Handle* self);
    // Whether the depths of the children differ by more than one.
    bool NeedsBalance() const { return std::abs(RightHeight() - LeftHeight()) > 1; }

    // Computes the own depth anew from the children's.
    void SetMaxDepth();

private:
    friend class cow_BtreeWay<K, V>;
    friend struct kzm_Layout;

    enum Side { kLeft, kRight };

    using Cell = cow_BtreeCell<cow_BtreeNode>;

    static cow_BtreeNode* NodeOf(Handle* child) { return child ? Cell::NodeOf(child) : nullptr; }

    // A processor that guesses every branch works on the next levels before it knows the answer of
    // this one. In a small tree, which stays in its caches, that is faster although every second
    // guess may be wrong; in a deep one each of those is a wait for memory.
    static constexpr int kMostGuesses = 12;
    const V* FindGuessing(const cow_BtreeOrder<K>& order) const {
        const cow_BtreeNode* node = this;
        do {
            const int sign = order(node->key);
            if (sign == 0) return &node->value;
            if (sign > 0)
                node = node->Right();
            else
                node = node->Left();
        } while (node);
        return nullptr;
    }
    const V* FindByIndex(const cow_BtreeOrder<K>& order) const {
        const cow_BtreeNode* node = this;
        do {
            if constexpr (!cow_BtreeOrder<K>::kReadsNodeOnly) {
                Cell::Prefetch(node->m_children[kLeft]);
                Cell::Prefetch(node->m_children[kRight]);
            }
            unsigned isBehind;
            if (!order.Differs(node->key, isBehind)) return &node->value;
            node = NodeOf(node->m_children[isBehind]);
        } while (node);
        return nullptr;
    }

    int Height(Side side) const {
        const cow_BtreeNode* const child = NodeOf(m_children[side]);
        return child ? child->m_depth : 0;
    }
    int LeftHeight() const { return Height(kLeft); }
    int RightHeight() const { return Height(kRight); }
    bool UpdateDepth() {  // true where the node needs no balance
        const int left = LeftHeight(), right = RightHeight();
        m_depth = m_children[kLeft] || m_children[kRight] ? 1 + std::max(left, right) : 0;
        return right - left <= 1 && left - right <= 1;
    }
    // The same where the height at one side, which has a child, is known. Without branches to
    // guess.
    bool UpdateDepth(unsigned side, int height) {
        const Handle* const child = m_children[side ^ 1];
        const int other = child ? child->GetPtr()->m_depth : 0;
        const int lean = height - other;
        m_depth = 1 + other + (lean & ~(lean >> 31));
        return static_cast<unsigned>(lean + 1) <= 2;
    }

    Handle* m_children[2];  // by Side; owned; null or with a node
    std::int32_t m_depth;
};

// Map from ordered keys to values of V that is copied in constant time: a copy shares every node,
// and a write then duplicates only the nodes on the way to its key. Entries are visited in
// ascending key order. A binary tree balanced by single rotations, a little less strictly than
// usual. Text keys are ordered bytewise, or naturally ("x9" before "x10") while atr_setNaturalOrder
// is on; the switch must not be flipped while the tree has text keys. A NaN equals every key.
//
// Find, look-up and change take O(height), the height being about 1.2 log2 of the size. Where order
// does not matter, cow_Map does less work a change.
//
// References to values and iterators of begin() end with the next change of this very tree, but
// not with changes of its copies. A reference for writing must not be kept while the tree is
// copied: the copy would see what is written through it. When memory runs out, std::bad_alloc
// leaves all entries as they were before or as they should be after the operation; only a rotation
// may be missing. One thread at a time for a tree and all its copies.
template <class K, class V>
class cow_Btree {
public:
    // For code that walks the nodes by itself, from Root on.
    using Node = cow_BtreeNode<K, V>;
    using Handle = typename Node::Handle;
    using key_type = K;
    using mapped_type = V;
    using value_type = cow_KeyValue<K, V>;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = cow_BtreeWalk<Node>;
    using iterator = const_iterator;

    // Takes no memory but a counter.
    cow_Btree() : m_root(static_cast<Node*>(nullptr)) {}
    cow_Btree(const cow_Btree& other) = default;

    // As InsertUnlessMember for one after the other: of equal keys the first value stays. Elements
    // are cow_KeyValue, std::pair or alike.
    cow_Btree(std::initializer_list<value_type> entries)
        : cow_Btree(entries.begin(), entries.end()) {}
    template <std::input_iterator It>
    cow_Btree(It first, It last) : cow_Btree() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            InsertUnlessMember(key, value);
        }
    }
    cow_Btree& operator=(const cow_Btree& other) = default;  // also from a value inside this tree
    ~cow_Btree() = default;

    // The sign of b against a: +1 when b sorts after a.
    static int Compare(const K& a, const K& b) { return Node::Compare(a, b); }

    // What absent keys yield, V(): one object per thread and type, valid until the library stops.
    // A copy of it shares with it and so stays in this thread, though it comes from no tree: for
    // another thread make a V() there.
    static const V& GetNullValue();

    // IsEmpty is O(1), IsMember a look-up. Neither copies anything. A tree does not know its size.
    bool IsEmpty() const { return m_root.IsNull(); }
    bool IsMember(const K& key) const { return FindValue(key) != nullptr; }

    // The key's value, null if it is absent: tells an absent key from one whose value is V().
    const V* FindValue(const K& key) const {
        return m_root.HasValue() ? m_root.GetRef().ConstFind(key) : nullptr;
    }

    // The key's value, or GetNullValue(). Never copies anything.
    const V& ConstFind(const K& key) const {
        const V* const value = FindValue(key);
        return value ? *value : GetNullValue();
    }

    // For writing: nodes on the way that are shared are copied first, also if the key is absent.
    // An absent key yields a V() that may be written but belongs to no tree.
    V& Find(const K& key);

    // True if the key was absent and is now in the tree; a present value stays as it is. Key and
    // value may lie in this tree.
    bool InsertUnlessMember(const K& key, const V& value);

    // True if the key was present. The key may lie in this tree.
    bool Remove(const K& key);

    // Ascending; never detach.
    const_iterator begin() const {
        const_iterator walk(Root());
        walk.First();
        return walk;
    }
    const_iterator end() const { return const_iterator(Root()); }

    // Equal keys with equal values; the values' own ==, also between trees that share nodes.
    friend bool operator==(const cow_Btree& a,
                           const cow_Btree& b) requires std::equality_comparable<V> {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](const value_type& x, const value_type& y) {
                              return Compare(x.key, y.key) == 0 && x.value == y.value;
                          });
    }

    const Node* Root() const { return m_root.GetPtr(); }  // null for an empty tree

private:
    friend struct kzm_Layout;

    void BalanceRoot();

    Handle m_root;  // null referent: empty
};

// In two groups, which are compiled side by side. Clients with others include cow_Btree.impl.h.
#define COW_BTREES_1(X)                     \
    X(int, int)                             \
    X(int, double)                          \
    X(int, cow_List<int>)                   \
    X(int, cow_List<cow_String>)            \
    X(float, int)                           \
    X(std::int64_t, cow_List<int>)          \
    X(std::int64_t, cow_List<std::int64_t>) \
    X(atr_String, cow_List<atr_String>)
#define COW_BTREES_2(X)                                \
    X(cow_String, int)                                 \
    X(cow_String, unsigned int)                        \
    X(cow_String, float)                               \
    X(cow_String, cow_String)                          \
    X(cow_String, cow_Btree<int, int>)                 \
    X(cow_String, cow_Btree<cow_String, unsigned int>) \
    X(cow_String, cow_FixedArray<int>)                 \
    X(cow_String, cow_List<int>)                       \
    X(cow_String, cow_List<cow_String>)
#define COW_DECLARE_BTREE(...)                                                               \
    KZM_DECLARE(cow_CountedHld<cow_BtreeNode<__VA_ARGS__>>)                                  \
    KZM_DECLARE(cow_COW<cow_BtreeNode<__VA_ARGS__>, cow_Direct<cow_BtreeNode<__VA_ARGS__>>>) \
    KZM_DECLARE(cow_BtreeNode<__VA_ARGS__>)                                                  \
    KZM_DECLARE(cow_Btree<__VA_ARGS__>)
COW_BTREES_1(COW_DECLARE_BTREE)
COW_BTREES_2(COW_DECLARE_BTREE)
