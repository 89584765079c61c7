// Tree and map by value, beside std::map and std::unordered_map, which copy everything.
#include <benchmark/benchmark.h>
#include <cow/cow_Btree.h>
#include <cow/cow_Map.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

using Tree = cow_Btree<int, int>;
using Map = cow_Map<int, int>;
using StdMap = std::map<int, int>;
using StdHash = std::unordered_map<int, int>;
using TextTree = cow_Btree<cow_String, int>;
using TextMap = cow_Map<cow_String, int>;
using StdTextMap = std::map<std::string, int>;
using StdTextHash = std::unordered_map<std::string, int>;

template <class K, class V>
void Put(cow_Btree<K, V>& tree, const K& key, const V& value) {
    tree.InsertUnlessMember(key, value);
}
template <class K, class V>
void Put(cow_Map<K, V>& map, const K& key, const V& value) {
    map.Insert(key, value);
}
template <class C, class K, class V>
void Put(C& container, const K& key, const V& value) {
    container.emplace(key, value);
}

template <class K, class V>
V& Write(cow_Btree<K, V>& tree, const K& key) {
    return tree.Find(key);
}
template <class K, class V>
V& Write(cow_Map<K, V>& map, const K& key) {
    return map.Get(key);
}
template <class C, class K>
int& Write(C& container, const K& key) {
    return container.find(key)->second;
}

template <class K, class V>
int Read(const cow_Btree<K, V>& tree, const K& key) {
    return tree.ConstFind(key);
}
template <class K, class V>
int Read(const cow_Map<K, V>& map, const K& key) {
    return map.ConstGet(key);
}
template <class C, class K>
int Read(const C& container, const K& key) {
    return container.find(key)->second;
}

template <class C>
void Drop(C& container, const typename C::key_type& key) {
    if constexpr (requires { container.Remove(key); })
        container.Remove(key);
    else
        container.erase(key);
}

// The numbers below n, shuffled; as texts "part_123".
template <class K>
std::vector<K> Keys(const benchmark::State& state) {
    std::vector<int> numbers(static_cast<size_t>(state.range(0)));
    for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<int>(i);
    std::shuffle(numbers.begin(), numbers.end(), std::minstd_rand(1));
    std::vector<K> keys;
    for (const int number : numbers) {
        if constexpr (std::is_same_v<K, int>)
            keys.push_back(number);
        else
            keys.push_back(K(("part_" + std::to_string(number)).c_str()));
    }
    return keys;
}
template <class C>
C Filled(const std::vector<typename C::key_type>& keys) {
    C container;
    int n = 0;
    for (const auto& key : keys) Put(container, key, n++);
    return container;
}
template <class C>
void CountItems(benchmark::State& state, const C& keys) {
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(keys.size()));
}

// What does building and dropping a table cost per key?
template <class C>
void BM_FillAndDrop(benchmark::State& state) {
    const auto keys = Keys<typename C::key_type>(state);
    for (auto _ : state) {
        C container = Filled<C>(keys);
        benchmark::DoNotOptimize(&container);
    }
    CountItems(state, keys);
}

// What does a look-up cost, in no order?
template <class C>
void BM_LookUp(benchmark::State& state) {
    const auto keys = Keys<typename C::key_type>(state);
    const C container = Filled<C>(keys);
    for (auto _ : state) {
        int sum = 0;
        for (const auto& key : keys) sum += Read(container, key);
        benchmark::DoNotOptimize(sum);
    }
    CountItems(state, keys);
}

// What does removing a key and putting it back cost where nothing is shared?
template <class C>
void BM_RemoveAndInsert(benchmark::State& state) {
    const auto keys = Keys<typename C::key_type>(state);
    C container = Filled<C>(keys);
    for (auto _ : state) {
        for (const auto& key : keys) {
            Drop(container, key);
            Put(container, key, 1);
        }
    }
    CountItems(state, keys);
}

// What does a pass over all entries cost per entry?
template <class C>
void BM_Walk(benchmark::State& state) {
    const auto keys = Keys<typename C::key_type>(state);
    const C container = Filled<C>(keys);
    for (auto _ : state) {
        int sum = 0;
        for (const auto& [key, value] : container) sum += value;
        benchmark::DoNotOptimize(sum);
    }
    CountItems(state, keys);
}

// What does keeping a snapshot cost: copy, write one value, drop the copy?
template <class C>
void BM_Snapshot(benchmark::State& state) {
    const auto keys = Keys<typename C::key_type>(state);
    C container = Filled<C>(keys);
    size_t next = 0;
    for (auto _ : state) {
        const C snapshot = container;
        benchmark::DoNotOptimize(++Write(container, keys[next]));
        next = next + 1 == keys.size() ? 0 : next + 1;
    }
}

#define AGAINST_STD(BM)                             \
    BENCHMARK(BM<Tree>)->Arg(1000)->Arg(1000000);   \
    BENCHMARK(BM<Map>)->Arg(1000)->Arg(1000000);    \
    BENCHMARK(BM<StdMap>)->Arg(1000)->Arg(1000000); \
    BENCHMARK(BM<StdHash>)->Arg(1000)->Arg(1000000);
#define AGAINST_STD_TEXTS(BM)             \
    BENCHMARK(BM<TextTree>)->Arg(1000);   \
    BENCHMARK(BM<TextMap>)->Arg(1000);    \
    BENCHMARK(BM<StdTextMap>)->Arg(1000); \
    BENCHMARK(BM<StdTextHash>)->Arg(1000);
AGAINST_STD(BM_FillAndDrop)
AGAINST_STD(BM_LookUp)
AGAINST_STD(BM_RemoveAndInsert)
AGAINST_STD(BM_Walk)
AGAINST_STD(BM_Snapshot)
BENCHMARK(BM_Snapshot<Tree>)->Arg(10000)->Arg(100000);
BENCHMARK(BM_Snapshot<Map>)->Arg(10000)->Arg(100000);
BENCHMARK(BM_Snapshot<StdMap>)->Arg(10000)->Arg(100000);
BENCHMARK(BM_Snapshot<StdHash>)->Arg(10000)->Arg(100000);
AGAINST_STD_TEXTS(BM_FillAndDrop)
AGAINST_STD_TEXTS(BM_LookUp)
AGAINST_STD_TEXTS(BM_Snapshot)

}  // namespace
