#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <memory>
#include <unordered_map>

namespace {

using Table = HashTable<void*, unsigned>;
using Model = std::unordered_map<void*, unsigned>;

void* Address(unsigned n) { return reinterpret_cast<void*>(std::uintptr_t{n} * 16); }

TEST(HashTable, EqualsItsModelUnderRandomEdits) {
    for (const unsigned buckets : {0u, 7u, 512u}) {
        SCOPED_TRACE(buckets);
        Random random(buckets + 1);
        Table table(buckets);
        Model model;
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
        Model byState;
        for (iterState s = table.First(); s.position; s = table.Next(s))
            EXPECT_TRUE(byState.emplace(table.CurrentKey(s), table.CurrentValue(s)).second);
        EXPECT_EQ(byState, model);
        EXPECT_EQ(Model(table.begin(), table.end()), model);
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
