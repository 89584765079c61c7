// The tree and the map by value: ordered or by bits, shared until written.
#include "bare.h"
#include "support/keyed.h"
#include "support/keys.h"
#include "support/memory.h"

namespace {

template <class Map>
using KeysOf = std::vector<typename Map::Key>;

template <class Map>
Map Filled(const KeysOf<Map>& keys) {
    Map map;
    int n = 0;
    for (const auto& key : keys) map.Insert(key, n++);
    if constexpr (requires { map.Ready(); }) map.Ready();
    return map;
}

template <class Map>
std::uint64_t SumOfValues(const Map& map) {
    std::uint64_t sum = 0;
    map.Each([&](const auto&, int value) { sum += static_cast<std::uint64_t>(value); });
    return sum;
}

template <class Map>
void Insert(benchmark::State& state) {
    const auto keys = bench::KeysInNoOrder<typename Map::Key>(bench::Count(state));
    std::uint64_t sum = 0;
    for (auto _ : state) {
        Map map;
        int n = 0;
        for (const auto& key : keys) map.Insert(key, n++);
        bench::Keep(&map);
        state.PauseTiming();
        sum = SumOfValues(map);
        map = Map();
        state.ResumeTiming();
    }
    bench::Result(state, sum);
    bench::EachOf(state, keys.size());
}
// Numbers into an empty container, in no order.
template <class Map>
void InsertInt(benchmark::State& state) {
    Insert<Map>(state);
    bench::MeasureBytes(state, bench::Count(state), [](std::int64_t count, std::int64_t) {
        const auto keys = bench::KeysInNoOrder<int>(static_cast<std::size_t>(count));
        return bench::BytesOf([&] { return Filled<Map>(keys); });
    });
}
// Names such as Set-123 into an empty container, in no order.
template <class Map>
void InsertText(benchmark::State& state) {
    Insert<Map>(state);
}

template <class Map>
void Find(benchmark::State& state) {
    using Key = typename Map::Key;
    const auto keys = bench::KeysInNoOrder<Key>(bench::Count(state));
    // Made anew: texts that share their bytes with the entry's would be found by address.
    const auto asked = bench::Shuffled(bench::KeysInNoOrder<Key>(keys.size()), 2);
    const Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const auto& key : asked) sum += static_cast<std::uint64_t>(map.At(key));
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, keys.size());
}
// The value of a number, in no order.
template <class Map>
void FindInt(benchmark::State& state) {
    Find<Map>(state);
}
// The value of a name such as Set-123, in no order.
template <class Map>
void FindText(benchmark::State& state) {
    Find<Map>(state);
}

// A number that is not there; every second one of its neighbours is.
template <class Map>
void MissInt(benchmark::State& state) {
    auto asked = bench::KeysInNoOrder<int>(2 * bench::Count(state));
    const KeysOf<Map> keys(asked.begin() + state.range(0), asked.end());
    asked.resize(bench::Count(state));
    const Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    std::uint64_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const int key : asked) found += map.Has(key);
        bench::Keep(found);
    }
    bench::Result(state, found);
    bench::EachOf(state, asked.size());
}

// Removing a number and putting it back, in no order, where nothing is shared.
template <class Map>
void EraseInsert(benchmark::State& state) {
    const auto keys = bench::KeysInNoOrder<int>(bench::Count(state));
    Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    for (auto _ : state) {
        int n = 0;
        for (const int key : keys) {
            map.Erase(key);
            map.Insert(key, n++);
        }
        bench::Keep(&map);
    }
    bench::Result(state, SumOfValues(map));
    bench::EachOf(state, keys.size());
}

// A pass over all entries.
template <class Map>
void IterateInt(benchmark::State& state) {
    const auto keys = bench::KeysInNoOrder<int>(bench::Count(state));
    const Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    std::uint64_t sum = 0;
    for (auto _ : state) {
        sum = SumOfValues(map);
        bench::Keep(sum);
    }
    bench::Result(state, sum);
    bench::EachOf(state, keys.size());
}

// Keeping a state: copy, put one entry into the original, drop the copy.
template <class Map>
void SnapshotInsert(benchmark::State& state) {
    const auto keys = bench::KeysInNoOrder<int>(bench::Count(state));
    Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    int more = 0;
    const int last = static_cast<int>(keys.size());
    for (auto _ : state) {
        const Map snapshot = map;
        map.Insert(last + 1 + more, 0);
        bench::Keep(&snapshot);
        more = (more + 1) % 1000;
        if (more == 0) {
            state.PauseTiming();
            for (int i = 0; i < 1000; ++i) map.Erase(last + 1 + i);
            state.ResumeTiming();
        }
    }
    for (int i = 0; i < more; ++i) map.Erase(last + 1 + i);
    bench::Result(state, SumOfValues(map));
}

// Passing by value: copy and drop.
template <class Map>
void CopyDrop(benchmark::State& state) {
    const auto keys = bench::KeysInNoOrder<int>(bench::Count(state));
    const Map& map = bench::Once(state, [&] { return Filled<Map>(keys); });
    for (auto _ : state) {
        const Map copy = map;
        bench::Keep(&copy);
    }
    bench::Result(state, SumOfValues(Map(map)));
}

using bench::Keyed;
using Ours = bench::Types<Keyed<cow_Map<int, int>>, Keyed<cow_Btree<int, int>>>;
using Peers =
    bench::Types<bench::StdMap<int, int>, bench::StdHash<int, int>, bench::AbslMap<int, int>,
                 bench::AbslHash<int, int>, bench::RobinHash<int, int>, bench::QtMap<int, int>,
                 bench::QtHash<int, int>>;
using OurTexts = bench::Types<Keyed<cow_Map<cow_String, int>>, Keyed<cow_Btree<cow_String, int>>>;
using TextPeers =
    bench::Types<bench::StdMap<std::string, int>, bench::StdHash<std::string, int>,
                 bench::AbslMap<std::string, int>, bench::AbslHash<std::string, int>,
                 bench::RobinHash<std::string, int>, bench::QtTextMap, bench::QtTextHash>;

void Counts(benchmark::internal::Benchmark* b) { b->ArgName("entries")->Arg(1000)->Arg(100000); }
void Snapshots(benchmark::internal::Benchmark* b) {
    b->ArgName("entries")->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000);
}
void Names(benchmark::internal::Benchmark* b) { b->ArgName("names")->Arg(1000)->Arg(10000); }

KZM_WORKLOAD(InsertInt, Counts, Ours, Peers);
using Floors = bench::Types<bench::BareMap, bench::BareTree<int>>;

KZM_WORKLOAD(FindInt, Counts, Ours, Peers, bench::BoostFlat<int, int>, Floors);
KZM_WORKLOAD(MissInt, Counts, Ours, Peers);
KZM_WORKLOAD(EraseInsert, Counts, Ours, Peers);
KZM_WORKLOAD(IterateInt, Counts, Ours, Peers, bench::BoostFlat<int, int>, bench::BareTree<int>);
KZM_WORKLOAD(SnapshotInsert, Snapshots, Ours, Peers, bench::WayOfBlocks);
KZM_WORKLOAD(CopyDrop, Counts, Ours, Peers);
KZM_WORKLOAD(InsertText, Names, OurTexts, TextPeers);
KZM_WORKLOAD(FindText, Names, OurTexts, TextPeers, bench::BareTree<cow_String>);

}  // namespace
