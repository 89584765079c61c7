// Arrays to the external byte order beside a plain copy of the same bytes, which is as fast as the
// memory: in the caches, and past them.
#include <benchmark/benchmark.h>
#include <omi/omi_SwapperGuts.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

void BM_Memcpy(benchmark::State& state) {
    const std::vector<char> in(static_cast<std::size_t>(state.range(0)), 'x');
    std::vector<char> out(in.size());
    for (auto _ : state) {
        std::memcpy(out.data(), in.data(), in.size());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class T>
void BM_Externalize(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0)) / sizeof(T);
    const std::vector<T> in(n, T{7});
    std::vector<char> out(n * sizeof(T));
    for (auto _ : state) {
        omi_SwapperGuts::ExternalizeArray(out.data(), in.data(), static_cast<std::ptrdiff_t>(n));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* bench) {
    for (const std::int64_t size : {4 << 10, 256 << 10, 4 << 20, 128 << 20}) bench->Arg(size);
}
BENCHMARK(BM_Memcpy)->Apply(Sizes);
BENCHMARK(BM_Externalize<std::uint16_t>)->Apply(Sizes);
BENCHMARK(BM_Externalize<std::uint32_t>)->Apply(Sizes);
BENCHMARK(BM_Externalize<std::uint64_t>)->Apply(Sizes);

}  // namespace
