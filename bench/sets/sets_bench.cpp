// Sets of node numbers as models have them.
#include <omi/omi_GeneratedSet.h>

#include <vector>

#include "support/keys.h"
#include "support/memory.h"
#include "support/number_sets.h"

namespace {

using Numbers = std::vector<int>;

// The numbers of boundary sets: `patches` patches of every third number, in no order; or, with 0
// patches, numbers that are spread evenly over 31 bits.
Numbers Members(std::int64_t count, std::int64_t patches, unsigned seed) {
    std::minstd_rand random(seed);
    Numbers numbers;
    for (int i = 0; i < count; ++i) {
        const int patch = static_cast<int>(patches);
        numbers.push_back(patch == 0
                              ? static_cast<int>(random())
                              : i % patch * 60000 + static_cast<int>(seed % 7) + i / patch * 3);
    }
    return bench::Shuffled(numbers, seed);
}

template <class Set>
Set Filled(const Numbers& numbers) {
    Set set;
    for (const int v : numbers) set.Insert(v);
    return set;
}
template <class Set, unsigned seed = 1>
const Set& FilledOnce(const benchmark::State& state) {
    const auto make = [&] {
        Set set = Filled<Set>(Members(state.range(0), state.range(1), seed));
        bench::Keep(set.Size());
        return set;
    };
    return bench::Once(state.range(0), state.range(1), make);
}

// Collecting members in no order, and asking once for their number.
template <class Set>
void Collect(benchmark::State& state) {
    const Numbers numbers = Members(state.range(0), state.range(1), 1);
    std::size_t size = 0;
    for (auto _ : state) {
        const Set set = Filled<Set>(numbers);
        size = static_cast<std::size_t>(set.Size());
        bench::Keep(size);
    }
    bench::Result(state, size);
    bench::EachOf(state, numbers.size());
    bench::MeasureBytes(
        state, numbers.size(),
        [](std::int64_t count, std::int64_t patches) {
            const Numbers members = Members(count, patches, 1);
            return bench::BytesOf([&] {
                Set set = Filled<Set>(members);
                bench::Keep(set.Size());
                return set;
            });
        },
        state.range(1));
}

// A copy, its union with another set, then what that has in common with a third.
template <class Set>
void Combine(benchmark::State& state) {
    const Set& a = FilledOnce<Set, 1>(state);
    const Set& b = FilledOnce<Set, 4>(state);
    const Set& c = FilledOnce<Set, 3>(state);
    std::size_t size = 0;
    for (auto _ : state) {
        Set set(a);
        set += b;
        set &= c;
        size = static_cast<std::size_t>(set.Size());
        bench::Keep(size);
    }
    bench::Result(state, size);
}

// Is a number a member? Members and their neighbours, in no order.
template <class Set>
void IsMember(benchmark::State& state) {
    const Set& set = FilledOnce<Set>(state);
    Numbers asked = Members(state.range(0), state.range(1), 1);
    for (std::size_t i = 0; i < asked.size(); i += 2) ++asked[i];
    asked.resize(1000);
    std::uint64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const int v : asked) found += set.Has(v);
        bench::Keep(found);
    }
    bench::Result(state, found);
    bench::EachOf(state, asked.size());
}

// A pass over the members.
template <class Set>
void IterateMembers(benchmark::State& state) {
    const Set& set = FilledOnce<Set>(state);
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        set.Each([&](int v) { sum += static_cast<unsigned>(v); });
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, bench::Count(state));
}

struct Generated : omi_GeneratedSet {
    static constexpr const char* kWho = "omi_GeneratedSet";
    bool Has(int v) const { return IsMember(v); }
};
template <class Set>
void InsertEveryThird(Set& set, int first, int last) {
    if constexpr (std::is_same_v<Set, Generated>)
        set.Insert(first, last, 3);
    else
        for (int v = first; v <= last; v += 3) set.Insert(v);
}

// Every third number of several ranges: is a number a member?
template <class Set>
void GeneratedIsMember(benchmark::State& state) {
    Set set;
    const int ranges = static_cast<int>(state.range(0));
    for (int i = 0; i < ranges; ++i) InsertEveryThird(set, i * 60000, i * 60000 + 30000);
    std::uint64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (int i = 0, v = 0; i < 1000; ++i, v = (v + 9973) % (60000 * ranges))
            found += set.Has(v);
        bench::Keep(found);
    }
    bench::Result(state, found);
    bench::EachOf(state, 1000);
}

using bench::Set;
using bench::SparseSet;
using Ordered = bench::Types<bench::Roaring, bench::Judy1, bench::StdSet, bench::AbslSet>;

void Kinds(benchmark::internal::Benchmark* b) {
    b->ArgNames({"members", "patches"})->Args({1000, 0})->Args({100000, 32});
}
void Few(benchmark::internal::Benchmark* b) {
    b->ArgNames({"members", "patches"})->Args({1000, 0});
}
void Ranges(benchmark::internal::Benchmark* b) { b->ArgName("ranges")->Arg(1)->Arg(32); }

KZM_WORKLOAD(Collect, Kinds, Set, SparseSet, Ordered, bench::StdHashSet, bench::AbslHashSet);
KZM_WORKLOAD(Combine, Kinds, Set, SparseSet, Ordered);
KZM_WORKLOAD(IsMember, Kinds, Set, Ordered, bench::StdHashSet, bench::AbslHashSet);
KZM_WORKLOAD(IsMember, Few, SparseSet);
KZM_WORKLOAD(IterateMembers, Kinds, Set, SparseSet, Ordered, bench::StdHashSet, bench::AbslHashSet);
KZM_WORKLOAD(GeneratedIsMember, Ranges, Generated, Set, bench::Roaring);

}  // namespace
