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
#include <type_traits>

namespace bench {

// The name of a type that has no kWho of its own; to be specialised beside its use.
template <class T>
inline constexpr const char* kWho = T::kWho;

// Stands for a peer that is not installed; workloads leave it out.
struct Missing {};

// Several types under one name, wherever a workload takes types.
template <class... Whos>
struct Types {};

// To be said once by every workload: a number that follows from its result and is the same for all
// who do it, such as a sum or a size. The report refuses workloads whose results differ.
inline void Result(benchmark::State& state, std::uint64_t value) {
    state.counters["result"] = static_cast<double>(value & 0xffffffff);
}

// As benchmark::DoNotOptimize of a constant: that of a variable lets this compiler lose the value.
template <class T>
void Keep(const T& value) {
    benchmark::DoNotOptimize(value);
}

// With this, times are shown for one of `count` entries that an iteration works on.
inline void EachOf(benchmark::State& state, std::size_t count) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

// Memory that an entry takes, in bytes; see also support/memory.h.
inline void BytesEach(benchmark::State& state, double bytes) { state.counters["bytes"] = bytes; }

using Sizes = void (*)(benchmark::internal::Benchmark*);

template <class Who>
struct Registration {
    template <class Run>
    static void Add(const char* workload, Sizes sizes, Run run) {
        const std::string name = std::string(workload) + "/" + kWho<Who>;
        sizes(benchmark::RegisterBenchmark(
            name.c_str(), [run](benchmark::State& state) { run.template operator()<Who>(state); }));
    }
};
template <>
struct Registration<Missing> {
    template <class Run>
    static void Add(const char*, Sizes, Run) {}
};
template <class... Whos>
struct Registration<Types<Whos...>> {
    template <class Run>
    static void Add(const char* workload, Sizes sizes, Run run) {
        (Registration<Whos>::Add(workload, sizes, run), ...);
    }
};

template <class... Whos, class Run>
int Register(const char* workload, Sizes sizes, Run run) {
    Registration<Types<Whos...>>::Add(workload, sizes, run);
    return 0;
}

}  // namespace bench

// KZM_WORKLOAD(Name, Sizes, Types...): Sizes is a function that gives a benchmark its arguments.
#define KZM_WORKLOAD(Name, Sizes, ...) KZM_WORKLOAD_AT(__COUNTER__, Name, Sizes, __VA_ARGS__)
#define KZM_WORKLOAD_AT(n, ...) KZM_WORKLOAD_AS(n, __VA_ARGS__)
#define KZM_WORKLOAD_AS(n, Name, Sizes, ...)                                  \
    [[maybe_unused]] const int g_workload_##n = bench::Register<__VA_ARGS__>( \
        #Name, Sizes, []<class Who>(benchmark::State& state) { Name<Who>(state); })
