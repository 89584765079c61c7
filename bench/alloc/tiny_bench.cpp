#include <alloc/KZMBasAlloc.h>
#include <alloc/mem_alloc.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

namespace {

using Take = void* (*)(std::size_t);
using GiveBack = void (*)(void*);

// A share count taken and given back at once, as by a handle that lives for a call: the ratio to
// malloc, which keeps such blocks in a cache of the thread, is the figure.
template <Take take, GiveBack giveBack>
void BM_Pair(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void* const block = take(size);
        benchmark::DoNotOptimize(block);
        giveBack(block);
    }
}

// Many share counts that stay, as when a large model is read.
template <Take take, GiveBack giveBack>
void BM_Bulk(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<void*> blocks(1000000);
    for (auto _ : state) {
        for (void*& each : blocks) each = take(size);
        state.PauseTiming();
        for (void* const each : blocks) giveBack(each);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(blocks.size()));
}

// The same out of memory that was never used before, which pays for the pages too.
template <Take take, GiveBack giveBack>
void BM_Fresh(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<void*> blocks;
    blocks.reserve(4000000);
    for (auto _ : state)
        for (int i = 0; i < 1000000; ++i) blocks.push_back(take(size));
    for (void* const each : blocks) giveBack(each);
}

void FreeTiny(void* block) { mem_Free(block); }

BENCHMARK(BM_Fresh<std::malloc, std::free>)->Arg(4)->Unit(benchmark::kMillisecond)->Iterations(4);
BENCHMARK(BM_Fresh<mem_OperatorNewTinyThrow, FreeTiny>)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(4);
BENCHMARK(BM_Pair<std::malloc, std::free>)->Arg(4)->Arg(32);
BENCHMARK(BM_Pair<mem_OperatorNewTinyThrow, FreeTiny>)->Arg(4)->Arg(32);
BENCHMARK(BM_Bulk<std::malloc, std::free>)->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bulk<mem_OperatorNewTinyThrow, FreeTiny>)
    ->Arg(4)
    ->Arg(32)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    int count = 0;
    KZMBasAlloc_initialize(count);  // outside of it threads keep no stock of their own
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    KZMBasAlloc_finalize(count);
}
