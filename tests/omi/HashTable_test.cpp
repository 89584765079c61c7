#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using Table = HashTable<void*, unsigned>;

void* Address(unsigned n) { return reinterpret_cast<void*>(std::uintptr_t{n} * 16); }

TEST(HashTable, EqualsItsModelUnderRandomEdits) {
    for (const unsigned buckets : {0u, 7u, 512u}) {
        SCOPED_TRACE(buckets);
        Random random(buckets + 1);
        Table table(buckets);
        std::unordered_map<void*, unsigned> model;
        for (unsigned step = 0; step < 3000; ++step) {
            void* const key = Address(random.Below(200));
            switch (random.Below(5)) {
                case 0:
                    table.Delete(key), model.erase(key);
                    break;
                case 1:
                    ASSERT_EQ(table[key] += 3, model[key] += 3);
                    break;
                case 2:
                    if (random.OneIn(200)) table.Clear(), model.clear();
                    break;
                default:
                    table.Insert(key, step), model[key] = step;
            }
            unsigned value = 77;
            ASSERT_EQ(table.LookUp(key, value), model.count(key) != 0);
            ASSERT_EQ(value, model.count(key) ? model[key] : 77);
            ASSERT_EQ(table.find(key).IsDone(), model.count(key) == 0);
        }
        std::unordered_map<void*, unsigned> byState;
        for (iterState s = table.First(); s.position; s = table.Next(s))
            EXPECT_TRUE(byState.emplace(table.CurrentKey(s), table.CurrentValue(s)).second);
        EXPECT_EQ(byState, model);
        EXPECT_EQ((std::unordered_map<void*, unsigned>(table.begin(), table.end())), model);
        EXPECT_EQ(table, Table(model.begin(), model.end(), 5));
        table[Address(0)] += 1;
        EXPECT_FALSE(table == Table(model.begin(), model.end(), 5));
    }
}

TEST(HashTable, NewEntriesComeFirstAndPlacesCountFromOne) {
    HashTable<unsigned, void*> table(1);
    table.Insert(5, Address(1));
    EXPECT_EQ(table[6], nullptr);
    table.Insert(5, Address(2));  // in place
    const auto at = table.find(5);
    EXPECT_EQ(at.State(), (iterState{0, 2}));
    EXPECT_EQ(at.CurrentValue(), Address(2));
    EXPECT_EQ(table.CurrentKey({0, 1}), 6u);
    EXPECT_EQ(table.find(9).State().position, 0u);
    table.Delete(table.CurrentEntry({0, 1}).key);
    EXPECT_EQ(table.find(5).State(), (iterState{0, 1}));
    testing::internal::CaptureStdout();
    table.dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "       0          5 0x20\n");
}

TEST(HashTable, ExhaustionLeavesTheEntries) {
    host_heap::Watch(1);
    try {
        Table table(100);
        ADD_FAILURE();
    } catch (const std::bad_alloc& exception) {
        EXPECT_STREQ(exception.what(), "bad allocation");
    }
    host_heap::Unwatch();
    const auto prepare = [] { return std::make_unique<Table>(4); };
    const auto check = [](const std::unique_ptr<Table>& table, bool done) {
        EXPECT_EQ(table->First().position, done ? 1u : 0u);
    };
    ForEveryAllocationFailure(
        prepare, [](auto& table) { table->Insert(nullptr, 1); }, check);
    ForEveryAllocationFailure(
        prepare, [](auto& table) { (*table)[nullptr]; }, check);
}

}  // namespace
