#include <cow/cow_List.h>
#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <omi/omi_IntMultiMap.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

namespace {

using Map = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
using Pairs = std::vector<std::pair<int, int>>;

Pairs Listed(const Map& map) { return Pairs(map.begin(), map.end()); }

TEST(IntMultiMap, RemovalTellsWhetherTheKeyWasThere) {
    const Pairs pairs = {{7, 1}, {7, 2}, {7, 1}};
    Map map(pairs.begin(), pairs.end());
    EXPECT_TRUE(map.Remove(7, 1) && map.Remove(7, 99));
    EXPECT_EQ(Listed(map), (Pairs{{7, 2}}));
    for (const int absent : {8, 1 << 30, INT_MIN}) {
        EXPECT_FALSE(map.Remove(absent, 99) || map.GetFirst(absent));
        int value = 42;
        cow_List<int> values(9);
        EXPECT_FALSE(map.ConstGetValue(absent, value) || map.ConstGetValues(absent, values));
        EXPECT_EQ(value + values.Length(), 42);
    }
    EXPECT_EQ(map.Get(7)++, 2);
    EXPECT_EQ(map.ConstGet(7), 3);
    EXPECT_ABORT(map.ConstGet(8));
}

// Chunks show in the footprint, and so does a compaction: it leaves one chunk of two.
TEST(IntMultiMap, ChunksHold256LinksAndAreCompactedBelowAThird) {
    const int cases[][3] = {{256, 10, 1}, {257, 86, 2}, {257, 85, 1}, {300, 101, 2}, {300, 100, 1}};
    for (const auto& [links, left, chunks] : cases) {
        SCOPED_TRACE(testing::Message() << links << ' ' << left);
        Map map;
        const unsigned empty = map.Footprint();
        map.Insert(5, 0);
        const unsigned oneChunk = map.Footprint();
        for (int i = 1; i < links; ++i) map.Insert(5, i);
        for (int i = links; --i > left;) map.Remove(5, i);
        EXPECT_EQ(map.Footprint() > oneChunk, links > 256);
        map.Remove(5, left);
        EXPECT_EQ(map.Size(), left);
        EXPECT_EQ(map.Footprint() > oneChunk, chunks > 1);
        EXPECT_EQ(map.Get(5), left - 1);
        for (int i = left; --i >= 0;) EXPECT_TRUE(map.Remove(5, i));
        EXPECT_EQ(map.Footprint(), empty);
    }
}

int CompareQuarters(const int& a, const int& b) { return a / 4 - b / 4; }

// Each map beside its model, the chain of each key; they copy each other at random.
TEST(IntMultiMap, CopiesStayIndependentUnderRandomEdits) {
    Random random(5);
    std::unique_ptr<Map> maps[3];
    std::map<int, std::vector<int>> models[3];
    for (auto& map : maps) map = std::make_unique<Map>();
    for (int step = 0; step < 20000; ++step) {
        const unsigned at = random.Below(3);
        const unsigned from = random.Below(3);
        auto& model = models[at];
        if (random.OneIn(300)) maps[at].reset(maps[from]->Copy()), model = models[from];
        Map& map = *maps[at];
        const int key = static_cast<int>(random.Clustered() & ~3u);
        const int value = static_cast<int>(random.Below(12));
        std::vector<int>& chain = model[key];
        const bool isPair = std::count(chain.begin(), chain.end(), value) > 0;
        ASSERT_EQ(map.IsMember(key, value), isPair);
        ASSERT_EQ(map.IsMember(key), !chain.empty());
        cow_List<int> values;
        ASSERT_EQ(map.ConstGetValues(key, values), !chain.empty());
        ASSERT_EQ(std::vector<int>(values.begin(), values.end()), chain);
        const unsigned kind = random.Below(random.OneIn(100) ? 10 : 7);
        if (kind < 3) map.Insert(key, value);
        ASSERT_NE(kind == 3 && map.InsertUnique(key, value), kind != 3 || isPair);
        if (kind < 3 || (kind == 3 && !isPair)) chain.insert(chain.begin(), value);
        if (kind == 4 || kind == 5) {
            ASSERT_EQ(map.Remove(key, value), !chain.empty());
            std::erase(chain, value);
        }
        if (kind == 6 && random.OneIn(3)) {
            ASSERT_EQ(map.Remove(key), !chain.empty());
            chain.clear();
        }
        if (kind == 7) {
            map.SortValues(CompareQuarters);
            for (auto& [k, each] : model)
                std::stable_sort(each.begin(), each.end(),
                                 [](int a, int b) { return CompareQuarters(a, b) < 0; });
        }
        if (kind == 8) map.CompressValues();
        if (kind == 9) map.Clear(), model.clear();
        if (step % 64) continue;
        Pairs expected;
        for (const auto& [k, each] : model)
            for (const int v : each) expected.emplace_back(k, v);
        ASSERT_EQ(Listed(map), expected);
        ASSERT_EQ(map.Size(), static_cast<int>(expected.size()));
        ASSERT_EQ(map == *maps[from], Listed(*maps[from]) == expected);
    }
}

TEST(IntMultiMap, AWriteThatRunsOutOfMemoryChangesNothing) {
    const auto prepare = [] {
        auto map = std::make_unique<Map>();
        for (int i = 0; i < 299; ++i) map->Insert(7, i < 200);  // 99 older than 200
        for (int i = 299; i < 512; ++i) map->Insert(-i, i);
        return map;
    };
    const Pairs before = Listed(*prepare());
    const std::function<void(Map&)> writes[] = {[](Map& map) { map.Insert(7, 5); },
                                                [](Map& map) { map.Insert(1 << 30, 5); },
                                                [](Map& map) { map.InsertUnique(INT_MIN, 5); },
                                                [](Map& map) { map.SortValues(CompareQuarters); },
                                                [](Map& map) { map.CompressValues(); },
                                                [](Map& map) { delete map.Copy(); }};
    for (const auto& write : writes) {
        const auto after = prepare();
        write(*after);
        ForEveryAllocationFailure(
            prepare, [&](auto& map) { write(*map); },
            [&](const auto& map, bool done) {
                EXPECT_EQ(Listed(*map), done ? Listed(*after) : before);
            });
    }
    // A compaction that fails comes after the removal.
    const auto compactable = [&] {
        auto map = prepare();
        for (int i = 299; i < 512; ++i) map->Remove(-i);
        return map;
    };
    ForEveryAllocationFailure(
        compactable, [](auto& map) { map->Remove(7, 1); },
        [](const auto& map, bool) { EXPECT_EQ(map->Size(), 99); });
}

using Table = HashTable<void*, unsigned>;
using TableModel = std::unordered_map<void*, unsigned>;

void* Address(unsigned n) { return reinterpret_cast<void*>(std::uintptr_t{n} * 16); }

TEST(HashTable, EqualsItsModelUnderRandomEdits) {
    for (const unsigned buckets : {0u, 7u, 512u}) {
        SCOPED_TRACE(buckets);
        Random random(buckets + 1);
        Table table(buckets);
        TableModel model;
        for (unsigned step = 0; step < 3000; ++step) {
            void* const key = Address(random.Below(200));
            const unsigned kind = random.Below(5);
            if (kind == 0) table.Delete(key), model.erase(key);
            if (kind == 1) table[key] += 3, model[key] += 3;
            if (kind == 2 && random.OneIn(200)) table.Clear(), model.clear();
            if (kind > 2) table.Insert(key, step), model[key] = step;
            unsigned value = 77;
            ASSERT_EQ(table.LookUp(key, value), model.count(key) != 0);
            ASSERT_EQ(value, model.count(key) ? model[key] : 77);
            ASSERT_EQ(table.find(key).IsDone(), model.count(key) == 0);
        }
        TableModel byState;
        for (iterState s = table.First(); s.position; s = table.Next(s))
            EXPECT_TRUE(byState.emplace(table.CurrentKey(s), table.CurrentValue(s)).second);
        EXPECT_EQ(byState, model);
        EXPECT_EQ(TableModel(table.begin(), table.end()), model);
        const Table other(model.begin(), model.end(), 5);
        EXPECT_EQ(table, other);
        table[Address(0)] += 1;
        EXPECT_FALSE(table == other);
    }
}

TEST(HashTable, NewEntriesComeFirstAndPlacesCountFromOne) {
    HashTable<unsigned, void*> table(1);
    table.Insert(5, Address(1));
    EXPECT_EQ(table[6], nullptr);
    table.Insert(5, Address(2));  // in place
    EXPECT_EQ(table.find(5).State(), (iterState{0, 2}));
    EXPECT_EQ(table.find(9).State().position, 0u);
    table.Delete(table.CurrentEntry({0, 1}).key);
    testing::internal::CaptureStdout();
    table.dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "       0          5 0x20\n");
}

TEST(HashTable, ExhaustionLeavesTheEntries) {
    host_heap::Watch(1);
    EXPECT_THROW(Table(100), std::bad_alloc);
    host_heap::Unwatch();
    for (const bool insert : {true, false})
        ForEveryAllocationFailure(
            [] { return std::make_unique<Table>(4); },
            [=](auto& table) { insert ? table->Insert(nullptr, 1) : void((*table)[nullptr]); },
            [](auto& table, bool done) { EXPECT_EQ(table->First().position, done ? 1u : 0u); });
}

}  // namespace
