#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <omi/omi_IntTableIterator.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <climits>
#include <map>
#include <memory>
#include <vector>

namespace {

using Policy = KZMBasOmiDefaultAllocator;
using Uint = omi_UintTable<int, Policy>;
using Int = omi_IntTable<int, Policy>;
using UintIterator = omi_UintTableIterator<int, Policy>;
using IntIterator = omi_IntTableIterator<int, Policy>;

template <class Iterator, class Table>
auto Upwards(const Table& table, omi_TableCompare compare = nullptr) {
    Iterator it(table, compare);
    std::vector<std::pair<decltype(it.CurrentKey()), int>> members;
    for (it.First(); !it.IsDone(); it.Next())
        members.emplace_back(it.CurrentKey(), it.CurrentValue());
    return members;
}

template <class Iterator, class Table>
auto Downwards(const Table& table, omi_TableCompare compare = nullptr) {
    Iterator it(table, compare);
    std::vector<std::pair<decltype(it.CurrentKey()), int>> members;
    for (it.Last(); !it.IsDone(); it.Previous())
        members.emplace_back(it.CurrentKey(), it.CurrentValue());
    std::reverse(members.begin(), members.end());
    return members;
}

// Bytes of a table without blocks, which tell its number of slots.
std::size_t BytesOfSlots(unsigned slots) { return sizeof(Uint) + slots * sizeof(void*); }

TEST(UintTable, LayoutsStartAsTheirConstructorsSay) {
    EXPECT_EQ(Uint().Footprint(), BytesOfSlots(2));
    EXPECT_EQ(Uint(5u).Footprint(), BytesOfSlots(128));
    EXPECT_EQ(Uint(8u, 8u, 16u).Footprint(), BytesOfSlots(2));
    const struct {
        Uint table;
        unsigned key, slots;
    } cases[] = {{Uint(), (3u << 20) + 5, 64},
                 {Uint(), 0xffffffffu, 4096},
                 {Uint(1u), 128u << 20, 192},
                 {Uint(8u, 8u, 0u), 0xffffffffu, 256},
                 {Uint(0u, 22u, 4u), 0xffffffffu, 2}};
    for (const auto& [original, key, slots] : cases) {
        SCOPED_TRACE(key);
        const std::unique_ptr<Uint> table(original.Copy());
        EXPECT_TRUE(table->Insert(key, 1));
        EXPECT_FALSE(table->Insert(key, 2));
        EXPECT_EQ(table->ConstGet(key), 2);
        EXPECT_TRUE(table->Remove(key));
        EXPECT_FALSE(table->Remove(key));
        EXPECT_EQ(table->Footprint(), BytesOfSlots(slots));
    }
}

TEST(UintTable, ABlockLastsAsLongAsItHasMembers) {
    Uint table;
    table.Insert(7, 70);
    table.Insert(8, 80);
    EXPECT_EQ(table.FindTableBlock(8), table.FindTableBlock(7));
    EXPECT_EQ(table.FindTableBlock(1u << 20), nullptr);
    EXPECT_TRUE(table.Remove(7));
    int value = 5;
    EXPECT_FALSE(table.ConstGetValue(7, value));
    EXPECT_EQ(value, 5);
    EXPECT_NE(table.FindTableBlock(8), nullptr);
    EXPECT_TRUE(table.Remove(8));
    EXPECT_EQ(table.FindTableBlock(8), nullptr);
    EXPECT_TRUE(table.IsEmpty());
}

TEST(UintTable, AValueOfTheTableMayBeInserted) {
    omi_UintTable<cow_String, Policy> table;
    table.Insert(1, "a text that is longer than any small buffer");
    table.Insert(0xffffffffu, table.ConstGet(1));
    table.Insert(1, table.ConstGet(1));
    EXPECT_EQ(table.ConstGet(1).CStr(), table.ConstGet(0xffffffffu).CStr());
}

TEST(UintTable, PairsInsertInOrderAndTheLastOfEqualKeysStays) {
    const unsigned keys[] = {9, 3, 9};
    const int values[] = {1, 2, 3};
    const Uint table(3, keys, values);
    EXPECT_EQ(Upwards<UintIterator>(table),
              (std::vector<std::pair<unsigned, int>>{{3, 2}, {9, 3}}));
}

TEST(UintTable, IterationByBlockStartsAtTheNeighbouringBlocksEdge) {
    Uint table;
    for (const unsigned key : {1u, 5u, (2u << 20) + 3, (2u << 20) + 9}) table.Insert(key, 0);
    UintIterator it(table);
    EXPECT_TRUE(it.IsDone());
    EXPECT_TRUE(it.NextBlock());  // from nowhere: the first block
    EXPECT_TRUE(it.NextBlock());
    EXPECT_EQ(it.CurrentKey(), (2u << 20) + 3);
    EXPECT_TRUE(it.PreviousBlock());
    EXPECT_EQ(it.CurrentKey(), 5u);
    for (const bool forward : {false, true}) {  // beyond either end and back
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(forward ? it.NextBlock() : it.PreviousBlock(), forward && i < 2);
        EXPECT_TRUE(it.IsDone());
    }
    EXPECT_TRUE(it.PreviousBlock());
    EXPECT_EQ(it.CurrentKey(), (2u << 20) + 9);
}

int DescendingKeys(const void* a, const void* b) {
    const auto& x = **static_cast<const omi_TableRecord<unsigned, int>* const*>(a);
    const auto& y = **static_cast<const omi_TableRecord<unsigned, int>* const*>(b);
    return x.key < y.key ? 1 : x.key > y.key ? -1 : 0;
}

int AscendingValues(const void* a, const void* b) {
    const auto& x = **static_cast<const omi_TableRecord<int, int>* const*>(a);
    const auto& y = **static_cast<const omi_TableRecord<int, int>* const*>(b);
    return *x.value < *y.value ? -1 : *x.value > *y.value ? 1 : 0;
}

TEST(TableIterators, AComparisonFunctionOrdersTheWholeTable) {
    Uint table;
    for (unsigned key = 1; key <= 3; ++key) table.Insert(key, static_cast<int>(key));
    const std::vector<std::pair<unsigned, int>> descending = {{3, 3}, {2, 2}, {1, 1}};
    EXPECT_EQ(Upwards<UintIterator>(table, DescendingKeys), descending);
    EXPECT_EQ(Downwards<UintIterator>(table, DescendingKeys), descending);

    const int keys[] = {-5, 7, INT_MIN, 0};
    const int values[] = {2, 1, 4, 3};
    const Int signedTable(4, keys, values);
    const std::vector<std::pair<int, int>> byValue = {{7, 1}, {-5, 2}, {0, 3}, {INT_MIN, 4}};
    EXPECT_EQ(Upwards<IntIterator>(signedTable, AscendingValues), byValue);
    EXPECT_EQ(Downwards<IntIterator>(signedTable, AscendingValues), byValue);
    EXPECT_TRUE(Upwards<IntIterator>(Int(), AscendingValues).empty());
}

TEST(IntTable, KeysAscendAcrossTheSign) {
    const std::vector<int> sets[] = {{INT_MIN, -5, -1, 0, 3}, {-1}, {0}, {INT_MIN, INT_MAX}, {}};
    for (const std::vector<int>& keys : sets) {
        Int table;
        std::vector<std::pair<int, int>> expected;
        for (const int key : keys) {
            EXPECT_TRUE(table.Insert(key, key / 2));
            expected.emplace_back(key, key / 2);
        }
        EXPECT_EQ(Upwards<IntIterator>(table), expected);
        EXPECT_EQ(Downwards<IntIterator>(table), expected);
        EXPECT_EQ(table.Size(), static_cast<int>(keys.size()));
    }
}

TEST(IntTable, AnIteratorCanTurnRoundAndStartAgain) {
    const int keys[] = {-2, -1, 0, 1};
    const Int table(4, keys, keys);
    IntIterator it(table);
    std::vector<int> seen;
    const auto step = [&](bool forward) {
        forward ? it.Next() : it.Previous();
        seen.push_back(it.IsDone() ? 99 : it.CurrentKey());
    };
    it.First();
    for (const bool forward : {true, true, false, false, true, true, true, true}) step(forward);
    EXPECT_EQ(seen, (std::vector<int>{-1, 0, -1, -2, -1, 0, 1, 99}));
    it.First();
    it.Next();
    it.Next();
    it.First();
    it.Previous();
    EXPECT_TRUE(it.IsDone());
}

// Each table beside the map it must equal; they copy each other at random.
template <class Table, class Iterator, class Key>
void RunModel(unsigned seed) {
    Random random(seed);
    std::unique_ptr<Table> tables[] = {std::make_unique<Table>(),
                                       std::make_unique<Table>(12u, 10u, 1u),
                                       std::make_unique<Table>(16u, 8u, 0u)};
    std::map<Key, int> models[3];
    for (int step = 0; step < 6000; ++step) {
        const unsigned at = random.Below(3);
        std::map<Key, int>& model = models[at];
        if (random.OneIn(100)) {
            const unsigned from = random.Below(3);
            tables[at].reset(tables[from]->Copy());
            models[at] = models[from];
        }
        Table& table = *tables[at];
        const Key key = static_cast<Key>(random.Clustered());
        if (random.OneIn(500)) {
            table.Clear();
            model.clear();
        } else if (random.Below(3)) {
            ASSERT_EQ(table.Insert(key, step), model.count(key) == 0);
            model[key] = step;
        } else {
            ASSERT_EQ(table.Remove(key), model.erase(key) != 0);
        }
        ASSERT_EQ(table.IsMember(key), model.count(key) != 0);
        ASSERT_EQ(table.Size(), static_cast<int>(model.size()));
        if (step % 32 == 0) {
            const std::vector<std::pair<Key, int>> expected(model.begin(), model.end());
            ASSERT_EQ((Upwards<Iterator>(table)), expected);
            ASSERT_EQ((Downwards<Iterator>(table)), expected);
        }
    }
}

TEST(TableModel, CopiesStayIndependentUnderRandomEdits) {
    RunModel<Uint, UintIterator, unsigned>(3);
    RunModel<Int, IntIterator, int>(4);
}

TEST(TableFailure, InsertCopyAndSortedWalkLeaveTheMembersOrComplete) {
    const auto prepare = [] {
        auto table = std::make_unique<Int>();
        table->Insert(-7, 1);
        table->Insert(1 << 20, 2);
        return table;
    };
    for (const int key : {-7, -8, 3000, INT_MIN, INT_MAX}) {
        ForEveryAllocationFailure(
            prepare, [=](auto& table) { table->Insert(key, 5); },
            [=](const auto& table, bool done) {
                const int value = done ? 5 : 1;
                EXPECT_EQ(table->IsMember(key), done || key == -7);
                int found = value;
                table->ConstGetValue(key, found);
                EXPECT_EQ(found, value);
                EXPECT_EQ(Upwards<IntIterator>(*table).size(), static_cast<size_t>(table->Size()));
            });
    }
    const auto unchanged = [](const auto& table, bool) { EXPECT_EQ(table->Size(), 2); };
    ForEveryAllocationFailure(
        prepare, [](auto& table) { std::unique_ptr<Int> copy(table->Copy()); }, unchanged);
    ForEveryAllocationFailure(
        prepare, [](auto& table) { Upwards<IntIterator>(*table, AscendingValues); }, unchanged);
    const int keys[] = {5, -5};
    ForEveryAllocationFailure(
        prepare, [&](auto&) { Int(2, keys, keys); }, unchanged);
}

}  // namespace
