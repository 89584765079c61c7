// Node sets as bit vectors, beside std::vector<bool>, a sorted std::vector and, for the operators
// on words, a std::bitset of the same range.
#include <benchmark/benchmark.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlkBitVectTrav.h>

#include <algorithm>
#include <bitset>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace {

using Bools = std::vector<bool>;
using Sorted = std::vector<unsigned>;

constexpr unsigned kRange = 1u << 20;
using Bits = std::bitset<kRange>;

// Every `stride`-th number below kRange.
template <class Set>
Set Members(unsigned stride);
template <>
omi_BlkBitVect Members(unsigned stride) {
    omi_BlkBitVect set;
    for (unsigned i = 0; i < kRange; i += stride) set.SetBit(i);
    return set;
}
template <>
Bools Members(unsigned stride) {
    Bools set(kRange);
    for (unsigned i = 0; i < kRange; i += stride) set[i] = true;
    return set;
}
template <>
Bits Members(unsigned stride) {
    static Bits set;
    set.reset();
    for (unsigned i = 0; i < kRange; i += stride) set[i] = true;
    return set;
}
template <>
Sorted Members(unsigned stride) {
    Sorted set;
    for (unsigned i = 0; i < kRange; i += stride) set.push_back(i);
    return set;
}

enum class Op { And, Or, Xor, Minus };

template <Op op>
void Combine(omi_BlkBitVect& a, const omi_BlkBitVect& b) {
    if constexpr (op == Op::And) a &= b;
    if constexpr (op == Op::Or) a |= b;
    if constexpr (op == Op::Xor) a ^= b;
    if constexpr (op == Op::Minus) a -= b;
}
template <Op op>
void Combine(Bits& a, const Bits& b) {
    if constexpr (op == Op::And) a &= b;
    if constexpr (op == Op::Or) a |= b;
    if constexpr (op == Op::Xor) a ^= b;
    if constexpr (op == Op::Minus) a &= ~b;
}
template <Op op>
void Combine(Sorted& a, const Sorted& b) {
    Sorted both;
    const auto to = std::back_inserter(both);
    if constexpr (op == Op::And) std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), to);
    if constexpr (op == Op::Or) std::set_union(a.begin(), a.end(), b.begin(), b.end(), to);
    if constexpr (op == Op::Xor)
        std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), to);
    if constexpr (op == Op::Minus) std::set_difference(a.begin(), a.end(), b.begin(), b.end(), to);
    a.swap(both);
}

std::size_t Count(const omi_BlkBitVect& set) { return set.Size(); }
std::size_t Count(const Bits& set) { return set.count(); }
std::size_t Count(const Sorted& set) { return set.size(); }

bool Has(const omi_BlkBitVect& set, unsigned i) { return set.IsSet(i); }
bool Has(const Bools& set, unsigned i) { return set[i]; }
bool Has(const Sorted& set, unsigned i) { return std::binary_search(set.begin(), set.end(), i); }

unsigned Sum(const omi_BlkBitVect& set) {
    unsigned sum = 0;
    omi_BlkBitVectTrav trav(&set);
    unsigned i;
    for (bool more = trav.First(i); more; more = trav.Next(i)) sum += i;
    return sum;
}
unsigned Sum(const Bools& set) {
    unsigned sum = 0;
    for (unsigned i = 0; i < kRange; ++i)
        if (set[i]) sum += i;
    return sum;
}
unsigned Sum(const Sorted& set) {
    unsigned sum = 0;
    for (const unsigned i : set) sum += i;
    return sum;
}

// What does it cost to mark members one by one?
template <class Set>
void BM_Mark(benchmark::State& state) {
    const auto stride = static_cast<unsigned>(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(Members<Set>(stride));
}

// Is a number a member? In no order.
template <class Set>
void BM_Test(benchmark::State& state) {
    const Set set = Members<Set>(static_cast<unsigned>(state.range(0)));
    std::vector<unsigned> numbers(1 << 14);
    std::minstd_rand random(1);
    for (unsigned& number : numbers) number = static_cast<unsigned>(random()) % kRange;
    for (auto _ : state) {
        unsigned found = 0;
        for (const unsigned number : numbers) found += Has(set, number);
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() << 14);
}

// An operator on the words of two sets. Its result has as many members as the first set, or nearly.
template <class Set, Op op>
void BM_Combine(benchmark::State& state) {
    const auto stride = static_cast<unsigned>(state.range(0));
    const auto a = std::make_unique<Set>(Members<Set>(stride));
    const auto b = std::make_unique<Set>(Members<Set>(stride + 1));
    const auto both = std::make_unique<Set>(*a);
    for (auto _ : state) {
        Combine<op>(*both, *b);
        benchmark::DoNotOptimize(both.get());
        benchmark::ClobberMemory();
    }
}

// The union of 16 sets, from nothing, and the number of its members.
template <class Set>
void BM_UniteMany(benchmark::State& state) {
    std::vector<std::unique_ptr<Set>> sets;
    for (unsigned i = 0; i < 16; ++i)
        sets.push_back(
            std::make_unique<Set>(Members<Set>(static_cast<unsigned>(state.range(0)) + i)));
    for (auto _ : state) {
        const auto all = std::make_unique<Set>();
        for (const auto& set : sets) Combine<Op::Or>(*all, *set);
        benchmark::DoNotOptimize(Count(*all));
    }
}

template <class Set>
void BM_WalkMembers(benchmark::State& state) {
    const Set set = Members<Set>(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(Sum(set));
}

BENCHMARK(BM_Mark<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_Mark<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_Test<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_Test<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_Test<Sorted>)->Arg(1)->Arg(37);
#define KZM_BENCH_COMBINE(op)                                  \
    BENCHMARK(BM_Combine<omi_BlkBitVect, op>)->Arg(1)->Arg(7); \
    BENCHMARK(BM_Combine<Bits, op>)->Arg(1)->Arg(7)
KZM_BENCH_COMBINE(Op::And);
KZM_BENCH_COMBINE(Op::Or);
KZM_BENCH_COMBINE(Op::Xor);
KZM_BENCH_COMBINE(Op::Minus);
BENCHMARK(BM_Combine<Sorted, Op::Or>)->Arg(7);
BENCHMARK(BM_UniteMany<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_UniteMany<Bits>)->Arg(1)->Arg(37);
BENCHMARK(BM_UniteMany<Sorted>)->Arg(37);
BENCHMARK(BM_WalkMembers<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_WalkMembers<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_WalkMembers<Sorted>)->Arg(1)->Arg(37);

}  // namespace
