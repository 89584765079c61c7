#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <omi/omi_IntTableIterator.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace {

using Cells = omi_BlockedArray<int>;

TEST(BlockedArray, TableGrowsByWholeStepsToCoverTheBlock) {
    const unsigned cases[][4] = {{0, 10, 5000, 128}, {4, 2, 15, 4}, {4, 2, 17, 8}, {4, 33, 5, 4}};
    for (const auto& [slots, shift, index, grown] : cases) {
        SCOPED_TRACE(index);
        omi_BlockedArray<double> array(slots, shift);
        EXPECT_EQ(array.GetCell(index), nullptr);
        array.SetCell(index, 7);
        EXPECT_EQ(*array.GetCell(index) + *array.GetCell(index ^ 1), 7);
        EXPECT_EQ(array.Footprint(),
                  sizeof array + grown * sizeof(void*) + (sizeof(double) << (shift & 31)));
    }
    Cells nameless(0, 0);
    EXPECT_THROW(nameless.SetCell(0xffffff80u, 1), std::bad_alloc);
    EXPECT_EQ(nameless.GetCell(0xffffff80u), nullptr);
}

TEST(BlockedArray, AssignmentKeepsBlocksOfEqualShapeAndTakesAnotherShape) {
    Cells a(8, 2), b(8, 2);
    a.SetCell(5, 1);
    a.SetCell(9, 1);
    b.SetCell(6, 2);
    const int* const kept = a.GetCell(4);
    a = b;
    EXPECT_EQ(a.GetCell(4), kept);
    EXPECT_EQ(kept[1] * 10 + kept[2], 2);
    EXPECT_EQ(a.GetCell(9), nullptr);
    a = Cells(0, 4);
    EXPECT_EQ(a.Footprint(), sizeof a);
    a.SetCell(0, 1);
    EXPECT_EQ(a.Footprint(), sizeof a + 128 * sizeof(void*) + 16 * sizeof(int));
}

TEST(BlockedArray, DumpShowsBytesWidenedWithTheirSign) {
    Cells array(2, 2), eight(4, 3);
    array.SetCell(5, -1);
    array.SetCell(6, 128);
    eight.SetCell(8, 0x04030201);
    testing::internal::CaptureStdout();
    array.DumpArray();
    eight.DumpArray();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Block indices= 4 - 7\n"
              "00000000|ffffffffffffffffffffffffffffffff|ffffff80000000|00000000|\n"
              "Block indices= 8 - 15\n"
              "01020304|00000000|00000000|00000000|00000000|00000000|00000000|00000000\n\n");
}

using Policy = KZMBasOmiDefaultAllocator;
using Uint = omi_UintTable<int, Policy>;
using Int = omi_IntTable<int, Policy>;
using UintIterator = omi_UintTableIterator<int, Policy>;
using IntIterator = omi_IntTableIterator<int, Policy>;

template <class Table>
using Iterator = std::conditional_t<std::is_same_v<Table, Int>, IntIterator, UintIterator>;
template <class Table>
using Key = decltype(std::declval<Iterator<Table>>().CurrentKey());
template <class Table>
using Pairs = std::vector<std::pair<Key<Table>, int>>;

template <class Table>
Pairs<Table> Listed(const Table& table, omi_TableCompare compare = nullptr) {
    Iterator<Table> it(table, compare);
    Pairs<Table> up, down;
    for (it.First(); !it.IsDone(); it.Next()) up.emplace_back(it.CurrentKey(), it.CurrentValue());
    for (it.Last(); !it.IsDone(); it.Previous())
        down.emplace_back(it.CurrentKey(), it.CurrentValue());
    EXPECT_EQ(up, Pairs<Table>(down.rbegin(), down.rend()));
    EXPECT_TRUE(compare || up == Pairs<Table>(table.begin(), table.end()));
    return up;
}

// Bytes of a table without blocks, which tell its number of slots.
std::size_t BytesOfSlots(unsigned slots) { return sizeof(Uint) + slots * sizeof(void*); }

TEST(UintTable, LayoutsStartAsTheirConstructorsSayAndKeepNoEmptyBlock) {
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
        table->Insert(key, 1);
        table->Insert(key ^ 1, 2);
        EXPECT_EQ(table->FindTableBlock(key), table->FindTableBlock(key ^ 1));
        table->Remove(key);
        EXPECT_NE(table->FindTableBlock(key ^ 1) != nullptr, table->IsMember(key));
        table->Remove(key ^ 1);
        EXPECT_EQ(table->FindTableBlock(key ^ 1), nullptr);
        EXPECT_EQ(table->Footprint(), BytesOfSlots(slots));
    }
}

template <class K>
int AscendingValues(const void* a, const void* b) {
    const auto& x = **static_cast<const omi_TableRecord<K, int>* const*>(a);
    const auto& y = **static_cast<const omi_TableRecord<K, int>* const*>(b);
    return *x.value - *y.value;
}

template <class Table>
class Tables : public testing::Test {};
using BothTables = testing::Types<Uint, Int>;
TYPED_TEST_SUITE(Tables, BothTables);

TYPED_TEST(Tables, TheLastOfEqualKeysStaysAndAComparisonOrdersTheWholeTable) {
    const auto kEdge = static_cast<Key<TypeParam>>(INT_MIN);
    const Key<TypeParam> keys[] = {9, 3, 9, kEdge, 0};
    const int values[] = {9, 2, 1, 4, 3};
    const TypeParam table(5, keys, values);
    Pairs<TypeParam> expected = {{9, 1}, {3, 2}, {0, 3}, {kEdge, 4}};
    EXPECT_EQ(Listed(table, AscendingValues<Key<TypeParam>>), expected);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Listed(table), expected);
    EXPECT_TRUE(Listed(TypeParam(), AscendingValues<Key<TypeParam>>).empty());
}

// The steps of an iterator over four members, and where each one led.
template <class Table>
std::string Walk(const Table& table, const std::string& steps) {
    const Pairs<Table> members = Listed(table);
    Iterator<Table> it(table, nullptr);
    std::string seen;
    for (const char c : steps) {
        c == 'F' ? it.First() : c == '+' ? it.Next() : c == '-' ? it.Previous() : void();
        if constexpr (std::is_same_v<Table, Uint>) {
            const bool moved = c == 'n' ? it.NextBlock() : c == 'p' ? it.PreviousBlock() : true;
            EXPECT_TRUE(moved != it.IsDone() || std::isalpha(c) == 0 || c == 'F');
        }
        for (std::size_t i = 0; !it.IsDone() && i < members.size(); ++i)
            if (members[i].first == it.CurrentKey()) seen += static_cast<char>('0' + i);
        if (it.IsDone()) seen += '.';
    }
    return seen;
}

TEST(TableIterators, TurnRoundStartAgainAndGoToTheEdgeOfTheNextBlock) {
    const int keys[] = {-2, -1, 0, 1};
    EXPECT_EQ(Walk(Int(4, keys, keys), "F++--++++F++F-"), "01210123.0120.");
    const unsigned blocks[] = {1, 5, (2u << 20) + 3, (2u << 20) + 9};
    const Uint table(4, blocks, keys);
    EXPECT_EQ(Walk(table, "F++--++++F++F-"), "01210123.0120.");
    EXPECT_EQ(Walk(table, "nnppppnnnp"), "021...02.3");
}

}  // namespace
