#include <cow/cow_List.h>
#include <gtest/gtest.h>
#include <omi/omi_IntMultiMap.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace {

using Map = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
using Pairs = std::vector<std::pair<int, int>>;

Pairs Listed(const Map& map) { return Pairs(map.begin(), map.end()); }

TEST(IntMultiMap, ChainsAreNewestFirstAndRemovalTakesEveryEqualValue) {
    const Pairs pairs = {{7, 1}, {7, 2}, {7, 1}};
    Map map(pairs.begin(), pairs.end());
    EXPECT_EQ(Listed(map), (Pairs{{7, 1}, {7, 2}, {7, 1}}));
    EXPECT_TRUE(map.Remove(7, 1));
    EXPECT_EQ(Listed(map), (Pairs{{7, 2}}));
    EXPECT_TRUE(map.Remove(7, 99));   // the key is a member
    EXPECT_FALSE(map.Remove(8, 99));  // its block is there
    EXPECT_FALSE(map.Remove(INT_MIN, 99));
    EXPECT_EQ(map.GetFirst(8), nullptr);
    EXPECT_EQ(map.GetFirst(1 << 30), nullptr);
    EXPECT_FALSE(map.InsertUnique(7, 2));
    EXPECT_TRUE(map.InsertUnique(7, 3));
    EXPECT_EQ(map.Get(7)++, 3);
    EXPECT_TRUE(map.IsMember(7, 4) && !map.IsMember(7, 3));
    EXPECT_ABORT(map.ConstGet(8));
}

TEST(IntMultiMap, ARemovedKeyLeavesNoTraceOfItsChain) {
    Map map;
    map.Insert(7, 1);
    map.Insert(8, 2);
    EXPECT_TRUE(map.Remove(7));
    EXPECT_FALSE(map.Remove(7));
    EXPECT_FALSE(map.Remove(7, 1));
    EXPECT_EQ(map.GetFirst(7), nullptr);
    map.Insert(7, 3);
    map.Remove(8, map.GetFirst(8)->value);
    EXPECT_EQ(Listed(map), (Pairs{{7, 3}}));
}

TEST(IntMultiMap, AbsentKeysYieldNoValues) {
    const Pairs pairs = {{-1, 4}, {-1, 5}};
    const Map map(pairs.begin(), pairs.end());
    int value = 42;
    EXPECT_FALSE(map.ConstGetValue(1, value));
    EXPECT_EQ(value, 42);
    cow_List<int> values(9);
    EXPECT_TRUE(map.ConstGetValues(-1, values));
    EXPECT_EQ(values, cow_List<int>(5, 4));
    EXPECT_FALSE(map.ConstGetValues(1, values));
    EXPECT_EQ(values.Length(), 0);
}

// Chunks show in the footprint, and so does a compaction: it leaves one chunk of two.
TEST(IntMultiMap, ChunksHold256LinksAndAreCompactedBelowAThird) {
    const struct {
        int links, left;
        bool compacted;
    } cases[] = {
        {256, 10, false}, {257, 86, false}, {257, 85, true}, {300, 101, false}, {300, 100, true}};
    for (const auto& [links, left, compacted] : cases) {
        SCOPED_TRACE(testing::Message() << links << ' ' << left);
        Map map;
        map.Insert(5, 0);
        const unsigned oneChunk = map.Footprint();
        for (int i = 1; i < links; ++i) map.Insert(5, i);
        EXPECT_EQ(map.Footprint() > oneChunk, links > 256);
        for (int i = links; --i > left;) map.Remove(5, i);
        EXPECT_EQ(map.Footprint() > oneChunk, links > 256);
        map.Remove(5, left);
        EXPECT_EQ(map.Size(), left);
        EXPECT_EQ(map.Footprint() > oneChunk, links > 256 && !compacted);
        EXPECT_EQ(map.Get(5), left - 1);
        EXPECT_TRUE(map.Remove(5));
        EXPECT_TRUE(map.IsEmpty());
        EXPECT_EQ(Listed(map), Pairs());
    }
}

TEST(IntMultiMap, RemovingTheLastPairFreesEverything) {
    Map map;
    const unsigned empty = map.Footprint();
    for (int i = 0; i < 600; ++i) map.Insert(i % 3, 1);
    for (const int key : {0, 1, 2}) EXPECT_TRUE(map.Remove(key, 1));
    EXPECT_EQ(map.Footprint(), empty);
}

bool Less(int a, int b) { return a / 4 < b / 4; }
int CompareQuarters(const int& a, const int& b) { return Less(a, b) ? -1 : Less(b, a) ? 1 : 0; }

// Each map beside its model, the chain of each key; they copy each other at random.
TEST(IntMultiMapModel, CopiesStayIndependentUnderRandomEdits) {
    Random random(5);
    std::unique_ptr<Map> maps[3];
    std::map<int, std::vector<int>> models[3];
    for (auto& map : maps) map = std::make_unique<Map>();
    for (int step = 0; step < 20000; ++step) {
        const unsigned at = random.Below(3);
        auto& model = models[at];
        if (random.OneIn(300)) {
            const unsigned from = random.Below(3);
            maps[at].reset(maps[from]->Copy());
            models[at] = models[from];
        }
        Map& map = *maps[at];
        const int key = static_cast<int>(random.Clustered() & ~3u);
        const int value = static_cast<int>(random.Below(12));
        std::vector<int>& chain = model[key];
        const auto found = std::find(chain.begin(), chain.end(), value);
        ASSERT_EQ(map.IsMember(key, value), found != chain.end());
        const unsigned kind = random.Below(random.OneIn(100) ? 10 : 7);
        if (kind < 4) {
            const bool added = kind < 3 || found == chain.end();
            ASSERT_EQ(kind < 3 ? map.Insert(key, value) : map.InsertUnique(key, value), added);
            if (added) chain.insert(chain.begin(), value);
        }
        if (kind == 4 || kind == 5) {
            ASSERT_EQ(map.Remove(key, value), !chain.empty());
            chain.erase(std::remove(chain.begin(), chain.end(), value), chain.end());
        }
        if (kind == 6 && random.OneIn(3)) {
            ASSERT_EQ(map.Remove(key), !chain.empty());
            chain.clear();
        }
        if (kind == 7) {
            map.SortValues(CompareQuarters);
            for (auto& [k, values] : model) std::stable_sort(values.begin(), values.end(), Less);
        }
        if (kind == 8) map.CompressValues();
        if (kind == 9) map.Clear(), model.clear();
        ASSERT_EQ(map.IsMember(key), model.count(key) && !model[key].empty());
        if (step % 64) continue;
        Pairs expected;
        for (const auto& [k, values] : model)
            for (const int v : values) expected.emplace_back(k, v);
        ASSERT_EQ(Listed(map), expected);
        ASSERT_EQ(map.Size(), static_cast<int>(expected.size()));
        ASSERT_EQ(map == *maps[0], models[0] == model || Listed(*maps[0]) == expected);
    }
}

TEST(IntMultiMapFailure, EveryWriteLeavesThePairsOrCompletes) {
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
        auto expected = prepare();
        write(*expected);
        ForEveryAllocationFailure(
            prepare, [&](auto& map) { write(*map); },
            [&](const auto& map, bool done) {
                EXPECT_EQ(Listed(*map), done ? Listed(*expected) : before);
            });
    }
    // A compaction that fails comes after the removal.
    ForEveryAllocationFailure(
        [&] {
            auto map = prepare();
            for (int i = 299; i < 512; ++i) map->Remove(-i);
            return map;
        },
        [](auto& map) { map->Remove(7, 1); },
        [](const auto& map, bool) { EXPECT_EQ(map->Size(), 99); });
}

}  // namespace
