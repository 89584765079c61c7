#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <gtest/gtest.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <climits>
#include <functional>
#include <map>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<int, int>>;
const Pairs kPairs = {{-2, 20}, {3, 30}, {INT_MAX, 3}};

template <class Table>
Pairs Listed(const Table& table) {
    return Pairs(table.begin(), table.end());
}

template <class Table>
class TablesByValue : public testing::Test {};
using BothTables = testing::Types<cow_IntTableInt, cow_IntMultiMapInt>;
TYPED_TEST_SUITE(TablesByValue, BothTables);

TYPED_TEST(TablesByValue, CopiesShareUntilTheFirstWrite) {
    const TypeParam original(kPairs.begin(), kPairs.end());
    const std::pair<std::function<void(TypeParam&)>, Pairs> writes[] = {
        {[](TypeParam& t) { EXPECT_FALSE(t.Remove(999)); }, kPairs},
        {[](TypeParam& t) { t.Get(3); }, kPairs},
        {[](TypeParam& t) { t.Get(3) = 31; }, {{-2, 20}, {3, 31}, {INT_MAX, 3}}},
        {[](TypeParam& t) { t.Insert(4, t.ConstGet(3)); },
         {{-2, 20}, {3, 30}, {4, 30}, {INT_MAX, 3}}},
        {[](TypeParam& t) { EXPECT_TRUE(t.Remove(t.ConstGet(INT_MAX))); },
         {{-2, 20}, {INT_MAX, 3}}},
        {[](TypeParam& t) { t.Clear(); }, {}}};
    for (const auto& [write, after] : writes) {
        SCOPED_TRACE(testing::PrintToString(after));
        host_heap::Watch();
        TypeParam copy = original;
        TypeParam other = original;
        other = copy;
        EXPECT_EQ(&copy.ConstGet(3), &original.ConstGet(3));
        EXPECT_EQ(host_heap::g_probe.requests, 0);
        host_heap::Unwatch();
        write(copy);
        EXPECT_EQ(Listed(copy), after);
        EXPECT_EQ(Listed(original), kPairs);
        EXPECT_EQ(copy == original, after == kPairs);
        if (copy.IsMember(3)) {
            EXPECT_NE(&copy.ConstGet(3), &original.ConstGet(3));
        }
        ForEveryAllocationFailure([&] { return TypeParam(original); }, write,
                                  [&, &after = after](const TypeParam& t, bool done) {
                                      EXPECT_EQ(Listed(t), done ? after : kPairs);
                                      EXPECT_EQ(Listed(original), kPairs);
                                  });
    }
}

TYPED_TEST(TablesByValue, AMissingKeyHandedToGetAborts) {
    TypeParam table(kPairs.begin(), kPairs.end());
    for (const int key : {4, -3, INT_MIN}) {
        EXPECT_ABORT(table.ConstGet(key));
        EXPECT_ABORT(table.Get(key));
    }
}

TYPED_TEST(TablesByValue, CopiesStayIndependentUnderRandomEdits) {
    Random random(11);
    TypeParam tables[4];
    std::map<int, int> models[4];
    for (int step = 0; step < 4000; ++step) {
        const unsigned at = random.Below(4);
        if (random.OneIn(6)) {
            const unsigned from = random.Below(4);
            tables[at] = tables[from];
            models[at] = models[from];
        }
        TypeParam& table = tables[at];
        std::map<int, int>& model = models[at];
        const int key = static_cast<int>(random.Clustered());
        if (!model.count(key)) {
            ASSERT_FALSE(table.Remove(key));
            ASSERT_TRUE(table.Insert(key, step));
            model[key] = step;
        } else if (random.OneIn(2)) {
            ASSERT_TRUE(table.Remove(key));
            model.erase(key);
        } else {
            table.Get(key) = model[key] = step;
        }
        ASSERT_EQ(table.Size(), static_cast<int>(model.size()));
        if (step % 16) continue;
        for (int i = 0; i < 4; ++i)
            ASSERT_EQ(Listed(tables[i]), Pairs(models[i].begin(), models[i].end()));
    }
}

TEST(IntTableInt, InsertTellsNewKeysAndAbsentKeysLeaveTheValue) {
    cow_IntTableInt table;
    EXPECT_TRUE(table.Insert(7, 1) && !table.Insert(7, 2));
    int value = 42;
    EXPECT_TRUE(!table.ConstGetValue(8, value) && value == 42);
    EXPECT_TRUE(table.ConstGetValue(7, value) && value == 2);
}

TEST(IntMultiMapInt, ARefusedInsertMakesTheMapPrivateToo) {
    cow_IntMultiMapInt map;
    EXPECT_TRUE(map.Insert(7, 1) && map.Insert(7, 2) && map.Insert(7, 1));
    const cow_IntMultiMapInt before = map;
    EXPECT_FALSE(map.InsertUnique(7, 2));
    EXPECT_NE(&map.ConstGet(7), &before.ConstGet(7));
    cow_List<int> values;
    EXPECT_TRUE(map.ConstGetValues(7, values));
    EXPECT_EQ(values, cow_List<int>(1, 2, 1));
    EXPECT_TRUE(map.Remove(7, 1) && map.IsMember(7, 2) && !map.IsMember(7, 1));
    EXPECT_EQ(map.Size() + before.Size(), 4);
}

}  // namespace
