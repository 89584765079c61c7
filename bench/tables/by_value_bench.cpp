// Tables that are passed by value: the price of a copy, and of the first write after it, beside
// copying a std::unordered_map and a plain vector of the same numbers.
#include <benchmark/benchmark.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>

#include <unordered_map>
#include <vector>

namespace {

struct HashMap : std::unordered_map<int, int> {
    void Insert(int key, int value) { insert_or_assign(key, value); }
};
struct Vector : std::vector<int> {
    void Insert(int key, int value) {
        if (size() <= static_cast<std::size_t>(key)) resize(static_cast<std::size_t>(key) + 1);
        (*this)[static_cast<std::size_t>(key)] = value;
    }
};

template <class Table>
Table Filled(const benchmark::State& state) {
    Table table;
    for (int key = 0; key < state.range(0); ++key) table.Insert(key, key);
    return table;
}

template <class Table>
void BM_CopyTable(benchmark::State& state) {
    const Table original = Filled<Table>(state);
    for (auto _ : state) {
        Table copy = original;
        benchmark::DoNotOptimize(&copy);
    }
}

template <class Table>
void BM_WriteAfterCopy(benchmark::State& state) {
    const Table original = Filled<Table>(state);
    for (auto _ : state) {
        Table copy = original;
        copy.Insert(7, 1);
        benchmark::DoNotOptimize(&copy);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Size(benchmark::internal::Benchmark* b) { b->Arg(100000); }
BENCHMARK(BM_CopyTable<cow_IntTableInt>)->Apply(Size);
BENCHMARK(BM_CopyTable<cow_IntMultiMapInt>)->Apply(Size);
BENCHMARK(BM_CopyTable<HashMap>)->Apply(Size);
BENCHMARK(BM_CopyTable<Vector>)->Apply(Size);
BENCHMARK(BM_WriteAfterCopy<cow_IntTableInt>)->Apply(Size);
BENCHMARK(BM_WriteAfterCopy<cow_IntMultiMapInt>)->Apply(Size);
BENCHMARK(BM_WriteAfterCopy<HashMap>)->Apply(Size);
BENCHMARK(BM_WriteAfterCopy<Vector>)->Apply(Size);

}  // namespace
