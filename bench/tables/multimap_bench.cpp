// The elements at each node: omi_IntMultiMap beside other multimaps and, as a floor for dense
// numbers, a vector of vectors.
#include <cow/cow_List.h>
#include <omi/omi_IntMultiMap.h>

#include <cmath>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "support/keys.h"
#include "support/memory.h"
#ifdef KZM_BENCH_ABSL
#include <absl/container/btree_map.h>
#include <absl/container/flat_hash_map.h>
#include <absl/container/inlined_vector.h>
#endif
#ifdef KZM_BENCH_QT
#include <QMultiMap>
#endif

namespace {

using Pairs = std::vector<std::pair<int, int>>;  // node, element

// All of them have Insert(node, element), Remove(node, element), EachAt(node, f) for the elements
// at a node, Each(f) for all pairs.
class MultiMap : public omi_IntMultiMap<int, KZMBasOmiDefaultAllocator> {
public:
    static constexpr const char* kWho = "omi_IntMultiMap";
    template <class F>
    void EachAt(int node, F f) const {
        for (const auto* link = GetFirst(node); link; link = link->next) f(link->value);
    }
    template <class F>
    void Each(F f) const {
        for (const auto& [node, element] : *this) f(node, element);
    }
};

// After CompressValues, which lays the elements of a node side by side.
struct Compressed : MultiMap {
    static constexpr const char* kWho = "omi_IntMultiMap(compressed)";
};

template <class Map>
class Standard {
public:
    void Insert(int node, int element) { m_map.emplace(node, element); }
    void Remove(int node, int element) {
        auto it = m_map.equal_range(node).first;
        while (it->second != element) ++it;
        m_map.erase(it);
    }
    template <class F>
    void EachAt(int node, F f) const {
        for (auto [it, end] = m_map.equal_range(node); it != end; ++it) f(it->second);
    }
    template <class F>
    void Each(F f) const {
        for (const auto& [node, element] : m_map) f(node, element);
    }

private:
    Map m_map;
};
struct HashMultiMap : Standard<std::unordered_multimap<int, int>> {
    static constexpr const char* kWho = "std::unordered_multimap";
};
struct TreeMultiMap : Standard<std::multimap<int, int>> {
    static constexpr const char* kWho = "std::multimap";
};

// A hash map to a vector of elements.
template <class Map>
class ToVectors {
public:
    void Insert(int node, int element) { m_map[node].push_back(element); }
    void Remove(int node, int element) {
        auto& elements = m_map.find(node)->second;
        elements.erase(std::find(elements.begin(), elements.end(), element));
    }
    template <class F>
    void EachAt(int node, F f) const {
        for (const int element : m_map.find(node)->second) f(element);
    }
    template <class F>
    void Each(F f) const {
        for (const auto& [node, elements] : m_map)
            for (const int element : elements) f(node, element);
    }

private:
    Map m_map;
};
struct HashToVectors : ToVectors<std::unordered_map<int, std::vector<int>>> {
    static constexpr const char* kWho = "std::unordered_map<vector>";
};

class Vectors {
public:
    static constexpr const char* kWho = "floor::vector<vector>";
    void Insert(int node, int element) {
        if (m_map.size() <= static_cast<std::size_t>(node))
            m_map.resize(static_cast<std::size_t>(node) + 1);
        m_map[static_cast<std::size_t>(node)].push_back(element);
    }
    template <class F>
    void EachAt(int node, F f) const {
        for (const int element : m_map[static_cast<std::size_t>(node)]) f(element);
    }
    template <class F>
    void Each(F f) const {
        for (std::size_t i = 0; i < m_map.size(); ++i)
            for (const int element : m_map[i]) f(static_cast<int>(i), element);
    }

private:
    std::vector<std::vector<int>> m_map;
};

// What the interface prescribes for a pair, by hand for the numbers of a small mesh: a link behind
// the last one, put in front of its node's chain, with the bit that tells whether there is one and
// two counts. All memory is there already.
class Links {
public:
    static constexpr const char* kWho = "floor::links";
    void Insert(int node, int element) {
        const std::size_t at = static_cast<std::size_t>(node);
        unsigned& word = m_bits[at / 32];
        Link*& first = s_first[at];
        *m_next = Link{element, word >> at % 32 & 1 ? first : nullptr};
        word |= 1u << at % 32;
        first = m_next++;
        ++m_links;
        ++m_pairs;
    }
    template <class F>
    void EachAt(int node, F f) const {
        for (const Link* link = s_first[static_cast<std::size_t>(node)]; link; link = link->next)
            f(link->value);
    }
    template <class F>
    void Each(F f) const {
        for (std::size_t at = 0; at < 32 * m_bits.size(); ++at)
            if (m_bits[at / 32] >> at % 32 & 1)
                EachAt(static_cast<int>(at),
                       [&](int element) { f(static_cast<int>(at), element); });
    }

protected:
    struct Link {
        int value;
        Link* next;
    };
    static inline Link s_links[400000];
    static inline Link* s_first[1 << 15];
    std::vector<unsigned> m_bits = std::vector<unsigned>(1 << 10);
    Link* m_next = s_links;
    unsigned m_links = 0;
    unsigned m_pairs = 0;
};

// The same where the shape, which the interface leaves to whoever makes a table, is read where it
// lies, and with the other counts: of links in a chunk and of keys.
class LinksOfAnyShape : public Links {
public:
    static constexpr const char* kWho = "floor::links(any shape)";
    LinksOfAnyShape() {
        m_table->block = m_block.get();
        for (std::size_t i = 0; i < 32; ++i) m_block->groups[i] = s_first + 1024 * i;
        for (std::size_t i = 0; i < 4; ++i) m_block->words[i] = &m_bits[256 * i];
        bench::Keep(this);
    }
    void Insert(int node, int element) {
        const Table& table = *m_table;
        const auto slot = static_cast<std::uint64_t>(std::int64_t{node}) >> table.keyShift;
        Block* const block = slot < table.slots ? (&table.block)[slot] : nullptr;
        if (!block) return;
        const unsigned local = static_cast<unsigned>(node) & table.localMask;
        const unsigned group = local >> (block->groupShift & 31);
        Link** const links = group < block->groupCount ? block->groups[group] : nullptr;
        unsigned* const words =
            local >> 13 < block->wordBlocks ? block->words[local >> 13] : nullptr;
        if (!links || !words || m_used == 256) return;
        Link*& first = links[local & block->cellMask];
        unsigned& word = words[local / 32 % 256];
        const bool member = word >> local % 32 & 1;
        *m_next = Link{element, member ? first : nullptr};
        first = m_next++;
        if (!member) {
            word |= 1u << local % 32;
            ++block->count;
            ++m_table->count;
        }
        m_used = (m_used + 1) % 256;
        ++m_links;
        ++m_pairs;
    }

private:
    struct Block {
        unsigned groupCount = 32;
        unsigned groupShift = 10;
        unsigned cellMask = 1023;
        unsigned wordBlocks = 4;
        unsigned count = 0;
        Link** groups[32];
        unsigned* words[4];
    };
    struct Table {
        Block* block;
        unsigned slots = 1;
        unsigned keyShift = 20;
        unsigned localMask = 0xfffff;
        unsigned count = 0;
    };
    std::unique_ptr<Block> m_block = std::make_unique<Block>();
    std::unique_ptr<Table> m_table = std::make_unique<Table>();
    unsigned m_used = 0;
};

#ifdef KZM_BENCH_ABSL
struct AbslMultiMap : Standard<absl::btree_multimap<int, int>> {
    static constexpr const char* kWho = "absl::btree_multimap";
};
struct AbslToVectors : ToVectors<absl::flat_hash_map<int, absl::InlinedVector<int, 4>>> {
    static constexpr const char* kWho = "absl::flat_hash_map<vector>";
};
#else
using AbslMultiMap = bench::Missing;
using AbslToVectors = bench::Missing;
#endif
#ifdef KZM_BENCH_QT
class QtMultiMap {
public:
    static constexpr const char* kWho = "Qt::QMultiMap";
    void Insert(int node, int element) { m_map.insert(node, element); }
    void Remove(int node, int element) { m_map.remove(node, element); }
    template <class F>
    void EachAt(int node, F f) const {
        for (auto it = m_map.constFind(node); it != m_map.cend() && it.key() == node; ++it)
            f(it.value());
    }
    template <class F>
    void Each(F f) const {
        for (auto it = m_map.cbegin(); it != m_map.cend(); ++it) f(it.key(), it.value());
    }

private:
    QMultiMap<int, int> m_map;
};
#else
using QtMultiMap = bench::Missing;
#endif

// The arguments of all workloads: how many elements, and the number of the first node. The mesh is
// a box of tetrahedra, five to a cell; a node has some twenty of them.
Pairs Mesh(std::int64_t elements, std::int64_t firstNode) {
    static const int kCorners[5][4] = {
        {0, 1, 2, 4}, {3, 1, 2, 7}, {5, 1, 4, 7}, {6, 2, 4, 7}, {1, 2, 4, 7}};
    const int side = static_cast<int>(std::cbrt(static_cast<double>(elements) / 5));
    Pairs pairs;
    int element = 0;
    for (int cell = 0; element < elements; ++cell) {
        const int x = cell % side, y = cell / side % side, z = cell / side / side;
        for (const auto& tetrahedron : kCorners) {
            if (element == elements) break;
            for (const int corner : tetrahedron) {
                const int node =
                    (x + (corner & 1)) +
                    (side + 1) * ((y + (corner >> 1 & 1)) + (side + 1) * (z + (corner >> 2)));
                pairs.emplace_back(static_cast<int>(firstNode) + node, element);
            }
            ++element;
        }
    }
    return pairs;
}
Pairs Mesh(const benchmark::State& state) { return Mesh(state.range(0), state.range(1)); }

std::vector<int> NodesOf(const Pairs& pairs) {
    std::vector<int> nodes;
    for (const auto& [node, element] : pairs) nodes.push_back(node);
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    return nodes;
}

template <class Map>
void Fill(Map& map, const Pairs& pairs) {
    for (const auto& [node, element] : pairs) map.Insert(node, element);
}
template <class Map>
Map& FilledOnce(const benchmark::State& state, const Pairs& pairs) {
    using Made = std::unique_ptr<Map>;
    return *bench::Once(state.range(0), state.range(1), [&]() -> Made {
        Made map(new Map);
        Fill(*map, pairs);
        if constexpr (std::is_same_v<Map, Compressed>) map->CompressValues();
        return map;
    });
}
template <class Map>
std::uint64_t Sum(const Map& map) {
    std::uint64_t sum = 0;
    map.Each([&](int node, int element) { sum += static_cast<unsigned>(node % 1024 + element); });
    return sum;
}

template <class Map>
void MultiInsert(benchmark::State& state, const Pairs& pairs) {
    std::uint64_t sum = 0;
    for (auto _ : state) {
        auto map = std::make_unique<Map>();
        Fill(*map, pairs);
        bench::Keep(map.get());
        state.PauseTiming();
        sum = Sum(*map);
        map.reset();
        state.ResumeTiming();
    }
    bench::Result(state, sum);
    bench::EachOf(state, pairs.size());
}
// Finding out which elements meet at each node, element by element.
template <class Map>
void MultiInsertMesh(benchmark::State& state) {
    MultiInsert<Map>(state, Mesh(state));
    bench::MeasureBytes(
        state, 4 * bench::Count(state),
        [](std::int64_t elements, std::int64_t firstNode) {
            const Pairs pairs = Mesh(elements, firstNode);
            return bench::BytesOf([&] {
                auto map = std::make_unique<Map>();
                Fill(*map, pairs);
                return map;
            });
        },
        state.range(1));
}
// The same pairs in no order.
template <class Map>
void MultiInsertRandom(benchmark::State& state) {
    MultiInsert<Map>(state, bench::Shuffled(Mesh(state)));
}

// The elements at each node, node by node in ascending order.
template <class Map>
void MultiAtNodes(benchmark::State& state) {
    const Pairs pairs = Mesh(state);
    const std::vector<int> nodes = NodesOf(pairs);
    const Map& map = FilledOnce<Map>(state, pairs);
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const int node : nodes)
            map.EachAt(node, [&](int element) { sum += static_cast<unsigned>(element); });
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, pairs.size());
}

// A pass over all pairs in the order of the nodes, which hash maps do not know.
template <class Map>
void MultiValuesInOrder(benchmark::State& state) {
    const Pairs pairs = Mesh(state);
    const Map& map = FilledOnce<Map>(state, pairs);
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = Sum(map);
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, pairs.size());
}

// Taking an element from its nodes and putting it back, as remeshing does.
template <class Map>
void MultiMove(benchmark::State& state) {
    const Pairs pairs = Mesh(state);
    Map& map = FilledOnce<Map>(state, pairs);
    std::size_t next = 0;
    for (auto _ : state) {
        for (int corner = 0; corner < 4; ++corner) {
            const auto [node, element] = pairs[next + static_cast<std::size_t>(corner)];
            map.Remove(node, element);
            map.Insert(node, element);
        }
        next = (next + 4 * 997) % pairs.size();
    }
    bench::Result(state, Sum(map));
}

using Ordered = bench::Types<TreeMultiMap, AbslMultiMap, QtMultiMap>;
using Hashes = bench::Types<HashMultiMap, HashToVectors, AbslToVectors>;

void Meshes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"elements", "first node"})->Args({100000, 1})->Args({100000, 2000000000});
}
void Dense(benchmark::internal::Benchmark* b) {
    b->ArgNames({"elements", "first node"})->Args({100000, 1});
}
KZM_WORKLOAD(MultiInsertMesh, Meshes, MultiMap, Ordered, Hashes);
KZM_WORKLOAD(MultiInsertMesh, Dense, Vectors, Links, LinksOfAnyShape);
KZM_WORKLOAD(MultiInsertRandom, Meshes, MultiMap, Ordered, Hashes);
KZM_WORKLOAD(MultiInsertRandom, Dense, Vectors, Links, LinksOfAnyShape);
KZM_WORKLOAD(MultiAtNodes, Meshes, MultiMap, Compressed, Ordered, Hashes);
KZM_WORKLOAD(MultiAtNodes, Dense, Vectors);
KZM_WORKLOAD(MultiValuesInOrder, Meshes, MultiMap, Compressed, Ordered);
KZM_WORKLOAD(MultiValuesInOrder, Dense, Vectors);
KZM_WORKLOAD(MultiMove, Dense, MultiMap, Ordered, Hashes);

}  // namespace
