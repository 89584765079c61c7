// Floors of the tree and the map: the steps that cannot be left out, by hand over plain structs.
// Filled like the containers; after Ready they are only asked.
#pragma once

#include <alloc/mem_alloc.h>
#include <cow/cow_Btree.h>
#include <cow/cow_Map.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <vector>

namespace bench {

// The look-up in a tree of the same shape, all handles of which lie beside their nodes: from a node
// to a handle, and from there to the next node.
template <class K>
class BareTree {
public:
    using Key = K;
    using Value = int;
    static constexpr const char* kWho = "floor::tree";

    void Insert(const K& key, int value) {
        m_shape.InsertUnlessMember(key, value);
        ++m_count;
    }
    void Ready() {
        m_cells.resize(m_count);
        m_top = Copied(m_shape.Root());
        m_shape = {};
    }
    int At(const K& key) const {
        const cow_BtreeOrder<K> order(key);
        const Node* node = &m_top->node;
        if (m_count <= kMostGuesses) {
            for (int sign; (sign = order(node->key)) != 0;)
                if (sign > 0)
                    node = node->children[1]->node;
                else
                    node = node->children[0]->node;
            return node->value;
        }
        for (unsigned isBehind; order.Differs(node->key, isBehind);) {
            if constexpr (!cow_BtreeOrder<K>::kReadsNodeOnly) {
                __builtin_prefetch(node->children[0]);
                __builtin_prefetch(node->children[1]);
            }
            node = node->children[isBehind]->node;
        }
        return node->value;
    }
    template <class F>
    void Each(F f) const {
        const Node* way[32];  // still to visit, with what is behind them
        const Node** top = way;
        for (const Node* node = &m_top->node;;) {
            for (; node; node = NodeOf(node->children[0])) *top++ = node;
            if (top == way) return;
            node = *--top;
            f(node->key, node->value);
            node = NodeOf(node->children[1]);
        }
    }

private:
    static constexpr std::size_t kMostGuesses = 4096;  // branches that the processor can learn

    struct Node;
    struct Handle {
        int* count;
        Node* node;
    };
    struct Node {
        K key;
        int value;
        Handle* children[2];
        int depth;
    };
    static const Node* NodeOf(const Handle* handle) { return handle ? handle->node : nullptr; }

    struct alignas(64) Cell {
        Handle handle;
        Node node;
    };
    static_assert(sizeof(Cell) == 64);

    // Where the nodes lie follows the order in which they came, which their values tell.
    Cell* Copied(const cow_BtreeNode<K, int>* node) {
        if (!node) return nullptr;
        Cell& cell = m_cells[static_cast<std::size_t>(node->value)];
        Cell* const children[] = {Copied(node->Left()), Copied(node->Right())};
        cell.handle = {nullptr, &cell.node};
        cell.node.key = node->key;
        cell.node.value = node->value;
        for (int i = 0; i < 2; ++i)
            cell.node.children[i] = children[i] ? &children[i]->handle : nullptr;
        return &cell;
    }

    cow_Btree<K, int> m_shape;
    std::size_t m_count = 0;
    std::vector<Cell> m_cells;
    const Cell* m_top = nullptr;
};

// The look-up in a map of the same shape, in nodes of 40 bytes side by side.
class BareMap {
public:
    using Key = int;
    using Value = int;
    static constexpr const char* kWho = "floor::map";

    void Insert(int key, int value) { m_shape.Insert(key, value); }
    void Ready() {
        m_nodes.resize(static_cast<std::size_t>(m_shape.Size()));
        m_top = Copied(m_shape.Root());
        m_shape = {};
    }
    int At(int key) const {
        const Node* node = m_top;
        for (auto bits = static_cast<unsigned>(key); node->key != key; bits >>= 1)
            node = node->children[bits & 1].node;
        return node->value;
    }

private:
    struct Node;
    struct Handle {
        int* count;
        Node* node;
    };
    struct Node {
        int key;
        int value;
        Handle children[2];
    };

    Node* Copied(const cow_MapNode<int, int>* node) {
        if (!node) return nullptr;
        Node& copy = m_nodes[static_cast<std::size_t>(node->value)];
        copy = {node->key,
                node->value,
                {{nullptr, Copied(node->Child0().GetPtr())},
                 {nullptr, Copied(node->Child1().GetPtr())}}};
        return &copy;
    }

    cow_Map<int, int> m_shape;
    std::vector<Node> m_nodes;
    const Node* m_top = nullptr;
};

// For each node on the way to a key, a block with its bytes and one for a count, which go back when
// the copy does. Counts of the nodes beside the way are left alone.
class WayOfBlocks : public cow_Map<int, int> {
public:
    using Key = int;
    using Value = int;
    static constexpr const char* kWho = "floor::blocks";

    WayOfBlocks() = default;
    WayOfBlocks(const WayOfBlocks& other) : cow_Map<int, int>(), m_original(&other) {}
    WayOfBlocks(WayOfBlocks&&) = default;
    WayOfBlocks& operator=(const WayOfBlocks&) = delete;
    ~WayOfBlocks() {
        if (!m_original) return;
        for (void** each = m_original->m_blocks; *each; ++each) mem_Free(*each);
        m_original->m_blocks[0] = nullptr;
    }

    void Ready() { m_isReady = true; }
    void Insert(int key, int value) {
        if (!m_isReady) {
            cow_Map<int, int>::Insert(key, value);
            return;
        }
        void** block = m_blocks;
        const Node* node = Root();
        for (cow_MapBits<int> bits(key); node; node = node->Child(bits.Next()).GetPtr()) {
            *block++ = std::memcpy(mem_OperatorNewThrow(sizeof(Node)),
                                   static_cast<const void*>(node), sizeof(Node));
            *block = mem_OperatorNewTinyThrow(sizeof(cow_Counter));
            ::new (*block++) cow_Counter;
        }
        *block = nullptr;
    }
    void Erase(int) {}
    template <class F>
    void Each(F f) const {
        for (const auto& [key, value] : *this) f(key, value);
    }

private:
    const WayOfBlocks* m_original = nullptr;
    bool m_isReady = false;
    mutable void* m_blocks[2 * 34] = {};
};

}  // namespace bench
