// Memory that a container takes, whatever heap its entries come from.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace bench {

// Makes a container for the arguments of a workload and says BytesOf it.
using Weigh = double (*)(std::int64_t first, std::int64_t second);

// Says how many bytes each of `count` entries takes. `weigh` runs in a process that has done
// nothing else, so that holes which other workloads left in the heap do not matter. `second` is the
// second argument, of workloads that have one.
void MeasureBytes(benchmark::State& state, std::size_t count, Weigh weigh, std::int64_t second = 0);

// Bytes of this process in pages of its own.
double PrivateBytes();

// What `make` returns, in bytes of pages: with few entries that counts too much.
template <class Make>
double BytesOf(Make make) {
    const double before = PrivateBytes();
    const auto made = make();
    benchmark::DoNotOptimize(&made);
    return PrivateBytes() - before;
}

}  // namespace bench
