// Node sets as bits. The arguments: the share of members in percent, and in how many ranges they
// lie: one from 0 on, or as many equal ones spread over the numbers of 31 bits.
#include <bit>
#include <vector>

#include "support/keys.h"
#include "support/memory.h"
#include "support/number_sets.h"

namespace {

using Numbers = std::vector<int>;

// The words of the numbers below 2^20 in one array, which every operator goes through as fast as
// the compiler can for this processor.
#define KZM_BENCH_WORDS(Name, op)                                                           \
    __attribute__((optimize("O3"), target_clones("avx512f", "avx2", "default"))) void Name( \
        unsigned* a, const unsigned* b, std::size_t n) {                                    \
        for (std::size_t i = 0; i < n; ++i) a[i] = op;                                      \
    }
KZM_BENCH_WORDS(AndWords, a[i] & b[i])
KZM_BENCH_WORDS(OrWords, a[i] | b[i])
KZM_BENCH_WORDS(XorWords, a[i] ^ b[i])
KZM_BENCH_WORDS(WithoutWords, a[i] & ~b[i])
class Words {
public:
    static constexpr const char* kWho = "floor::words";
    void Insert(int v) { m_words[static_cast<std::size_t>(v >> 5)] |= 1u << (v & 31); }
    bool Has(int v) const { return m_words[static_cast<std::size_t>(v >> 5)] >> (v & 31) & 1; }
    std::size_t Size() const {
        std::size_t size = 0;
        for (const unsigned word : m_words) size += static_cast<std::size_t>(std::popcount(word));
        return size;
    }
    void operator&=(const Words& other) { Combine(AndWords, other); }
    void operator+=(const Words& other) { Combine(OrWords, other); }
    void operator^=(const Words& other) { Combine(XorWords, other); }
    void operator-=(const Words& other) { Combine(WithoutWords, other); }

private:
    template <class Op>
    void Combine(Op op, const Words& other) {
        op(m_words.data(), other.m_words.data(), m_words.size());
    }
    std::vector<unsigned> m_words = std::vector<unsigned>(1 << 15);
};

// Of 2^20 numbers those that chance takes, and always the first and the last.
Numbers Members(std::int64_t percent, std::int64_t ranges, unsigned seed) {
    std::minstd_rand random(seed);
    Numbers members;
    const auto last = (1u << 20) - 1;
    const unsigned length = last / static_cast<unsigned>(ranges) + 1;
    const unsigned distance = ranges == 1 ? 0 : 2140000000u / static_cast<unsigned>(ranges);
    for (unsigned i = 0; i <= last; ++i)
        if (i == 0 || i == last || static_cast<std::int64_t>(random() % 100) < percent)
            members.push_back(static_cast<int>(i / length * distance + i % length));
    return members;
}

template <class Set>
Set Filled(const Numbers& members) {
    Set set;
    for (const int v : members) set.Insert(v);
    return set;
}
// One of several sets that are alike.
template <class Set, unsigned seed = 1>
const Set& FilledOnce(const benchmark::State& state) {
    const auto make = [&] { return Filled<Set>(Members(state.range(0), state.range(1), seed)); };
    return bench::Once(state.range(0), state.range(1), make);
}

// Setting bits one by one in ascending order, from nothing, and the end.
template <class Set>
void BitsSetEach(benchmark::State& state) {
    const Numbers members = Members(state.range(0), state.range(1), 1);
    std::size_t size = 0;
    for (auto _ : state) {
        const Set set = Filled<Set>(members);
        bench::Keep(&set);
    }
    size = Filled<Set>(members).Size();
    bench::Result(state, size);
    bench::EachOf(state, members.size());
    bench::MeasureBytes(
        state, members.size(),
        [](std::int64_t percent, std::int64_t ranges) {
            const Numbers numbers = Members(percent, ranges, 1);
            return bench::BytesOf([&] { return Filled<Set>(numbers); });
        },
        state.range(1));
}

// Is a number a member? In no order, of the numbers of another set.
template <class Set>
void BitsTest(benchmark::State& state) {
    const Set& set = FilledOnce<Set>(state);
    Numbers asked = bench::Shuffled(Members(50, state.range(1), 7));
    asked.resize(1 << 16);
    std::uint64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const int v : asked) found += set.Has(v);
        bench::Keep(found);
    }
    bench::Result(state, found);
    bench::EachOf(state, asked.size());
}

template <class Set, class Op>
void Combine(benchmark::State& state, Op op) {
    const Set& a = FilledOnce<Set, 1>(state);
    const Set& b = FilledOnce<Set, 2>(state);
    for (auto _ : state) {
        Set result(a);
        op(result, b);
        bench::Keep(&result);
    }
    Set result(a);
    op(result, b);
    bench::Result(state, static_cast<std::uint64_t>(result.Size()));
}
// A copy and what it has in common with another set.
template <class Set>
void BitsAnd(benchmark::State& state) {
    Combine<Set>(state, [](Set& a, const Set& b) { a &= b; });
}
// A copy and its union with another set.
template <class Set>
void BitsOr(benchmark::State& state) {
    Combine<Set>(state, [](Set& a, const Set& b) { a += b; });
}
// A copy and its symmetric difference from another set.
template <class Set>
void BitsXor(benchmark::State& state) {
    Combine<Set>(state, [](Set& a, const Set& b) { a ^= b; });
}
// A copy without the members of another set.
template <class Set>
void BitsDifference(benchmark::State& state) {
    Combine<Set>(state, [](Set& a, const Set& b) { a -= b; });
}
// A copy and what it has in common with another set, and how many members that are.
template <class Set>
void BitsAndCount(benchmark::State& state) {
    Combine<Set>(state, [](Set& a, const Set& b) {
        a &= b;
        bench::Keep(a.Size());
    });
}

// The union of 16 sets, from nothing.
template <class Set>
void BitsUnionMany(benchmark::State& state) {
    const std::vector<Set>& sets = bench::Once(state.range(0), state.range(1), [&] {
        std::vector<Set> some;
        some.reserve(16);
        for (unsigned seed = 1; seed <= 16; ++seed)
            some.push_back(Filled<Set>(Members(state.range(0), state.range(1), seed)));
        return some;
    });
    const auto unite = [&](Set& all) {
        for (const Set& set : sets) all += set;
    };
    for (auto _ : state) {
        Set all;
        unite(all);
        bench::Keep(&all);
    }
    Set all;
    unite(all);
    bench::Result(state, static_cast<std::uint64_t>(all.Size()));
}

// A pass over the members.
template <class Set>
void BitsIterate(benchmark::State& state) {
    const Set& set = FilledOnce<Set>(state);
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        set.Each([&](int v) { sum += static_cast<unsigned>(v); });
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, static_cast<std::size_t>(set.Size()));
}

using bench::BitVector;
// Those that hold a bit for each number know no ranges far apart.
using Plain = bench::Types<bench::StdBits, bench::BoostBits>;
using Sparse = bench::Types<bench::Roaring, bench::Judy1>;

void Kinds(benchmark::internal::Benchmark* b) {
    b->ArgNames({"percent", "ranges"})
        ->Args({100, 1})
        ->Args({95, 1})
        ->Args({2, 1})
        ->Args({100, 50});
}
void OneRange(benchmark::internal::Benchmark* b) {
    b->ArgNames({"percent", "ranges"})->Args({100, 1})->Args({95, 1})->Args({2, 1});
}

KZM_WORKLOAD(BitsSetEach, Kinds, BitVector, Sparse);
KZM_WORKLOAD(BitsSetEach, OneRange, Plain);
KZM_WORKLOAD(BitsTest, Kinds, BitVector, Sparse);
KZM_WORKLOAD(BitsTest, OneRange, Plain, Words);
KZM_WORKLOAD(BitsAnd, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsAnd, OneRange, bench::BoostBits, Words);
KZM_WORKLOAD(BitsOr, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsOr, OneRange, bench::BoostBits, Words);
KZM_WORKLOAD(BitsXor, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsXor, OneRange, bench::BoostBits, Words);
KZM_WORKLOAD(BitsDifference, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsDifference, OneRange, bench::BoostBits, Words);
KZM_WORKLOAD(BitsAndCount, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsAndCount, OneRange, bench::BoostBits);
KZM_WORKLOAD(BitsUnionMany, Kinds, BitVector, bench::Roaring);
KZM_WORKLOAD(BitsUnionMany, OneRange, bench::BoostBits, Words);
KZM_WORKLOAD(BitsIterate, Kinds, BitVector, Sparse);
KZM_WORKLOAD(BitsIterate, OneRange, bench::BoostBits);

}  // namespace
