// One workload over several containers. A workload is a function template over the container's
// type,
//
//     template <class Map>
//     void FindRandom(benchmark::State& state);
//     KZM_WORKLOAD(FindRandom, Sizes, Table, StdMap);
//
// and appears as FindRandom/omi_IntTable/100000, FindRandom/std::map/100000: the workload, who does
// it, the arguments. What the report makes of such a name is in bench/README.md.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace bench {

// The name of a type that has no kWho of its own; to be specialised beside its use.
template <class T>
inline constexpr const char* kWho = T::kWho;

// To be said once by every workload: a number that follows from its result and is the same for all
// who do it, such as a sum or a size. The report refuses workloads whose results differ.
inline void Result(benchmark::State& state, std::uint64_t value) {
    state.counters["result"] = static_cast<double>(value & 0xffffffff);
}

// Memory that an entry takes, which the report compares too.
inline void BytesEach(benchmark::State& state, double bytes) { state.counters["bytes"] = bytes; }

template <class... Whos, class Run>
int Register(const char* workload, void (*sizes)(benchmark::internal::Benchmark*), Run run) {
    const auto add = [&]<class Who>() {
        const std::string name = std::string(workload) + "/" + kWho<Who>;
        sizes(benchmark::RegisterBenchmark(
            name.c_str(), [run](benchmark::State& state) { run.template operator()<Who>(state); }));
    };
    (add.template operator()<Whos>(), ...);
    return 0;
}

}  // namespace bench

// KZM_WORKLOAD(Name, Sizes, Types...): Sizes is a function that gives a benchmark its arguments.
#define KZM_WORKLOAD(Name, Sizes, ...) KZM_WORKLOAD_AT(__COUNTER__, Name, Sizes, __VA_ARGS__)
#define KZM_WORKLOAD_AT(n, ...) KZM_WORKLOAD_AS(n, __VA_ARGS__)
#define KZM_WORKLOAD_AS(n, Name, Sizes, ...)                                  \
    [[maybe_unused]] const int g_workload_##n = bench::Register<__VA_ARGS__>( \
        #Name, Sizes, []<class Who>(benchmark::State& state) { Name<Who>(state); })
