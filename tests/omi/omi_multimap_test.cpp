#include <cow/cow_List.h>
#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <omi/omi_IntMultiMap.h>
#include <support/expect_abort.h>

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

TEST(HashTable, NewEntriesComeFirstAndPlacesCountFromOne) {
    HashTable<unsigned, void*> table(1);
    table.Insert(5, nullptr);
    EXPECT_EQ(table[6], nullptr);
    table.Insert(5, reinterpret_cast<void*>(32));  // in place
    EXPECT_EQ(table.find(5).State(), (iterState{0, 2}));
    EXPECT_EQ(table.find(9).State().position, 0u);
    table.Delete(table.CurrentEntry({0, 1}).key);
    testing::internal::CaptureStdout();
    table.dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "       0          5 0x20\n");
}

}  // namespace
