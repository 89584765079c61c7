// The list by value beside the standard sequences and the shared ones of Qt: what lists are made
// for, and what the sharing costs where nothing shares.
#include <cow/cow_List.h>

#include <deque>
#include <vector>

#include "support/keys.h"
#include "support/memory.h"
#ifdef KZM_BENCH_QT
#include <QList>
#include <QVector>
#endif

namespace {

// All of them have Append, At, Set and Assign; some Prepend. A sized one is made ready for its
// elements beforehand.
class List : public cow_List<int> {
public:
    static constexpr const char* kWho = "cow_List";
    explicit List(std::size_t) {}
    explicit List(cow_List<int> list) : cow_List<int>(list) {}
    std::size_t Size() const { return static_cast<std::size_t>(Length()); }
    int At(int i) const { return ConstGet(i); }
    void Set(int i, int v) { Get(i) = v; }
    void Assign(const std::vector<int>& from) {
        SetFromArray(from.data(), static_cast<int>(from.size()));
    }
};
class SizedList : public List {
public:
    static constexpr const char* kWho = "cow_List(sized)";
    explicit SizedList(std::size_t n)
        : List(cow_List<int>(cow_ListConstruct(), static_cast<int>(n))) {}
};

template <class Sequence>
class Standard : public Sequence {
public:
    explicit Standard(std::size_t) {}
    void Append(int v) { this->push_back(v); }
    void Prepend(int v) { this->push_front(v); }
    std::size_t Size() const { return static_cast<std::size_t>(this->size()); }
    int At(int i) const { return (*this)[static_cast<Index>(i)]; }
    void Set(int i, int v) { (*this)[static_cast<Index>(i)] = v; }
    void Assign(const std::vector<int>& from) {
        if constexpr (requires { this->assign(from.begin(), from.end()); })
            this->assign(from.begin(), from.end());
        else
            static_cast<Sequence&>(*this) = Sequence(from.begin(), from.end());
    }

private:
    using Index = decltype(std::declval<Sequence>().size());
};
struct Vector : Standard<std::vector<int>> {
    static constexpr const char* kWho = "std::vector";
    using Standard::Standard;
};
struct SizedVector : Vector {
    static constexpr const char* kWho = "std::vector(reserved)";
    explicit SizedVector(std::size_t n) : Vector(n) { reserve(n); }
};
struct Deque : Standard<std::deque<int>> {
    static constexpr const char* kWho = "std::deque";
    using Standard::Standard;
};
#ifdef KZM_BENCH_QT
struct QtVector : Standard<QVector<int>> {
    static constexpr const char* kWho = "Qt::QVector";
    using Standard::Standard;
};
struct QtList : Standard<QList<int>> {
    static constexpr const char* kWho = "Qt::QList";
    using Standard::Standard;
};
#else
using QtVector = bench::Missing;
using QtList = bench::Missing;
#endif

template <class Sequence>
Sequence Filled(std::size_t count) {
    Sequence sequence(count);
    for (std::size_t i = 0; i < count; ++i) sequence.Append(static_cast<int>(i));
    return sequence;
}
template <class Sequence>
Sequence& FilledOnce(const benchmark::State& state) {
    return bench::Once(state, [&] { return Filled<Sequence>(bench::Count(state)); });
}
template <class Sequence>
unsigned Sum(const Sequence& sequence) {
    unsigned sum = 0;
    for (const int each : sequence) sum += static_cast<unsigned>(each);
    return sum;
}

// Growing from nothing, one by one, and the end.
template <class Sequence>
void Append(benchmark::State& state) {
    std::size_t size = 0;
    for (auto _ : state) {
        const Sequence sequence = Filled<Sequence>(bench::Count(state));
        size = sequence.Size();
        bench::Keep(&sequence);
    }
    bench::Result(state, size);
    bench::EachOf(state, bench::Count(state));
    bench::MeasureBytes(state, bench::Count(state), [](std::int64_t count, std::int64_t) {
        return bench::BytesOf([&] { return Filled<Sequence>(static_cast<std::size_t>(count)); });
    });
}

// Growing at the front.
template <class Sequence>
void Prepend(benchmark::State& state) {
    std::size_t size = 0;
    for (auto _ : state) {
        Sequence sequence(bench::Count(state));
        for (std::int64_t i = 0; i < state.range(0); ++i) sequence.Prepend(static_cast<int>(i));
        size = sequence.Size();
        bench::Keep(&sequence);
    }
    bench::Result(state, size);
    bench::EachOf(state, bench::Count(state));
}

// A pass over all elements.
template <class Sequence>
void Iterate(benchmark::State& state) {
    const Sequence& sequence = FilledOnce<Sequence>(state);
    unsigned sum = 0;
    for (auto _ : state) {
        sum = Sum(sequence);
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, bench::Count(state));
}

// Reading by index, in no order.
template <class Sequence>
void ReadRandom(benchmark::State& state) {
    const Sequence& sequence = FilledOnce<Sequence>(state);
    std::vector<int> places(bench::Count(state));
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = static_cast<int>(i);
    places = bench::Shuffled(places);
    unsigned sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const int i : places) sum = sum * 5 + static_cast<unsigned>(sequence.At(i));
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, places.size());
}

// Writing by index, in no order, where nothing shares.
template <class Sequence>
void WriteRandom(benchmark::State& state) {
    Sequence& sequence = FilledOnce<Sequence>(state);
    const std::vector<int> places = bench::Shuffled(bench::NodeNumbers(bench::Count(state), 1));
    for (auto _ : state) {
        for (const int i : places) sequence.Set(i - 1, i - 1);
        benchmark::ClobberMemory();
    }
    bench::Result(state, Sum(sequence));
    bench::EachOf(state, places.size());
}

// Passing by value: copy and drop.
template <class Sequence>
void CopyDrop(benchmark::State& state) {
    const Sequence& original = FilledOnce<Sequence>(state);
    for (auto _ : state) {
        const Sequence copy = original;
        bench::Keep(&copy);
    }
    bench::Result(state, Sum(Sequence(original)));
}

// Keeping a state: copy, write one element of the original, drop the copy.
template <class Sequence>
void SnapshotWrite(benchmark::State& state) {
    Sequence& sequence = FilledOnce<Sequence>(state);
    const int count = static_cast<int>(state.range(0));
    int place = 0;
    for (auto _ : state) {
        const Sequence snapshot = sequence;
        sequence.Set(place, place);
        bench::Keep(&snapshot);
        place = (place + 77777) % count;
    }
    bench::Result(state, Sum(sequence));
}

// Replacing all elements by those of an array.
template <class Sequence>
void Assign(benchmark::State& state) {
    const std::vector<int> source(bench::Count(state), 3);
    Sequence sequence(source.size());
    for (auto _ : state) {
        sequence.Assign(source);
        benchmark::ClobberMemory();
    }
    bench::Result(state, Sum(sequence));
    bench::EachOf(state, source.size());
}

void Growth(benchmark::internal::Benchmark* b) {
    b->ArgName("elements")->Arg(10000)->Arg(100000)->Arg(1000000)->Arg(10000000);
}
void Elements(benchmark::internal::Benchmark* b) {
    b->ArgName("elements")->Arg(1000)->Arg(1000000);
}
void Snapshots(benchmark::internal::Benchmark* b) {
    b->ArgName("elements")->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000);
}

using All = bench::Types<List, SizedList, Vector, Deque, QtVector, QtList>;
KZM_WORKLOAD(Append, Growth, All, SizedVector);
KZM_WORKLOAD(Prepend, Elements, List, SizedList, Deque, QtList);
KZM_WORKLOAD(Iterate, Elements, All);
KZM_WORKLOAD(ReadRandom, Elements, All);
KZM_WORKLOAD(WriteRandom, Elements, All);
KZM_WORKLOAD(CopyDrop, Elements, All);
KZM_WORKLOAD(SnapshotWrite, Snapshots, All);
KZM_WORKLOAD(Assign, Elements, All);

}  // namespace
