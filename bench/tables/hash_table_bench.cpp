// Tables by address, beside std::unordered_map and Judy: as many buckets as entries.
#include <Judy.h>
#include <benchmark/benchmark.h>
#include <omi/HashTable.h>

#include <algorithm>
#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using Hash = HashTable<void*, unsigned>;
using HashMap = std::unordered_map<void*, unsigned>;

struct JudyArray {
    JudyArray() = default;
    JudyArray(const JudyArray&) = delete;
    JudyArray& operator=(const JudyArray&) = delete;
    ~JudyArray() { JudyLFreeArray(&array, nullptr); }
    void* array = nullptr;
};

template <class Map>
std::unique_ptr<Map> Empty(std::size_t n) {
    if constexpr (std::is_same_v<Map, Hash>) {
        return std::make_unique<Hash>(static_cast<unsigned>(n));
    } else {
        auto map = std::make_unique<Map>();
        if constexpr (std::is_same_v<Map, HashMap>) map->reserve(n);
        return map;
    }
}

void Put(Hash& map, void* key, unsigned value) { map.Insert(key, value); }
void Put(HashMap& map, void* key, unsigned value) { map[key] = value; }
void Put(JudyArray& map, void* key, unsigned value) {
    const auto cell = static_cast<Word_t*>(
        static_cast<void*>(JudyLIns(&map.array, reinterpret_cast<Word_t>(key), nullptr)));
    *cell = value;
}

unsigned At(const Hash& map, void* key) {
    unsigned value = 0;
    map.LookUp(key, value);
    return value;
}
unsigned At(const HashMap& map, void* key) {
    const auto found = map.find(key);
    return found == map.end() ? 0 : found->second;
}
unsigned At(const JudyArray& map, void* key) {
    const void* const cell = JudyLGet(map.array, reinterpret_cast<Word_t>(key), nullptr);
    return cell ? static_cast<unsigned>(*static_cast<const Word_t*>(cell)) : 0;
}

// Addresses of objects of 48 bytes, in no order.
std::vector<void*> Addresses(std::size_t n) {
    static std::vector<char> objects(48u << 20);
    std::vector<void*> addresses(n);
    for (std::size_t i = 0; i < n; ++i) addresses[i] = objects.data() + 48 * i;
    std::shuffle(addresses.begin(), addresses.end(), std::minstd_rand(1));
    return addresses;
}

template <class Map>
void BM_FillByAddress(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const std::vector<void*> keys = Addresses(n);
    for (auto _ : state) {
        const auto map = Empty<Map>(n);
        for (void* const key : keys) Put(*map, key, 1);
        benchmark::DoNotOptimize(map.get());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Map>
void BM_FindByAddress(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    std::vector<void*> keys = Addresses(n);
    const auto map = Empty<Map>(n);
    for (void* const key : keys) Put(*map, key, 1);
    std::shuffle(keys.begin(), keys.end(), std::minstd_rand(2));
    for (auto _ : state) {
        unsigned sum = 0;
        for (void* const key : keys) sum += At(*map, key);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(1000)->Arg(100000); }
BENCHMARK(BM_FillByAddress<Hash>)->Apply(Sizes);
BENCHMARK(BM_FillByAddress<HashMap>)->Apply(Sizes);
BENCHMARK(BM_FillByAddress<JudyArray>)->Apply(Sizes);
BENCHMARK(BM_FindByAddress<Hash>)->Apply(Sizes);
BENCHMARK(BM_FindByAddress<HashMap>)->Apply(Sizes);
BENCHMARK(BM_FindByAddress<JudyArray>)->Apply(Sizes);

}  // namespace
