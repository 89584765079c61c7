// The list of the interface beside the standard sequences and, where it is installed, the shared
// vector of Qt: the work that lists are made for, and what the sharing costs where nothing shares.
#include <benchmark/benchmark.h>
#include <cow/cow_List.h>

#include <concepts>
#include <deque>
#include <vector>
#ifdef KZM_BENCH_QT
#include <QVector>
#endif

namespace {

using List = cow_List<int>;
// The same, made ready for its elements, so that its blocks are large.
struct SizedList : List {};
using Vector = std::vector<int>;
using Deque = std::deque<int>;

template <class C>
concept Standard = !std::derived_from<C, List>;

template <Standard C>
void Append(C& c, int v) {
    c.push_back(v);
}
void Append(List& list, int v) { list.Append(v); }

void Prepend(List& list, int v) { list.Prepend(v); }
void Prepend(Deque& deque, int v) { deque.push_front(v); }

template <Standard C>
int Read(const C& c, int i) {
    return c[static_cast<std::size_t>(i)];
}
int Read(const List& list, int i) { return list.ConstGet(i); }

template <Standard C>
void Write(C& c, int i, int v) {
    c[static_cast<std::size_t>(i)] = v;
}
void Write(List& list, int i, int v) { list.Get(i) = v; }

template <Standard C>
void Assign(C& c, const Vector& from) {
    c.assign(from.begin(), from.end());
}
void Assign(List& list, const Vector& from) {
    list.SetFromArray(from.data(), static_cast<int>(from.size()));
}

#ifdef KZM_BENCH_QT
using Shared = QVector<int>;
int Read(const Shared& vector, int i) { return vector.at(i); }
void Write(Shared& vector, int i, int v) { vector[i] = v; }
#endif

template <class C>
C Empty(const benchmark::State&) {
    return C();
}
template <>
SizedList Empty(const benchmark::State& state) {
    return {List(cow_ListConstruct(), static_cast<int>(state.range(0)))};
}

template <class C>
C Filled(const benchmark::State& state) {
    C c = Empty<C>(state);
    for (int i = 0; i < state.range(0); ++i) Append(c, i);
    return c;
}

// Filling from empty: what do blocks cost, and what do they save by never moving elements?
template <class C>
void BM_Append(benchmark::State& state) {
    for (auto _ : state) {
        const C c = Filled<C>(state);
        benchmark::DoNotOptimize(&c);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class C>
void BM_Prepend(benchmark::State& state) {
    for (auto _ : state) {
        C c;
        for (int i = 0; i < state.range(0); ++i) Prepend(c, i);
        benchmark::DoNotOptimize(&c);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Range-for over everything.
template <class C>
void BM_Walk(benchmark::State& state) {
    const C c = Filled<C>(state);
    for (auto _ : state) {
        unsigned sum = 0;
        for (const int each : c) sum += static_cast<unsigned>(each);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Reading, then writing, by index in scattered order.
template <class C>
void BM_ReadAt(benchmark::State& state) {
    const C c = Filled<C>(state);
    const int mask = static_cast<int>(state.range(0)) - 1;
    for (auto _ : state) {
        unsigned sum = 0;
        for (int i = 0; i <= mask; ++i) sum += static_cast<unsigned>(Read(c, i * 77 & mask));
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
template <class C>
void BM_WriteAt(benchmark::State& state) {
    C c = Filled<C>(state);
    const int mask = static_cast<int>(state.range(0)) - 1;
    for (auto _ : state) {
        for (int i = 0; i <= mask; ++i) Write(c, i * 77 & mask, i);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Passing by value.
template <class C>
void BM_Copy(benchmark::State& state) {
    const C original = Filled<C>(state);
    for (auto _ : state) {
        C copy = original;
        benchmark::DoNotOptimize(&copy);
    }
}

// Keeping a snapshot: copy, write one element, drop the copy. The list pays for its block table
// and one block; how far below those that copy everything?
template <class C>
void BM_SnapshotAndWrite(benchmark::State& state) {
    const C original = Filled<C>(state);
    for (auto _ : state) {
        C copy = original;
        Write(copy, 7, 1);
        benchmark::DoNotOptimize(&copy);
    }
}

// Replacing all elements in bulk: how close to one memcpy?
template <class C>
void BM_Assign(benchmark::State& state) {
    const Vector source(static_cast<std::size_t>(state.range(0)), 3);
    C c = Filled<C>(state);
    for (auto _ : state) {
        Assign(c, source);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(1 << 10)->Arg(1 << 20); }

void SnapshotSizes(benchmark::internal::Benchmark* b) {
    for (int n = 1000; n <= 1000000; n *= 10) b->Arg(n);
}

#define KZM_BENCH_STANDARD(work)              \
    BENCHMARK(work<List>)->Apply(Sizes);      \
    BENCHMARK(work<SizedList>)->Apply(Sizes); \
    BENCHMARK(work<Vector>)->Apply(Sizes);    \
    BENCHMARK(work<Deque>)->Apply(Sizes);
#ifdef KZM_BENCH_QT
#define KZM_BENCH_ALL(work) KZM_BENCH_STANDARD(work) BENCHMARK(work<Shared>)->Apply(Sizes);
#else
#define KZM_BENCH_ALL(work) KZM_BENCH_STANDARD(work)
#endif

KZM_BENCH_ALL(BM_Append)
BENCHMARK(BM_Prepend<List>)->Apply(Sizes);
BENCHMARK(BM_Prepend<Deque>)->Apply(Sizes);
KZM_BENCH_ALL(BM_Walk)
KZM_BENCH_ALL(BM_ReadAt)
KZM_BENCH_ALL(BM_WriteAt)
KZM_BENCH_ALL(BM_Copy)
BENCHMARK(BM_SnapshotAndWrite<List>)->Apply(SnapshotSizes);
BENCHMARK(BM_SnapshotAndWrite<SizedList>)->Apply(SnapshotSizes);
BENCHMARK(BM_SnapshotAndWrite<Vector>)->Apply(SnapshotSizes);
BENCHMARK(BM_SnapshotAndWrite<Deque>)->Apply(SnapshotSizes);
#ifdef KZM_BENCH_QT
BENCHMARK(BM_SnapshotAndWrite<Shared>)->Apply(SnapshotSizes);
#endif
KZM_BENCH_STANDARD(BM_Assign)

}  // namespace
