// The examples are taken from the pages when the build is configured.
#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_ListIter.h>
#include <gtest/gtest.h>

#include <numeric>

#include "example_btree.inc"
#include "example_map.inc"

namespace {

TEST(DocsExamples, DoWhatThePagesSay) {
    const cow_Btree<int, double> temperatures = HeldAtTheEnds(5, 9);
    EXPECT_EQ(temperatures.ConstFind(5) + temperatures.ConstFind(9), 115.0);
    const cow_Map<cow_String, cow_List<int>> sets{{"top", cow_List<int>(4, 5)}};
    EXPECT_EQ(NamesInOrder(sets), cow_String("ends top "));
#include "example_arrays.inc"
    EXPECT_EQ(total + kept.ConstGet(0) + load.ConstGet(1), 12.0);
#include "example_list.inc"
    EXPECT_EQ(sum, 500500);
    EXPECT_EQ(changed, cow_List<int>(0, 4711));
    EXPECT_EQ(nodes.ConstGet(42), 1000);
    cow_ListIter<int> it(before);
    it.Next(), it.First();
    EXPECT_EQ(it.CurrentItem(), 1);
}

}  // namespace
