// The examples are taken from the pages when the build is configured.
#include <gtest/gtest.h>

#include "example_btree.inc"
#include "example_map.inc"

namespace {

TEST(DocsExamples, DoWhatThePagesSay) {
    const cow_Btree<int, double> temperatures = HeldAtTheEnds(5, 9);
    EXPECT_EQ(temperatures.ConstFind(5) + temperatures.ConstFind(9), 115.0);
    const cow_Map<cow_String, cow_List<int>> sets{{"top", cow_List<int>(4, 5)}};
    EXPECT_EQ(NamesInOrder(sets), cow_String("ends top "));
    EXPECT_EQ(sets.ConstGet("top").Length(), 2);
}

}  // namespace
