// A table from node numbers to values, beside what maps numbers elsewhere and, as a floor for dense
// numbers, a plain vector.
#include <alloc/mem_alloc.h>
#include <omi/omi_BlockedArray.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <utility>
#include <vector>

#include "support/keyed.h"
#include "support/keys.h"
#include "support/memory.h"

namespace {

using Numbers = std::vector<int>;
using bench::Shuffled;

// What an entry adds to a sum. Doubles would be added one after the other, each waiting for the
// last, which takes longer than many a container does.
std::uint64_t Bits(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint64_t Share(int number, double value) {
    return static_cast<unsigned>(number) + Bits(value);
}
void Sum(benchmark::State& state, std::uint64_t sum) { bench::Result(state, sum ^ sum >> 32); }

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

// The steps that a table's interface prescribes for a number from 0 on, by hand over bare structs
// whose shape the compiler knows and whose blocks are there already: the sign, the block, the group
// of cells, the block and the word of bits, two counts. With any shape, which the interface leaves
// to whoever makes a table, that shape is read where it lies.
template <bool anyShape>
class Steps {
public:
    static constexpr const char* kWho = anyShape ? "floor::steps(any shape)" : "floor::steps";

    Steps() {
        m_table->block = m_block.get();
        m_block->members.resize(1 << 12);
        for (std::size_t i = 0; i < 128; ++i) m_block->cells[i] = s_cells + 1024 * i;
        for (std::size_t i = 0; i < 16; ++i) m_block->words[i] = &m_block->members[256 * i];
        if (anyShape) bench::Keep(this);
    }
    void Insert(int key, double value) {
        double* const cell = CellOf(key);
        unsigned* const word = WordOf(key);
        if (!cell || !word) return;
        *cell = value;
        if (*word >> (key & 31) & 1) return;
        *word |= 1u << (key & 31);
        ++m_block->count;
        ++m_table->count;
    }
    double At(int key) const { return *CellOf(key); }
    bool Has(int key) const {
        const unsigned* const word = WordOf(key);
        return word && (*word >> (key & 31) & 1);
    }
    void Erase(int key) {
        unsigned* const word = WordOf(key);
        if (!word || !(*word >> (key & 31) & 1)) return;
        *word &= ~(1u << (key & 31));
        --m_table->count;
        if (--m_block->count == 0) bench::Keep(m_block.get());
    }
    std::size_t Size() const { return m_table->count; }

private:
    struct Block {
        unsigned groups = 128;
        unsigned groupShift = 10;
        unsigned cellMask = 1023;
        unsigned wordBlocks = 16;
        unsigned count = 0;
        double* cells[128];
        unsigned* words[16];
        std::vector<unsigned> members;
    };
    struct Table {
        Block* block;
        unsigned slots = 1;
        unsigned keyShift = 20;
        unsigned localMask = 0xfffff;
        unsigned count = 0;
    };

    Block* BlockOf(int key) const {
        if (!anyShape) return key >> 20 == 0 ? m_table->block : nullptr;
        const auto slot = static_cast<std::uint64_t>(std::int64_t{key}) >> m_table->keyShift;
        return slot < m_table->slots ? (&m_table->block)[slot] : nullptr;
    }
    unsigned Local(int key) const {
        return static_cast<unsigned>(key) & (anyShape ? m_table->localMask : 0xfffff);
    }
    double* CellOf(int key) const {
        const Block* const block = BlockOf(key);
        if (!block) return nullptr;
        const unsigned group = Local(key) >> (anyShape ? block->groupShift & 31 : 10);
        if (anyShape && group >= block->groups) return nullptr;
        double* const cells = block->cells[anyShape ? group : group & 127];
        return cells ? cells + (key & (anyShape ? block->cellMask : 1023)) : nullptr;
    }
    unsigned* WordOf(int key) const {
        const Block* const block = BlockOf(key);
        if (!block) return nullptr;
        const unsigned at = Local(key) >> 13;
        if (anyShape && at >= block->wordBlocks) return nullptr;
        unsigned* const words = block->words[anyShape ? at : at & 15];
        return words ? words + (key >> 5 & 255) : nullptr;
    }

    static inline double s_cells[1 << 17];
    std::unique_ptr<Block> m_block = std::make_unique<Block>();
    std::unique_ptr<Table> m_table = std::make_unique<Table>();
};

// As many cells as a table of these numbers holds, block by block, and nothing that finds them. A
// copy goes to memory that is there already.
class Blocks {
public:
    static constexpr const char* kWho = "floor::memcpy";

    Blocks() = default;
    Blocks(const Blocks& other) : m_sum(other.m_sum) {
        static std::vector<double> s_copy;
        s_copy.resize(std::max(s_copy.size(), other.m_blocks.size() * kCells));
        double* to = s_copy.data();
        for (const auto& block : other.m_blocks) {
            std::memcpy(to, block.get(), kCells * sizeof(double));
            to += kCells;
        }
        bench::Keep(to);
    }
    Blocks(Blocks&&) = default;
    void Insert(int key, double value) {
        if (m_blocks.empty() || key / kCells != m_last / kCells)
            m_blocks.emplace_back(new double[kCells]());
        m_blocks.back()[static_cast<std::size_t>(key % kCells)] = value;
        m_last = key;
        m_sum += Share(key, value);
    }
    std::uint64_t Sum() const { return m_sum; }

private:
    static constexpr int kCells = 1024;
    std::vector<std::unique_ptr<double[]>> m_blocks;
    int m_last = 0;
    std::uint64_t m_sum = 0;
};

// Blocks of T behind a table of their addresses, which grows by kStep.
template <class T, unsigned kCells, unsigned kStep>
class Named {
public:
    Named() = default;
    Named(Named&& other) noexcept
        : m_slots(std::exchange(other.m_slots, 0)),
          m_table(std::exchange(other.m_table, nullptr)) {}
    Named(const Named& other) : m_slots(other.m_slots), m_table(NewTable(m_slots)) {
        other.EachPresent([&](unsigned slot) {
            m_table[slot] = static_cast<T*>(mem_Malloc(kCells * sizeof(T)));
            std::memcpy(m_table[slot], other.m_table[slot], kCells * sizeof(T));
        });
    }
    ~Named() {
        EachPresent([&](unsigned slot) { mem_Free(m_table[slot]); });
        mem_Free(m_table);
    }
    T& At(unsigned index) {
        const unsigned slot = index / kCells;
        if (slot >= m_slots) {
            const unsigned slots = (slot / kStep + 1) * kStep;
            T** const table = NewTable(slots);
            std::copy_n(m_table, m_slots, table);
            mem_Free(std::exchange(m_table, table));
            m_slots = slots;
        }
        T*& block = m_table[slot];
        if (!block) block = ::new (mem_Malloc(kCells * sizeof(T))) T[kCells]();
        return block[index % kCells];
    }

private:
    static T** NewTable(unsigned slots) {
        return ::new (mem_Malloc(slots * sizeof(T*))) T*[slots]();
    }
    template <class F>
    void EachPresent(F f) const {
        for (unsigned slot = 0; (slot = omi_detail::NextPresent(m_table, slot, m_slots)) < m_slots;
             ++slot)
            f(slot);
    }

    unsigned m_slots = 0;
    T** m_table = nullptr;
};

// All blocks that the interface prescribes for a table of these numbers, cells, words of bits and
// the tables of their addresses, and nothing around them.
class NamedBlocks {
public:
    static constexpr const char* kWho = "floor::blocks";

    void Insert(int key, double value) {
        if (m_ranges.empty() || key >> 20 != m_last >> 20) m_ranges.emplace_back();
        m_last = key;
        const unsigned local = static_cast<unsigned>(key) & 0xfffff;
        m_ranges.back().cells.At(local) = value;
        m_ranges.back().words.At(local / 32) |= 1u << local % 32;
        m_sum += Share(key, value);
    }
    std::uint64_t Sum() const { return m_sum; }

private:
    struct Range {
        Named<double, 1024, 24> cells;
        Named<unsigned, 256, 128> words;
    };
    std::vector<Range> m_ranges;
    int m_last = 0;
    std::uint64_t m_sum = 0;
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
std::uint64_t SumOf(const Map& map) {
    std::uint64_t sum = 0;
    map.Each([&](int number, double value) { sum += Share(number, value); });
    return sum;
}
std::uint64_t SumOf(const Blocks& blocks) { return blocks.Sum(); }
std::uint64_t SumOf(const NamedBlocks& blocks) { return blocks.Sum(); }

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
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const int number : asked) sum += Bits(map.At(number));
        bench::Keep(sum);
    }
    Sum(state, sum);
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
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = SumOf(map);
        bench::Keep(sum);
    }
    Sum(state, sum);
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
    Sum(state, SumOf(Map(map)));
    bench::EachOf(state, bench::Count(state));
}

using HandMade = bench::Types<CellsAndBits, Steps<false>, Steps<true>>;
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
KZM_WORKLOAD(InsertAscending, Dense, Vector, HandMade);
KZM_WORKLOAD(InsertAscending, Growth, Vector);
KZM_WORKLOAD(InsertRandom, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(InsertRandom, Dense, HandMade);
KZM_WORKLOAD(FindRandom, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindRandom, Dense, Vector, Steps<false>, Steps<true>);
KZM_WORKLOAD(FindSequential, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindSequential, Dense, Vector, Steps<false>, Steps<true>);
KZM_WORKLOAD(FindMiss, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(FindMiss, Dense, HandMade);
KZM_WORKLOAD(Erase, Models, Table, Ordered, Hashes);
KZM_WORKLOAD(Erase, Dense, HandMade);
KZM_WORKLOAD(IterateAscending, Models, Table, Ordered);
KZM_WORKLOAD(IterateAscending, Dense, Vector);
KZM_WORKLOAD(IterateAny, Models, Table, Hashes);
KZM_WORKLOAD(CopyTable, Models, Table, Ordered, Copied);
KZM_WORKLOAD(CopyTable, Dense, Vector);
KZM_WORKLOAD(CopyTable, Models, Blocks, NamedBlocks);

}  // namespace
