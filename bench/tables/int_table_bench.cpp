// A table from node numbers to values, filled, looked up and walked, beside the hash map that users
// would take instead and, as a floor for dense numbers, a plain vector.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <omi/omi_IntTableIterator.h>

#include <algorithm>
#include <memory>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using Table = omi_IntTable<double, KZMBasOmiDefaultAllocator>;
using Iterator = omi_IntTableIterator<double, KZMBasOmiDefaultAllocator>;
using HashMap = std::unordered_map<int, double>;

// Node numbers as models have them: dense from 1 (clusters 1), or in ranges spread over 31 bits.
std::vector<int> Labels(const benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    const int clusters = static_cast<int>(state.range(1));
    std::vector<int> labels;
    for (int cluster = 0; cluster < clusters; ++cluster)
        for (int i = 0; i < count / clusters; ++i)
            labels.push_back(1 + cluster * (2147000000 / clusters) + i);
    return labels;
}

std::vector<int> Shuffled(std::vector<int> labels) {
    std::shuffle(labels.begin(), labels.end(), std::minstd_rand(1));
    return labels;
}

void Put(Table& table, int label, double value) { table.Insert(label, value); }
void Put(HashMap& map, int label, double value) { map[label] = value; }
void Put(std::vector<double>& dense, int label, double value) {
    if (dense.size() <= static_cast<size_t>(label)) dense.resize(static_cast<size_t>(label) + 1);
    dense[static_cast<size_t>(label)] = value;
}

double At(const Table& table, int label) {
    double value = 0;
    table.ConstGetValue(label, value);
    return value;
}
double At(const HashMap& map, int label) {
    const auto found = map.find(label);
    return found == map.end() ? 0 : found->second;
}
double At(const std::vector<double>& dense, int label) {
    return static_cast<size_t>(label) < dense.size() ? dense[static_cast<size_t>(label)] : 0;
}

void Erase(Table& table, int label) { table.Remove(label); }
void Erase(HashMap& map, int label) { map.erase(label); }

std::unique_ptr<Table> Copy(const Table& table) { return std::unique_ptr<Table>(table.Copy()); }
template <class Map>
std::unique_ptr<Map> Copy(const Map& map) {
    return std::make_unique<Map>(map);
}

double Sum(const Table& table) {
    double sum = 0;
    Iterator it(table);
    for (it.First(); !it.IsDone(); it.Next()) sum += it.CurrentKey() * it.CurrentValue();
    return sum;
}
double Sum(const HashMap& map) {
    double sum = 0;
    for (const auto& [label, value] : map) sum += label * value;
    return sum;
}
double Sum(const std::vector<double>& dense) {
    double sum = 0;
    for (size_t i = 0; i < dense.size(); ++i) sum += static_cast<double>(i) * dense[i];
    return sum;
}

template <class Map>
void FillFrom(const std::vector<int>& labels, Map& map) {
    for (const int label : labels) Put(map, label, label);
}

template <class Map>
void SumOf(benchmark::State& state, const Map& map, const std::vector<int>& labels) {
    for (auto _ : state) {
        double sum = 0;
        for (const int label : labels) sum += At(map, label);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}

// How long does reading a model's labels take, in order or not, and how many bytes a label are held
// then?
template <class Map>
void Fill(benchmark::State& state, const std::vector<int>& labels) {
    for (auto _ : state) {
        Map map;
        FillFrom(labels, map);
        benchmark::DoNotOptimize(&map);
    }
    malloc_trim(0);
    const auto before = mallinfo2();
    Map map;
    FillFrom(labels, map);
    const auto after = mallinfo2();
    state.counters["bytes/label"] =
        static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) /
        static_cast<double>(labels.size());
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}
template <class Map>
void BM_Fill(benchmark::State& state) {
    Fill<Map>(state, Labels(state));
}
template <class Map>
void BM_FillInNoOrder(benchmark::State& state) {
    Fill<Map>(state, Shuffled(Labels(state)));
}

// What does an element pay for the values of its nodes, in no order?
template <class Map>
void BM_LookUp(benchmark::State& state) {
    const std::vector<int> labels = Shuffled(Labels(state));
    Map map;
    FillFrom(labels, map);
    SumOf(state, map, labels);
}
template <class Map>
void BM_LookUpInOrder(benchmark::State& state) {
    const std::vector<int> labels = Labels(state);
    Map map;
    FillFrom(labels, map);
    SumOf(state, map, labels);
}

// Labels that are not there, but whose neighbours are.
template <class Map>
void BM_LookUpAbsent(benchmark::State& state) {
    const std::vector<int> labels = Shuffled(Labels(state));
    const auto middle = labels.begin() + static_cast<std::ptrdiff_t>(labels.size() / 2);
    Map map;
    FillFrom(std::vector<int>(labels.begin(), middle), map);
    SumOf(state, map, std::vector<int>(middle, labels.end()));
}

// Removing every label, in no order; the table is filled again outside the measured time.
template <class Map>
void BM_EraseAll(benchmark::State& state) {
    const std::vector<int> labels = Shuffled(Labels(state));
    for (auto _ : state) {
        state.PauseTiming();
        auto map = std::make_unique<Map>();
        FillFrom(labels, *map);
        state.ResumeTiming();
        for (const int label : labels) Erase(*map, label);
        state.PauseTiming();
        map.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}

template <class Map>
void BM_Copy(benchmark::State& state) {
    Map map;
    FillFrom(Labels(state), map);
    for (auto _ : state) benchmark::DoNotOptimize(Copy(map));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// What does a pass over all nodes cost?
template <class Map>
void BM_Walk(benchmark::State& state) {
    Map map;
    FillFrom(Labels(state), map);
    for (auto _ : state) benchmark::DoNotOptimize(Sum(map));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
void BM_WalkByRange(benchmark::State& state) {
    Table table;
    FillFrom(Labels(state), table);
    for (auto _ : state) {
        double sum = 0;
        for (const auto& [label, value] : table) sum += label * value;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sparse(benchmark::internal::Benchmark* b) { b->Args({100000, 1})->Args({100000, 50}); }
void Dense(benchmark::internal::Benchmark* b) { b->Args({100000, 1}); }

#define KZM_BENCH_LABELS(BM)             \
    BENCHMARK(BM<Table>)->Apply(Sparse); \
    BENCHMARK(BM<HashMap>)->Apply(Sparse)
#define KZM_BENCH_DENSE(BM) \
    KZM_BENCH_LABELS(BM);   \
    BENCHMARK(BM<std::vector<double>>)->Apply(Dense)
KZM_BENCH_DENSE(BM_Fill);
KZM_BENCH_DENSE(BM_FillInNoOrder);
KZM_BENCH_DENSE(BM_LookUp);
KZM_BENCH_DENSE(BM_LookUpInOrder);
KZM_BENCH_LABELS(BM_LookUpAbsent);
KZM_BENCH_LABELS(BM_EraseAll);
KZM_BENCH_DENSE(BM_Copy);
KZM_BENCH_DENSE(BM_Walk);
BENCHMARK(BM_WalkByRange)->Apply(Sparse);

}  // namespace
