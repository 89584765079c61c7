#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>
#include <vector>

namespace {

using Policy = KZMBasOmiDefaultAllocator;

template <class... Containers>
constexpr bool AreForwardRanges = (std::ranges::forward_range<const Containers> && ...);
static_assert(AreForwardRanges<omi_Set, omi_SparseSet, omi_GeneratedSet, cow_IntTableInt,
                               cow_IntMultiMapInt, omi_UintTable<double, Policy>,
                               omi_IntTable<void*, Policy>, omi_IntMultiMap<int, Policy>,
                               HashTable<unsigned, void*>, HashTable<void*, unsigned>>);

TEST(Iteration, KeyedContainersAreMadeFromEachOtherAndServeAlgorithms) {
    const std::vector<std::pair<int, int>> pairs = {{-4, 1}, {0, 2}, {9, 3}};
    const cow_IntTableInt table(pairs.begin(), pairs.end());
    const omi_IntMultiMap<int, Policy> map(table.begin(), table.end());
    const cow_IntTableInt back(map.begin(), map.end());
    EXPECT_EQ(back, table);
    EXPECT_TRUE(std::ranges::equal(map, pairs));
    const auto found = std::ranges::find(map, std::pair(0, 2));
    EXPECT_EQ(std::ranges::distance(found, map.end()), 2);
    std::vector<std::pair<int, int>> copied;
    std::ranges::copy(back, std::back_inserter(copied));
    EXPECT_EQ(copied, pairs);
    EXPECT_EQ(std::ranges::max(table | std::views::values), 3);
    copied.clear();
    std::ranges::set_difference(table, std::vector<std::pair<int, int>>{{-4, 2}, {0, 2}},
                                std::back_inserter(copied));
    EXPECT_EQ(copied, (std::vector<std::pair<int, int>>{{-4, 1}, {9, 3}}));
}

TEST(Iteration, AnIteratorOverNothingIsAlwaysDone) {
    const auto isDone = [](auto it) {
        it.First();
        it.Next();
        return it.IsDone();
    };
    EXPECT_TRUE(isDone(omi_SetIT()) && isDone(omi_SparseSetIT()) && isDone(omi_GeneratedSetIT()));
    EXPECT_TRUE(isDone(omi_IntMultiMapIterator<int, Policy>()));
    EXPECT_EQ(++cow_IntTableInt::const_iterator(), cow_IntTableInt().begin());
    using Hash = HashTable<unsigned, void*>;
    EXPECT_EQ(++Hash::const_iterator(), Hash(3).begin());
}

}  // namespace
