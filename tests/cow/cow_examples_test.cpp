// The examples of docs/list.md and docs/arrays.md, word for word.
#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_ListIter.h>
#include <gtest/gtest.h>

#include <numeric>

namespace {

TEST(Examples, List) {
    cow_List<int> nodes(cow_ListConstruct(), 1000);  // empty, ready for 1000
    for (int label = 1; label <= 1000; ++label) nodes.Append(label);

    const cow_List<int> before = nodes;  // no element is copied
    nodes.Get(41) = 4711;                // copies the table and one block
    nodes.Prepend(0);

    int sum = 0;
    for (const int label : before) sum += label;             // 500500: as it was
    const cow_List<int> changed = nodes.Difference(before);  // {0, 4711}
    EXPECT_EQ(sum, 500500);
    EXPECT_EQ(changed, cow_List<int>(0, 4711));

    for (cow_ListIter<int> it(nodes); it.NotDone(); it.Next())
        if (it.CurrentItem() > 1000) nodes.Get(it.ArrayIndex()) = 1000;
    EXPECT_EQ(nodes.ConstGet(42), 1000);
}

TEST(Examples, Arrays) {
    cow_FixedArray<double> load(3, 0.0);  // three components
    load.Get(2) = -9.81;

    const cow_FixedArray<double> kept = load;  // shares
    load.Get(0) = 1.0;                         // copies the three numbers once
    double* const raw = &load.Get(0);          // private now: write freely until the next copy
    raw[1] = 2.0;

    cow_2DArray<double> stiffness(2, 3, 1.0);
    stiffness.Get(1, 0) = 5.0;  // row 1, column 0: the fourth element
    const double total = std::accumulate(stiffness.begin(), stiffness.end(), 0.0);  // 10
    EXPECT_EQ(total, 10.0);
    EXPECT_EQ(kept.ConstGet(0) + load.ConstGet(1), 2.0);
}

}  // namespace
