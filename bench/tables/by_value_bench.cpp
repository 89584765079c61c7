// Tables that interfaces pass by value: shared until written.
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>

#include <vector>

#include "support/keyed.h"
#include "support/keys.h"

namespace {

struct ValueTable : cow_IntTableInt {
    static constexpr const char* kWho = "cow_IntTableInt";
};
struct ValueMultiMap : cow_IntMultiMapInt {
    static constexpr const char* kWho = "cow_IntMultiMapInt";
    void Insert(int key, int value) {
        Remove(key);
        cow_IntMultiMapInt::Insert(key, value);
    }
};
class Vector {
public:
    static constexpr const char* kWho = "std::vector";
    void Insert(int key, int value) {
        if (m_values.size() <= static_cast<std::size_t>(key))
            m_values.resize(static_cast<std::size_t>(key) + 1);
        m_values[static_cast<std::size_t>(key)] = value;
    }
    std::size_t Size() const { return m_values.size() - 1; }

private:
    std::vector<int> m_values;
};

template <class Table>
const Table& FilledOnce(const benchmark::State& state) {
    return bench::Once(state, [&] {
        Table table;
        for (const int number : bench::NodeNumbers(bench::Count(state), 1)) table.Insert(number, 1);
        return table;
    });
}

// Passing a table by value: copy and drop.
template <class Table>
void ByValueCopyDrop(benchmark::State& state) {
    const Table& original = FilledOnce<Table>(state);
    for (auto _ : state) {
        const Table copy = original;
        bench::Keep(&copy);
    }
    bench::Result(state, static_cast<std::uint64_t>(Table(original).Size()));
}

// Writing one entry of a copy, which then is a copy indeed.
template <class Table>
void ByValueCopyWrite(benchmark::State& state) {
    const Table& original = FilledOnce<Table>(state);
    std::size_t size = 0;
    for (auto _ : state) {
        Table copy = original;
        copy.Insert(7, 2);
        size = static_cast<std::size_t>(copy.Size());
        bench::Keep(&copy);
    }
    bench::Result(state, size);
    bench::EachOf(state, bench::Count(state));
}

void Nodes(benchmark::internal::Benchmark* b) { b->ArgName("nodes")->Arg(1000)->Arg(100000); }

using Tables = bench::Types<ValueTable, ValueMultiMap, Vector, bench::StdHash<int, int>,
                            bench::AbslHash<int, int>, bench::QtHash<int, int>>;
KZM_WORKLOAD(ByValueCopyDrop, Nodes, Tables);
KZM_WORKLOAD(ByValueCopyWrite, Nodes, Tables);

}  // namespace
