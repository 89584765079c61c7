#pragma once
#include <kzm_export.h>

#include <cstddef>
#include <functional>
#include <new>
#include <utility>

// The links of a height-balanced tree, whatever its keys: balancing and walking exist once.
class KZM_API KZMBasTreeLinks {
protected:
    struct Link {
        Link* m_parent = nullptr;
        Link* m_child[2] = {nullptr, nullptr};  // lesser, greater
        int m_height = 1;
    };

    KZMBasTreeLinks() = default;
    KZMBasTreeLinks(const KZMBasTreeLinks&) = delete;
    KZMBasTreeLinks& operator=(const KZMBasTreeLinks&) = delete;
    ~KZMBasTreeLinks() = default;

    Link* Outermost(int side) const;                   // null if the tree is empty
    static Link* Neighbour(const Link* at, int side);  // in key order, null at the end
    void Attach(Link* fresh, Link* parent, int side);  // parent null: becomes the root
    void Detach(Link* at);

    static void* TakeNode(std::size_t size);
    static void GiveBackNode(void* node) noexcept;

    Link* m_root = nullptr;
    int m_size = 0;

private:
    void Rebalance(Link* from);
    Link* Rotate(Link* top, int side);
    void Replace(const Link* old, Link* by);
};

// Map in ascending key order; finding, adding and removing cost O(log n). Values keep their address
// until they are removed. On exhaustion std::bad_alloc leaves and the tree is as it was. For maps
// that are passed by value take cow_Btree.
template <class K, class V, class Less = std::less<K>>
class KZMBasTree : private KZMBasTreeLinks {
    struct Node : Link {
        Node(const K& key, const V& value) : m_key(key), m_value(value) {}
        const K m_key;
        V m_value;
    };

public:
    // A place in the tree, ended by the removal of its entry. Walk with
    //     for (auto it = tree.First(); it; it = it.Next()) Use(it.Key(), it.Value());
    template <class Seen>
    class Place {
    public:
        // Nowhere.
        Place() = default;
        // Whether there is an entry. The others need one; beyond the ends Next and Previous give
        // nowhere.
        explicit operator bool() const { return m_node != nullptr; }
        const K& Key() const { return m_node->m_key; }
        Seen& Value() const { return m_node->m_value; }
        Place Next() const { return Place(Neighbour(m_node, 1)); }
        Place Previous() const { return Place(Neighbour(m_node, 0)); }

    private:
        friend class KZMBasTree;
        explicit Place(Link* link) : m_node(static_cast<Node*>(link)) {}
        Node* m_node = nullptr;
    };
    // Places for writing and for reading.
    using Iterator = Place<V>;
    using ConstIterator = Place<const V>;

    // Empty.
    KZMBasTree() = default;
    // Copies every entry. O(n log n).
    KZMBasTree(const KZMBasTree& other) : KZMBasTree() {
        for (ConstIterator it = other.First(); it; it = it.Next()) Add(it.Key(), it.Value());
    }
    KZMBasTree& operator=(KZMBasTree other) noexcept {
        std::swap(m_root, other.m_root);
        std::swap(m_size, other.m_size);
        return *this;
    }
    ~KZMBasTree() { Clear(); }

    // The entries; O(1).
    int Size() const { return m_size; }
    bool IsEmpty() const { return m_size == 0; }
    // Places at the ends and by key; nowhere if there is no such entry.
    Iterator First() { return Iterator(Outermost(0)); }
    Iterator Last() { return Iterator(Outermost(1)); }
    Iterator Find(const K& key) { return Iterator(Locate(key).m_found); }
    Iterator LowerBound(const K& key) { return Iterator(NotLess(key)); }  // the first such key

    // The same for reading.
    ConstIterator First() const { return ConstIterator(Outermost(0)); }
    ConstIterator Last() const { return ConstIterator(Outermost(1)); }
    ConstIterator Find(const K& key) const { return ConstIterator(Locate(key).m_found); }
    ConstIterator LowerBound(const K& key) const { return ConstIterator(NotLess(key)); }

    // False if the key is there already; its value then stays.
    bool Add(const K& key, const V& value) {
        const Spot place = Locate(key);
        if (place.m_found) return false;
        AttachNew(place, key, value);
        return true;
    }
    // Gives the key this value, in place of any it had.
    void Set(const K& key, const V& value) {
        const Spot place = Locate(key);
        if (place.m_found)
            place.m_found->m_value = value;
        else
            AttachNew(place, key, value);
    }

    V& operator[](const K& key) {  // adds V() if the key is absent
        const Spot place = Locate(key);
        return (place.m_found ? place.m_found : AttachNew(place, key, V()))->m_value;
    }

    // By key, true if it was there, and by a place that has an entry.
    bool Remove(const K& key) {
        const Iterator it = Find(key);
        if (it) Remove(it);
        return static_cast<bool>(it);
    }
    void Remove(Iterator it) {
        Detach(it.m_node);
        Delete(it.m_node);
    }
    // Removes every entry. O(n), without recursion.
    void Clear();

private:
    struct Spot {
        Node* m_found;
        Link* m_parent;
        int m_side;
    };

    Spot Locate(const K& key) const {
        Spot place{nullptr, nullptr, 0};
        for (Link* at = m_root; at; at = at->m_child[place.m_side]) {
            Node* const node = static_cast<Node*>(at);
            place.m_parent = at;
            if (Less()(key, node->m_key))
                place.m_side = 0;
            else if (Less()(node->m_key, key))
                place.m_side = 1;
            else
                return {node, at, 0};
        }
        return place;
    }
    Link* NotLess(const K& key) const;
    Node* AttachNew(const Spot& place, const K& key, const V& value) {
        void* const memory = TakeNode(sizeof(Node));
        Node* node;
        try {
            node = ::new (memory) Node(key, value);
        } catch (...) {
            GiveBackNode(memory);
            throw;
        }
        Attach(node, place.m_parent, place.m_side);
        return node;
    }
    static void Delete(Node* node) {
        node->~Node();
        GiveBackNode(node);
    }
};

template <class K, class V, class Less>
KZMBasTreeLinks::Link* KZMBasTree<K, V, Less>::NotLess(const K& key) const {
    Link* best = nullptr;
    for (Link* at = m_root; at;) {
        const bool less = Less()(static_cast<Node*>(at)->m_key, key);
        if (!less) best = at;
        at = at->m_child[less ? 1 : 0];
    }
    return best;
}

template <class K, class V, class Less>
void KZMBasTree<K, V, Less>::Clear() {
    Link* at = m_root;
    m_root = nullptr;
    m_size = 0;
    while (at) {  // always the leftmost leaf, so that no depth of nodes needs stack
        Link*& child = at->m_child[at->m_child[0] ? 0 : 1];
        if (child) {
            at = std::exchange(child, nullptr);
        } else {
            Link* const parent = at->m_parent;
            Delete(static_cast<Node*>(at));
            at = parent;
        }
    }
}
