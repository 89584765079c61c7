// Node sets as bit vectors, beside std::vector<bool> over the same range and a sorted std::vector.
#include <benchmark/benchmark.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlkBitVectTrav.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

using Bools = std::vector<bool>;
using Sorted = std::vector<unsigned>;

constexpr unsigned kRange = 1u << 20;

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
Sorted Members(unsigned stride) {
    Sorted set;
    for (unsigned i = 0; i < kRange; i += stride) set.push_back(i);
    return set;
}

void Unite(omi_BlkBitVect& a, const omi_BlkBitVect& b) { a |= b; }
void Unite(Bools& a, const Bools& b) {
    for (size_t i = 0; i < a.size(); ++i) a[i] = a[i] | b[i];
}
void Unite(Sorted& a, const Sorted& b) {
    Sorted both;
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
    a.swap(both);
}

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

// Copy and union of two sets.
template <class Set>
void BM_Union(benchmark::State& state) {
    const Set a = Members<Set>(static_cast<unsigned>(state.range(0)));
    const Set b = Members<Set>(static_cast<unsigned>(state.range(0)) + 1);
    for (auto _ : state) {
        Set both = a;
        Unite(both, b);
        benchmark::DoNotOptimize(&both);
    }
}

template <class Set>
void BM_WalkMembers(benchmark::State& state) {
    const Set set = Members<Set>(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(Sum(set));
}

BENCHMARK(BM_Mark<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_Mark<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_Union<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_Union<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_Union<Sorted>)->Arg(1)->Arg(37);
BENCHMARK(BM_WalkMembers<omi_BlkBitVect>)->Arg(1)->Arg(37);
BENCHMARK(BM_WalkMembers<Bools>)->Arg(1)->Arg(37);
BENCHMARK(BM_WalkMembers<Sorted>)->Arg(1)->Arg(37);

}  // namespace
