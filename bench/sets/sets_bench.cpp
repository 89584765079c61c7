// Sets of node numbers: the bit-vector set and the lazy array beside CRoaring, Judy and std::set.
#include <Judy.h>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <roaring/roaring.h>

#include <algorithm>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

class Roaring {
public:
    Roaring() : m_bits(roaring_bitmap_create()) {}
    Roaring(const Roaring& other) : m_bits(roaring_bitmap_copy(other.m_bits)) {}
    Roaring& operator=(const Roaring&) = delete;
    ~Roaring() { roaring_bitmap_free(m_bits); }
    void Insert(int v) { roaring_bitmap_add(m_bits, static_cast<unsigned>(v)); }
    bool IsMember(int v) const { return roaring_bitmap_contains(m_bits, static_cast<unsigned>(v)); }
    auto Size() const { return roaring_bitmap_get_cardinality(m_bits); }
    Roaring& operator+=(const Roaring& other) {
        roaring_bitmap_or_inplace(m_bits, other.m_bits);
        return *this;
    }
    Roaring& operator&=(const Roaring& other) {
        roaring_bitmap_and_inplace(m_bits, other.m_bits);
        return *this;
    }
    long Sum() const {
        long sum = 0;
        roaring_iterate(
            m_bits,
            [](unsigned v, void* to) {
                *static_cast<long*>(to) += v;
                return true;
            },
            &sum);
        return sum;
    }

private:
    roaring_bitmap_t* m_bits;
};

class Judy {
public:
    Judy() = default;
    Judy(const Judy& other) { *this += other; }
    Judy& operator=(const Judy&) = delete;
    ~Judy() { Judy1FreeArray(&m_bits, nullptr); }
    void Insert(int v) { Judy1Set(&m_bits, static_cast<Word_t>(v), nullptr); }
    bool IsMember(int v) const { return Judy1Test(m_bits, static_cast<Word_t>(v), nullptr); }
    auto Size() const { return Judy1Count(m_bits, 0, ~Word_t{0}, nullptr); }
    Judy& operator+=(const Judy& other) {
        Word_t v = 0;
        for (int more = Judy1First(other.m_bits, &v, nullptr); more;
             more = Judy1Next(other.m_bits, &v, nullptr))
            Judy1Set(&m_bits, v, nullptr);
        return *this;
    }
    Judy& operator&=(const Judy& other) {
        Word_t v = 0;
        for (int more = Judy1First(m_bits, &v, nullptr); more;
             more = Judy1Next(m_bits, &v, nullptr))
            if (!Judy1Test(other.m_bits, v, nullptr)) Judy1Unset(&m_bits, v, nullptr);
        return *this;
    }
    long Sum() const {
        long sum = 0;
        Word_t v = 0;
        for (int more = Judy1First(m_bits, &v, nullptr); more;
             more = Judy1Next(m_bits, &v, nullptr))
            sum += static_cast<long>(v);
        return sum;
    }

private:
    void* m_bits = nullptr;
};

class Tree : public std::set<int> {
public:
    void Insert(int v) { insert(v); }
    bool IsMember(int v) const { return count(v) != 0; }
    auto Size() const { return size(); }
    Tree& operator+=(const Tree& other) {
        insert(other.begin(), other.end());
        return *this;
    }
    Tree& operator&=(const Tree& other) {
        std::erase_if(*this, [&](int v) { return other.count(v) == 0; });
        return *this;
    }
};

template <class Set>
long Sum(const Set& set) {
    if constexpr (requires { set.Sum(); }) {
        return set.Sum();
    } else {
        long sum = 0;
        for (const int v : set) sum += v;
        return sum;
    }
}

// Count numbers as boundary sets have them: 32 patches of every third number, shuffled; or, with
// apart, uniform over all of 31 bits.
std::vector<int> Numbers(int count, bool apart, unsigned seed) {
    std::minstd_rand random(seed);
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i) {
        const int patch = i % 32 * 60000 + static_cast<int>(seed % 7) + i / 32 * 3;
        numbers.push_back(apart ? static_cast<int>(random()) : patch);
    }
    std::shuffle(numbers.begin(), numbers.end(), random);
    return numbers;
}

template <class Set>
Set Filled(const std::vector<int>& numbers) {
    Set set;
    for (const int v : numbers) set.Insert(v);
    return set;
}

template <class Set>
Set Example(const benchmark::State& state, unsigned seed) {
    return Filled<Set>(Numbers(static_cast<int>(state.range(0)), state.range(1) != 0, seed));
}

// What do collecting members in no order and one question for their number cost, and how many bytes
// does a member take then?
template <class Set>
void BM_Collect(benchmark::State& state) {
    const auto numbers = Numbers(static_cast<int>(state.range(0)), state.range(1) != 0, 1);
    for (auto _ : state) {
        const Set set = Filled<Set>(numbers);
        benchmark::DoNotOptimize(set.Size());
    }
    malloc_trim(0);
    const auto before = mallinfo2();
    const Set set = Filled<Set>(numbers);
    benchmark::DoNotOptimize(set.Size());
    const auto after = mallinfo2();
    const double bytes =
        static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd);
    state.counters["bytes/member"] = bytes / static_cast<double>(set.Size());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Copy, union, then intersection with the second set: the price of an operator on words.
template <class Set>
void BM_Combine(benchmark::State& state) {
    const Set a = Example<Set>(state, 1);
    const Set b = Example<Set>(state, 4);
    benchmark::DoNotOptimize(a.Size() + b.Size());
    for (auto _ : state) {
        Set both(a);
        both += b;
        both &= b;
        benchmark::DoNotOptimize(both.Size());
    }
}

template <class Set>
void BM_IsMember(benchmark::State& state) {
    const auto numbers = Numbers(static_cast<int>(state.range(0)), state.range(1) != 0, 1);
    const Set set = Filled<Set>(numbers);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(set.IsMember(numbers[next] + 1));
        next = next + 1 < numbers.size() ? next + 1 : 0;
    }
}

template <class Set>
void BM_Walk(benchmark::State& state) {
    const Set set = Example<Set>(state, 1);
    for (auto _ : state) benchmark::DoNotOptimize(Sum(set));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A generated set never lists its members: what does a question cost it, by number of generators?
void BM_IsMemberGenerated(benchmark::State& state) {
    omi_GeneratedSet set;
    for (int i = 0; i < state.range(0); ++i) set.Insert(i * 60000, i * 60000 + 30000, 3);
    int v = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(set.IsMember(v));
        v = (v + 9973) % (60000 * static_cast<int>(state.range(0)));
    }
}

void Cases(benchmark::internal::Benchmark* b) { b->Args({1000, 1})->Args({100000, 0}); }

#define KZM_BENCH_SETS(BM)                      \
    BENCHMARK(BM<omi_Set>)->Apply(Cases);       \
    BENCHMARK(BM<omi_SparseSet>)->Apply(Cases); \
    BENCHMARK(BM<Roaring>)->Apply(Cases);       \
    BENCHMARK(BM<Judy>)->Apply(Cases);          \
    BENCHMARK(BM<Tree>)->Apply(Cases)
KZM_BENCH_SETS(BM_Collect);
KZM_BENCH_SETS(BM_Combine);
KZM_BENCH_SETS(BM_Walk);
KZM_BENCH_SETS(BM_IsMember);
BENCHMARK(BM_IsMemberGenerated)->Arg(1)->Arg(32);

}  // namespace
