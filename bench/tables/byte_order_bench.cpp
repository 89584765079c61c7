// Arrays to the byte order of files, in the caches and past them.
#include <omi/omi_SwapperGuts.h>

#include <bit>
#include <cstring>
#include <vector>

#include "support/keys.h"
#ifdef KZM_BENCH_QT
#include <QtEndian>
#endif

namespace {

// All of them have Run(out, in, n).
struct Swapper {
    static constexpr const char* kWho = "omi_SwapperGuts";
    template <class T>
    static void Run(char* out, const T* in, std::size_t n) {
        omi_SwapperGuts::ExternalizeArray(out, in, static_cast<std::ptrdiff_t>(n));
    }
};

// The loop as one writes it, compiled as well as the compiler can for this processor.
#define KZM_BENCH_LOOP(T, swap)                                                                 \
    __attribute__((optimize("O3"), target_clones("avx512f", "avx2", "default"))) void SwapLoop( \
        T* out, const T* in, std::size_t n) {                                                   \
        for (std::size_t i = 0; i < n; ++i) out[i] = swap(in[i]);                               \
    }
KZM_BENCH_LOOP(std::uint16_t, __builtin_bswap16)
KZM_BENCH_LOOP(std::uint32_t, __builtin_bswap32)
KZM_BENCH_LOOP(std::uint64_t, __builtin_bswap64)
struct Loop {
    static constexpr const char* kWho = "compiler::loop";
    template <class T>
    static void Run(char* out, const T* in, std::size_t n) {
        SwapLoop(static_cast<T*>(static_cast<void*>(out)), in, n);
    }
};

#ifdef KZM_BENCH_QT
struct QtSwap {
    static constexpr const char* kWho = "Qt::qToBigEndian";
    template <class T>
    static void Run(char* out, const T* in, std::size_t n) {
        qToBigEndian<T>(in, static_cast<qsizetype>(n), out);
    }
};
#else
using QtSwap = bench::Missing;
#endif

struct Copy {
    static constexpr const char* kWho = "floor::memcpy";
    template <class T>
    static void Run(char* out, const T* in, std::size_t n) {
        std::memcpy(out, in, n * sizeof(T));
    }
};

template <class Who, class T>
void Externalize(benchmark::State& state) {
    const std::size_t n = bench::Count(state) / sizeof(T);
    std::vector<T> in(n);
    for (std::size_t i = 0; i < n; ++i) in[i] = static_cast<T>(i * 0x9e3779b97f4a7c15u);
    std::vector<char> out(n * sizeof(T) + 64);
    for (auto _ : state) {
        Who::Run(out.data(), in.data(), n);
        bench::Keep(out.data());
        benchmark::ClobberMemory();
    }
    std::uint64_t sum = 0;
    for (const char each : out) sum = sum * 31 + static_cast<unsigned char>(each);
    bench::Result(state, sum);
}
// Integers of 16 bits.
template <class Who>
void Externalize16(benchmark::State& state) {
    Externalize<Who, std::uint16_t>(state);
}
// Integers of 32 bits.
template <class Who>
void Externalize32(benchmark::State& state) {
    Externalize<Who, std::uint32_t>(state);
}
// Integers and floating-point numbers of 64 bits.
template <class Who>
void Externalize64(benchmark::State& state) {
    Externalize<Who, std::uint64_t>(state);
}

void Bytes(benchmark::internal::Benchmark* b) {
    b->ArgName("bytes")->Arg(16 << 10)->Arg(1 << 20)->Arg(32 << 20);
}
KZM_WORKLOAD(Externalize16, Bytes, Swapper, Loop, QtSwap, Copy);
KZM_WORKLOAD(Externalize32, Bytes, Swapper, Loop, QtSwap, Copy);
KZM_WORKLOAD(Externalize64, Bytes, Swapper, Loop, QtSwap, Copy);

}  // namespace
