// The elements at each node: omi_IntMultiMap beside std::unordered_multimap and, as the floor where
// node numbers are dense, a vector of vectors.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <omi/omi_IntMultiMap.h>

#include <algorithm>
#include <map>
#include <random>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using Map = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
using HashMap = std::unordered_multimap<int, int>;
using Tree = std::multimap<int, int>;
using Vectors = std::vector<std::vector<int>>;

// Element e of a strip of tetrahedra has the nodes e to e + 3; node numbers start at `first`.
template <class Put>
void EachPair(const benchmark::State& state, Put put) {
    const int first = static_cast<int>(state.range(1));
    for (int element = 0; element < state.range(0); ++element)
        for (int corner = 0; corner < 4; ++corner) put(first + element + corner, element);
}

void Put(Map& map, int node, int element) { map.Insert(node, element); }
void Put(Tree& map, int node, int element) { map.emplace(node, element); }
void Put(HashMap& map, int node, int element) { map.emplace(node, element); }
void Put(Vectors& map, int node, int element) {
    if (map.size() <= static_cast<std::size_t>(node))
        map.resize(static_cast<std::size_t>(node) + 1);
    map[static_cast<std::size_t>(node)].push_back(element);
}

int SumAt(const Map& map, int node) {
    int sum = 0;
    for (const auto* link = map.GetFirst(node); link; link = link->next) sum += link->value;
    return sum;
}
int SumAt(const HashMap& map, int node) {
    int sum = 0;
    for (auto [it, end] = map.equal_range(node); it != end; ++it) sum += it->second;
    return sum;
}
int SumAt(const Vectors& map, int node) {
    int sum = 0;
    for (const int element : map[static_cast<std::size_t>(node)]) sum += element;
    return sum;
}

template <class Any>
void Build(const benchmark::State& state, Any& map) {
    EachPair(state, [&](int node, int element) { Put(map, node, element); });
}

// What does building the adjacency cost, in time and in bytes a pair?
template <class Any>
void BM_BuildAdjacency(benchmark::State& state) {
    for (auto _ : state) {
        Any map;
        Build(state, map);
        benchmark::DoNotOptimize(&map);
    }
    malloc_trim(0);
    const auto before = mallinfo2();
    Any map;
    Build(state, map);
    const auto after = mallinfo2();
    state.counters["bytes/pair"] =
        static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
        static_cast<double>(4 * state.range(0));
    state.SetItemsProcessed(state.iterations() * 4 * state.range(0));
}

// What does a pass over the elements of all nodes cost, node by node?
template <class Any>
void BM_VisitElements(benchmark::State& state) {
    Any map;
    Build(state, map);
    const int first = static_cast<int>(state.range(1));
    for (auto _ : state) {
        int sum = 0;
        for (int i = 0; i < state.range(0); ++i) sum ^= SumAt(map, first + i);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 4 * state.range(0));
}

// The floor of the pass above: chains that a compaction has laid side by side.
void BM_VisitElementsCompacted(benchmark::State& state) {
    Map map;
    Build(state, map);
    map.CompressValues();
    const int first = static_cast<int>(state.range(1));
    for (auto _ : state) {
        int sum = 0;
        for (int i = 0; i < state.range(0); ++i) sum ^= SumAt(map, first + i);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 4 * state.range(0));
}

// Pairs in no order, as a reader meets them that follows the faces of a mesh.
template <class Any>
void BM_BuildInNoOrder(benchmark::State& state) {
    std::vector<std::pair<int, int>> pairs;
    EachPair(state, [&](int node, int element) { pairs.emplace_back(node, element); });
    std::shuffle(pairs.begin(), pairs.end(), std::minstd_rand(1));
    for (auto _ : state) {
        Any map;
        for (const auto& [node, element] : pairs) Put(map, node, element);
        benchmark::DoNotOptimize(&map);
    }
    state.SetItemsProcessed(state.iterations() * 4 * state.range(0));
}

// All pairs in the order of the keys.
template <class Any>
void BM_WalkInKeyOrder(benchmark::State& state) {
    Any map;
    Build(state, map);
    for (auto _ : state) {
        int sum = 0;
        for (const auto& [node, element] : map) sum ^= node + element;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 4 * state.range(0));
}

// Removing an element from its nodes, as remeshing does, and putting it back.
template <class Any>
void BM_MoveElement(benchmark::State& state) {
    Any map;
    Build(state, map);
    const int first = static_cast<int>(state.range(1));
    int element = 0;
    for (auto _ : state) {
        for (int corner = 0; corner < 4; ++corner) {
            const int node = first + element + corner;
            if constexpr (std::is_same_v<Any, Map>) {
                map.Remove(node, element);
            } else {
                auto [it, end] = map.equal_range(node);
                while (it != end) it = it->second == element ? map.erase(it) : std::next(it);
            }
            Put(map, node, element);
        }
        element = (element + 997) % static_cast<int>(state.range(0));
    }
}

constexpr int kFar = 2000000000;
BENCHMARK(BM_BuildAdjacency<Map>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_BuildAdjacency<HashMap>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_BuildAdjacency<Vectors>)->Args({100000, 0});
BENCHMARK(BM_VisitElements<Map>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_VisitElementsCompacted)->Args({100000, 0});
BENCHMARK(BM_VisitElements<HashMap>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_VisitElements<Vectors>)->Args({100000, 0});
BENCHMARK(BM_BuildInNoOrder<Map>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_BuildInNoOrder<HashMap>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_WalkInKeyOrder<Map>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_WalkInKeyOrder<Tree>)->Args({100000, 0})->Args({100000, kFar});
BENCHMARK(BM_MoveElement<Map>)->Args({100000, 0});
BENCHMARK(BM_MoveElement<HashMap>)->Args({100000, 0});

}  // namespace
