// The list by value beside the standard sequences and the shared ones of Qt: what lists are made
// for, and what the sharing costs where nothing shares.
#include <cow/cow_List.h>
#include <interop/cow_span.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
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

// Walked as runs of elements that lie side by side.
class ListRuns : public List {
public:
    static constexpr const char* kWho = "cow_List(runs)";
    using List::List;
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

// Blocks behind a table and nothing that could be shared: what appending to a list comes down to.
class BareList {
public:
    static constexpr const char* kWho = "floor::blocks";
    explicit BareList(std::size_t) {}
    BareList(BareList&&) = default;
    ~BareList() {
        for (Block* const each : m_table)
            if (each->m_count == 1) mem_Free(each);
    }
    void Append(int v) {
        if (m_next == m_end) {
            m_table.push_back(::new (mem_Malloc(sizeof(Block))) Block);
            m_next = m_table.back()->m_data;
            m_end = m_next + std::size(m_table.back()->m_elements);
        }
        *m_next++ = v;
        ++m_length;
    }
    std::size_t Size() const { return m_length; }

private:
    struct Block {
        Block() : m_count(1), m_data(m_elements) {}
        int m_count;
        int* m_data;
        int m_elements[16];
    };
    std::vector<Block*> m_table;
    int* m_next = nullptr;
    int* m_end = nullptr;
    std::size_t m_length = 0;
};

// A list made for its size: a read tests the index and looks for the block; with a copy there, the
// first write takes another block and copies.
class BareSized {
public:
    static constexpr const char* kWho = "floor::blocks(sized)";
    explicit BareSized(std::size_t n)
        : m_shift(std::max(static_cast<int>(std::bit_width(n)) - 4, 4)),
          m_table(std::make_shared<std::vector<Block>>()) {}
    void Append(int v) {
        if (m_length++ % BlockSize() == 0) m_table->push_back(NewBlock());
        (*m_table).back()[(m_length - 1) % BlockSize()] = v;
        m_blocks = m_table->data();
    }
    std::size_t Size() const { return m_length; }
    int At(int i) const {
        const auto place = static_cast<std::size_t>(i);
        if (place >= m_length) std::abort();
        return m_blocks[place >> m_shift][place & (BlockSize() - 1)];
    }
    void Set(int i, int v) {
        Block copy = NewBlock();
        Block& block = (*m_table)[static_cast<std::size_t>(i) >> m_shift];
        std::memcpy(copy.get(), block.get(), BlockSize() * sizeof(int));
        block = std::move(copy);
        block[static_cast<std::size_t>(i) & (BlockSize() - 1)] = v;
    }

private:
    struct Free {
        void operator()(int* block) const { mem_Free(block); }
    };
    using Block = std::unique_ptr<int[], Free>;

    std::size_t BlockSize() const { return std::size_t{1} << m_shift; }
    Block NewBlock() const {
        return Block(static_cast<int*>(mem_Malloc(BlockSize() * sizeof(int))));
    }

    int m_shift;
    std::size_t m_length = 0;
    std::shared_ptr<std::vector<Block>> m_table;
    const Block* m_blocks = nullptr;
};

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
    const auto add = [&](const auto& each) { sum += static_cast<unsigned>(each); };
    if constexpr (std::is_same_v<Sequence, ListRuns>) {
        for (const auto& run : cow_ConstRuns(sequence)) std::for_each(run.begin(), run.end(), add);
    } else if constexpr (requires { sequence.begin(); }) {
        for (const int each : sequence) add(each);
    } else {
        for (std::size_t i = 0; i < sequence.Size(); ++i) add(sequence.At(static_cast<int>(i)));
    }
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
KZM_WORKLOAD(Append, Growth, All, SizedVector, BareList);
KZM_WORKLOAD(Prepend, Elements, List, SizedList, Deque, QtList);
KZM_WORKLOAD(Iterate, Elements, All, ListRuns);
KZM_WORKLOAD(ReadRandom, Elements, All, BareSized);
KZM_WORKLOAD(WriteRandom, Elements, All);
KZM_WORKLOAD(CopyDrop, Elements, All);
KZM_WORKLOAD(SnapshotWrite, Snapshots, All, BareSized);
KZM_WORKLOAD(Assign, Elements, All);

}  // namespace
