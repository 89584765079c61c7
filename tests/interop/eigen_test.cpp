#include <gtest/gtest.h>
#include <interop/cow_eigen.h>

TEST(Eigen, MapsReadAndWriteArraysInPlace) {
    const double values[] = {1, 2, 3};
    cow_FixedArray<double> x(values, values + 3);
    const cow_FixedArray<double> before(x);
    cow_2DArray<double> plane(2, 3, 1);
    EXPECT_EQ(cow_ConstVector(x).data(), before.begin());

    cow_WritableVector(x) *= 2;
    cow_WritableMatrix(plane)(1, 0) = 5;
    EXPECT_EQ(before.ConstGet(2), 3);
    EXPECT_EQ(x.ConstGet(2), 6);
    EXPECT_EQ(plane.ConstGet(1, 0), 5);

    const auto product = cow_ArrayOf(cow_ConstMatrix(plane) * cow_ConstVector(x));
    EXPECT_EQ(product.Size(), 2);
    EXPECT_EQ(product.ConstGet(1), 5 * 2 + 4 + 6);
    const auto transposed = cow_2DArrayOf(cow_ConstMatrix(plane).transpose());
    EXPECT_EQ(transposed.Rows(), 3);
    EXPECT_EQ(transposed.ConstGet(0, 1), 5);
}

TEST(Eigen, RunsOfListsAreVectors) {
    cow_List<double> list;
    for (int i = 0; i < 100; ++i) list.Append(i);
    double sum = 0;
    for (const auto run : cow_ConstRuns(list)) sum += cow_ConstVector(run).sum();
    EXPECT_EQ(sum, 4950);
}

TEST(Eigen, EmptyArraysGiveEmptyMaps) {
    cow_FixedArray<double> none;
    cow_2DArray<double> flat(0, 4, 0);
    EXPECT_EQ(cow_WritableVector(none).size(), 0);
    EXPECT_EQ(cow_WritableMatrix(flat).cols(), 4);
    EXPECT_EQ(cow_2DArrayOf(cow_ConstMatrix(flat)).Cols(), 4);
}
