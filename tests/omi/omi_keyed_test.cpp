#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <omi/HashTable.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_IntTableIterator.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>

#include <climits>
#include <ranges>
#include <string>
#include <vector>

namespace {

using Policy = KZMBasOmiDefaultAllocator;
using Uint = omi_UintTable<int, Policy>;
using Int = omi_IntTable<int, Policy>;
using Map = omi_IntMultiMap<int, Policy>;
using Hash = HashTable<unsigned, void*>;
using Pairs = std::vector<std::pair<int, int>>;

template <class... Containers>
concept AreForwardRanges = (std::ranges::forward_range<const Containers> && ...);
static_assert(AreForwardRanges<omi_Set, omi_SparseSet, omi_GeneratedSet, cow_IntTableInt,
                               cow_IntMultiMapInt, Uint, Int, Map, Hash>);

TEST(BlockedArray, TableGrowsByWholeStepsOfTheAssignedShapeToCoverTheBlock) {
    const unsigned cases[][4] = {{0, 10, 5000, 128}, {4, 2, 15, 4}, {4, 2, 17, 8}, {4, 33, 5, 4}};
    for (const auto& [slots, shift, index, grown] : cases) {
        omi_BlockedArray<double> array(1, 2);
        array = omi_BlockedArray<double>(slots, shift);
        array.SetCell(index, 7);
        EXPECT_EQ(*array.GetCell(index) + *array.GetCell(index ^ 1), 7);
        EXPECT_EQ(array.Footprint(),
                  sizeof array + grown * sizeof(void*) + (sizeof(double) << (shift & 31)));
    }
    omi_BlockedArray<int> nameless(0, 0), a(8, 2), b(8, 2);
    EXPECT_THROW(nameless.SetCell(0xffffff80u, 1), std::bad_alloc);
    a.SetCell(5, 1);
    b.SetCell(6, 2);
    const int* const kept = a.GetCell(4);
    a = b;
    EXPECT_EQ(a.GetCell(4), kept);
}

TEST(BlockedArray, DumpShowsBytesWidenedWithTheirSign) {
    omi_BlockedArray<int> array(2, 2), eight(4, 3);
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

TEST_WITH_REFUSALS(UintTable, LayoutsStartAsTheirConstructorsSayAndKeepNoEmptyBlock) {
    struct {
        Uint table;
        unsigned slots, key, slotsForKey;
    } cases[] = {{Uint(), 2, (3u << 20) + 5, 64},
                 {Uint(), 2, 0xffffffffu, 4096},
                 {Uint(5u), 128, 128u << 20, 192},
                 {Uint(8u, 8u, 16u), 2, 0xffffffffu, 256},
                 {Uint(0u, 22u, 4u), 2, 0xffffffffu, 2}};
    for (auto& [table, slots, key, slotsForKey] : cases) {
        EXPECT_EQ(table.Footprint(), sizeof table + slots * sizeof(void*));
        table.Insert(key, 1);
        table.Insert(key ^ 1, 2);
        EXPECT_EQ(table.FindTableBlock(key), table.FindTableBlock(key ^ 1));
        EXPECT_TRUE(table.Remove(key) && table.Remove(key ^ 1));
        EXPECT_EQ(table.Footprint(), sizeof table + slotsForKey * sizeof(void*)) << key;
    }
}

// The values to which the steps of an iterator lead.
template <class It, class Table>
std::string Walk(const Table& table, const char* steps) {
    It it(table);
    std::string seen;
    for (const char c : std::string_view(steps)) {
        bool moved = true;
        if constexpr (requires { it.NextBlock(); })
            if (c == 'n' || c == 'p') moved = c == 'n' ? it.NextBlock() : it.PreviousBlock();
        if (c == 'F') it.First();
        if (c == '+' || c == '-') c == '+' ? it.Next() : it.Previous();
        seen += it.IsDone() || !moved ? '.' : static_cast<char>('0' + it.CurrentValue());
    }
    return seen;
}

TEST(TableIterators, TurnRoundStartAgainAndGoToTheEdgeOfTheNextBlock) {
    const int keys[] = {1, -2, -1, 0, 1}, values[] = {9, 0, 1, 2, 3};  // the last of equal stays
    const unsigned blocks[] = {5, 1, 5, (2u << 20) + 3, (2u << 20) + 9};
    const Int ints(5, keys, values);
    const Uint uints(5, blocks, values);
    using IntIt = omi_IntTableIterator<int, Policy>;
    using UintIt = omi_UintTableIterator<int, Policy>;
    EXPECT_EQ(Walk<IntIt>(ints, "F++--++++F++F-"), "01210123.0120.");
    EXPECT_EQ(Walk<UintIt>(uints, "F++--++++F++F-"), "01210123.0120.");
    EXPECT_EQ(Walk<UintIt>(uints, "nnppppnnnp"), "021...02.3");
}

TEST(IntMultiMap, AnAbsentKeyLeavesTheCallersVariableAndAborts) {
    const Pairs pairs = {{7, 1}};
    const Map map(pairs.begin(), pairs.end());
    int value = 42;
    EXPECT_FALSE(map.GetFirst(8) || map.ConstGetValue(INT_MIN, value) || value != 42);
    EXPECT_ABORT(map.ConstGet(8));
}

// Chunks show in the footprint, and so does a compaction: it leaves one chunk of two.
TEST(IntMultiMap, ChunksHold256LinksAndAreCompactedBelowAThird) {
    const int cases[][3] = {{256, 10, 1}, {257, 86, 2}, {257, 85, 1}, {300, 101, 2}, {300, 100, 1}};
    for (const auto& [links, left, chunks] : cases) {
        Map map;
        const unsigned empty = map.Footprint();
        map.Insert(5, 0);
        const unsigned oneChunk = map.Footprint();
        for (int i = 1; i < links; ++i) map.Insert(5, i);
        EXPECT_EQ(map.Footprint() > oneChunk, links > 256);
        for (int i = links; --i >= left;) map.Remove(5, i);
        EXPECT_EQ(map.Footprint() > oneChunk, chunks > 1) << links << ' ' << left;
        EXPECT_EQ(map.Get(5), left - 1);
        for (int i = left; --i >= 0;) EXPECT_TRUE(map.Remove(5, i));
        EXPECT_EQ(map.Footprint(), empty);
    }
}

TEST_WITH_REFUSALS(HashTable, NewEntriesComeFirstAndPlacesCountFromOne) {
    Hash table(1);
    table.Insert(5, nullptr);
    EXPECT_EQ(table[6], nullptr);
    table.Insert(5, reinterpret_cast<void*>(32));  // in place
    EXPECT_EQ(table.find(5).State(), (iterState{0, 2}));
    EXPECT_TRUE((iterState{1, 0}) == (iterState{2, 0}) && (iterState{1, 1}) != (iterState{2, 1}));
    table.Delete(table.CurrentEntry({0, 1}).key);
    testing::internal::CaptureStdout();
    table.dump();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "       0          5 0x20\n");
}

TEST_WITH_REFUSALS(Iteration, KeyedContainersAreMadeFromEachOtherAndServeAlgorithms) {
    const Pairs pairs = {{-4, 1}, {0, 2}, {9, 3}};
    const cow_IntTableInt table(pairs.begin(), pairs.end());
    const Map map(table.begin(), table.end());
    EXPECT_EQ(cow_IntTableInt(map.begin(), map.end()), table);
    EXPECT_EQ(Uint(pairs.begin() + 1, pairs.end()).ConstGet(9), 3);
    EXPECT_EQ(std::ranges::max(map | std::views::values), 3);
    Pairs rest;
    std::ranges::set_difference(table, Pairs{{-5, 0}, {-4, 2}, {0, 1}, {9, 3}},
                                std::back_inserter(rest));
    EXPECT_EQ(rest, (Pairs{{-4, 1}, {0, 2}}));
}

TEST_WITH_REFUSALS(Iteration, AnIteratorOverNothingIsAlwaysDone) {
    omi_IntMultiMapIterator<int, Policy> it;
    it.First(), it.Next();
    EXPECT_TRUE(it.IsDone() && ++cow_IntTableInt::const_iterator() == cow_IntTableInt().end());
    const auto endOf = [](auto walk) {
        walk.First(), walk.Next(), walk.Next();
        return walk.IsDone() ? walk.CurrentItem() : 0;
    };
    const int five = 5;
    const omi_Set set(&five, 1);
    const omi_SparseSet sparse(&five, 1);
    const omi_GeneratedSet generated(five, five, 1);
    for (const int item : {endOf(omi_SetIT()), endOf(omi_SparseSetIT()),
                           endOf(omi_GeneratedSetIT()), endOf(omi_SetIT(set)),
                           endOf(omi_SparseSetIT(sparse)), endOf(omi_GeneratedSetIT(generated))})
        EXPECT_EQ(item, -1);
}

}  // namespace
