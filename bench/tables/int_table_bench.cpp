// A table from node numbers to values, filled, looked up and walked, beside the hash map that users
// would take instead and, as a floor for dense numbers, a plain vector.
#include <benchmark/benchmark.h>
#include <omi/omi_IntTableIterator.h>

#include <algorithm>
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

// How long does reading a model's labels take?
template <class Map>
void BM_Fill(benchmark::State& state) {
    const std::vector<int> labels = Labels(state);
    for (auto _ : state) {
        Map map;
        for (const int label : labels) Put(map, label, label);
        benchmark::DoNotOptimize(&map);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}

// What does an element pay for the values of its nodes, in no order?
template <class Map>
void BM_LookUp(benchmark::State& state) {
    const std::vector<int> labels = Shuffled(Labels(state));
    Map map;
    for (const int label : labels) Put(map, label, label);
    for (auto _ : state) {
        double sum = 0;
        for (const int label : labels) sum += At(map, label);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}

// What does a pass over all nodes cost?
template <class Map>
void BM_Walk(benchmark::State& state) {
    const std::vector<int> labels = Labels(state);
    Map map;
    for (const int label : labels) Put(map, label, label);
    for (auto _ : state) benchmark::DoNotOptimize(Sum(map));
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(labels.size()));
}

void Sparse(benchmark::internal::Benchmark* b) { b->Args({100000, 1})->Args({100000, 50}); }
void Dense(benchmark::internal::Benchmark* b) { b->Args({100000, 1}); }

BENCHMARK(BM_Fill<Table>)->Apply(Sparse);
BENCHMARK(BM_Fill<HashMap>)->Apply(Sparse);
BENCHMARK(BM_Fill<std::vector<double>>)->Apply(Dense);
BENCHMARK(BM_LookUp<Table>)->Apply(Sparse);
BENCHMARK(BM_LookUp<HashMap>)->Apply(Sparse);
BENCHMARK(BM_LookUp<std::vector<double>>)->Apply(Dense);
BENCHMARK(BM_Walk<Table>)->Apply(Sparse);
BENCHMARK(BM_Walk<HashMap>)->Apply(Sparse);
BENCHMARK(BM_Walk<std::vector<double>>)->Apply(Dense);

}  // namespace
