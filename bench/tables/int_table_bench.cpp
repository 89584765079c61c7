// A table from node numbers to values, beside what maps numbers elsewhere and, as a floor for dense
// numbers, a plain vector.
#include <vector>

#include "support/keyed.h"
#include "support/keys.h"
#include "support/memory.h"

namespace {

using Numbers = std::vector<int>;
using bench::Shuffled;

// The number is the index.
class Vector {
public:
    static constexpr const char* kWho = "floor::vector";

    void Insert(int key, double value) {
        if (m_values.size() <= static_cast<std::size_t>(key))
            m_values.resize(static_cast<std::size_t>(key) + 1);
        m_values[static_cast<std::size_t>(key)] = value;
    }
    double At(int key) const { return m_values[static_cast<std::size_t>(key)]; }
    std::size_t Size() const { return m_values.size() - 1; }
    template <class F>
    void Each(F f) const {
        for (std::size_t i = 1; i < m_values.size(); ++i) f(static_cast<int>(i), m_values[i]);
    }

private:
    std::vector<double> m_values;
};

// The cell of a number below 2^17, and the bit that tells whether it is there, in two plain arrays:
// what a table with members cannot do without.
class CellsAndBits {
public:
    static constexpr const char* kWho = "floor::cells+bits";

    void Insert(int key, double value) {
        s_cells[static_cast<std::size_t>(key)] = value;
        if (Has(key)) return;
        Word(key) |= 1u << (key & 31);
        ++m_size;
    }
    bool Has(int key) const { return m_bits[static_cast<std::size_t>(key >> 5)] >> (key & 31) & 1; }
    void Erase(int key) {
        if (!Has(key)) return;
        Word(key) &= ~(1u << (key & 31));
        --m_size;
    }
    std::size_t Size() const { return m_size; }

private:
    unsigned& Word(int key) { return m_bits[static_cast<std::size_t>(key >> 5)]; }

    static inline double s_cells[1 << 17];
    std::vector<unsigned> m_bits = std::vector<unsigned>(1 << 12);
    std::size_t m_size = 0;
};

// Arguments of all workloads: how many numbers, in how many ranges.
Numbers NodeNumbers(const benchmark::State& state) {
    return bench::NodeNumbers(bench::Count(state), static_cast<int>(state.range(1)));
}

template <class Map>
void Fill(Map& map, const Numbers& numbers) {
    for (const int number : numbers) map.Insert(number, number);
}
template <class Map>
Map Filled(const Numbers& numbers) {
    Map map;
    Fill(map, numbers);
    return map;
}
// Filled in ascending order, as a model is read.
template <class Map>
const Map& FilledOnce(const benchmark::State& state) {
    return bench::Once(state.range(0), state.range(1),
                       [&] { return Filled<Map>(NodeNumbers(state)); });
}

template <class Map>
double SumOf(const Map& map) {
    double sum = 0;
    map.Each([&](int number, double value) { sum += number % 1024 + value; });
    return sum;
}

template <class Map>
void Insert(benchmark::State& state, const Numbers& numbers) {
    std::size_t size = 0;
    for (auto _ : state) {
        Map map;
        Fill(map, numbers);
        bench::Keep(&map);
        state.PauseTiming();
        size = map.Size();
        map.~Map();
        ::new (&map) Map;
        state.ResumeTiming();
    }
    bench::Result(state, size);
    bench::EachOf(state, numbers.size());
}
// Reading a model's node numbers in ascending order.
template <class Map>
void InsertAscending(benchmark::State& state) {
    Insert<Map>(state, NodeNumbers(state));
    bench::MeasureBytes(
        state, bench::Count(state),
        [](std::int64_t count, std::int64_t ranges) {
            const Numbers numbers =
                bench::NodeNumbers(static_cast<std::size_t>(count), static_cast<int>(ranges));
            const Map other = Filled<Map>({1});  // what a heap takes to begin with is no entry's
            bench::Keep(&other);
            return bench::BytesOf([&] { return Filled<Map>(numbers); });
        },
        state.range(1));
}
// Reading them in no order.
template <class Map>
void InsertRandom(benchmark::State& state) {
    Insert<Map>(state, Shuffled(NodeNumbers(state)));
}

template <class Map>
void Find(benchmark::State& state, const Numbers& asked) {
    const Map& map = FilledOnce<Map>(state);
    double sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const int number : asked) sum += map.At(number);
        bench::Keep(sum);
    }
    bench::Result(state, static_cast<std::uint64_t>(sum));
    bench::EachOf(state, asked.size());
}
// The values of nodes in no order, as elements ask for them.
template <class Map>
void FindRandom(benchmark::State& state) {
    Find<Map>(state, Shuffled(NodeNumbers(state)));
}
// The values of nodes in ascending order.
template <class Map>
void FindSequential(benchmark::State& state) {
    Find<Map>(state, NodeNumbers(state));
}

// Is a number there? Half of its neighbours are, it is not.
template <class Map>
void FindMiss(benchmark::State& state) {
    Numbers asked = Shuffled(NodeNumbers(state));
    const Numbers there(asked.begin() + state.range(0) / 2, asked.end());
    asked.resize(static_cast<std::size_t>(state.range(0) / 2));
    const Map& map =
        bench::Once(state.range(0), state.range(1), [&] { return Filled<Map>(there); });
    std::uint64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const int number : asked) found += map.Has(number);
        bench::Keep(found);
    }
    bench::Result(state, found);
    bench::EachOf(state, asked.size());
}

// Removing every number, in no order.
template <class Map>
void Erase(benchmark::State& state) {
    const Numbers numbers = Shuffled(NodeNumbers(state));
    Map map;
    for (auto _ : state) {
        state.PauseTiming();
        Fill(map, numbers);
        state.ResumeTiming();
        for (const int number : numbers) map.Erase(number);
        bench::Keep(&map);
    }
    bench::Result(state, map.Size());
    bench::EachOf(state, numbers.size());
}

template <class Map>
void Iterate(benchmark::State& state) {
    const Map& map = FilledOnce<Map>(state);
    double sum = 0;
    for (auto _ : state) {
        sum = SumOf(map);
        bench::Keep(sum);
    }
    bench::Result(state, static_cast<std::uint64_t>(sum));
    bench::EachOf(state, bench::Count(state));
}
// A pass over all nodes in the order of their numbers, which hash maps do not know.
template <class Map>
void IterateAscending(benchmark::State& state) {
    Iterate<Map>(state);
}
// A pass over all nodes in any order.
template <class Map>
void IterateAny(benchmark::State& state) {
    Iterate<Map>(state);
}

// A copy of the whole table, and its end.
template <class Map>
void CopyTable(benchmark::State& state) {
    const Map& map = FilledOnce<Map>(state);
    for (auto _ : state) {
        const Map copy(map);
        bench::Keep(&copy);
    }
    bench::Result(state, static_cast<std::uint64_t>(SumOf(Map(map))));
    bench::EachOf(state, bench::Count(state));
}

using Table = bench::Keyed<omi_IntTable<double, KZMBasOmiDefaultAllocator>>;
using Ordered = bench::Types<bench::StdMap<int, double>, bench::AbslMap<int, double>,
                             bench::JudyL<int, double>>;
using Hashes = bench::Types<bench::StdHash<int, double>, bench::AbslHash<int, double>,
                            bench::RobinHash<int, double>, bench::QtHash<int, double>>;
// QHash shares its copies.
using Copied = bench::Types<bench::StdHash<int, double>, bench::AbslHash<int, double>,
                            bench::RobinHash<int, double>>;

void Models(benchmark::internal::Benchmark* b) {
    b->ArgNames({"nodes", "ranges"})->Args({100000, 1})->Args({100000, 50});
}
void Dense(benchmark::internal::Benchmark* b) {
    b->ArgNames({"nodes", "ranges"})->Args({100000, 1});
}
void Growth(benchmark::internal::Benchmark* b) {
    b->ArgNames({"nodes", "ranges"})->Args({10000, 1})->Args({1000000, 1})->Args({10000000, 1});
}

KZM_WORKLOAD(InsertAscending, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(InsertAscending, Growth, Table, bench::StdHash<int, double>,
             bench::AbslHash<int, double>, bench::JudyL<int, double>);
KZM_WORKLOAD(InsertAscending, Dense, Vector, CellsAndBits);
KZM_WORKLOAD(InsertAscending, Growth, Vector);
KZM_WORKLOAD(InsertRandom, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(InsertRandom, Dense, CellsAndBits);
KZM_WORKLOAD(FindRandom, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindRandom, Dense, Vector);
KZM_WORKLOAD(FindSequential, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindSequential, Dense, Vector);
KZM_WORKLOAD(FindMiss, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindMiss, Dense, CellsAndBits);
KZM_WORKLOAD(Erase, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(Erase, Dense, CellsAndBits);
KZM_WORKLOAD(IterateAscending, Models, Table, Ordered);
KZM_WORKLOAD(IterateAscending, Dense, Vector);
KZM_WORKLOAD(IterateAny, Models, Table, Hashes);
KZM_WORKLOAD(CopyTable, Models, Table, Ordered, Copied);
KZM_WORKLOAD(CopyTable, Dense, Vector);

}  // namespace
