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
    EXPECT_TRUE(before.ConstGet(2) == 3 && x.ConstGet(2) == 6 && plane.ConstGet(1, 0) == 5);

    const cow_List<double> list(4, 5);
    for (const auto run : cow_ConstRuns(list)) EXPECT_EQ(cow_ConstVector(run).sum(), 9);
    const auto product = cow_ArrayOf(cow_ConstMatrix(plane) * cow_ConstVector(x));
    EXPECT_TRUE(product.Size() == 2 && product.ConstGet(1) == 5 * 2 + 4 + 6);
    const auto transposed = cow_2DArrayOf(cow_ConstMatrix(plane).transpose());
    EXPECT_TRUE(transposed.Rows() == 3 && transposed.ConstGet(0, 1) == 5);
}

TEST(Eigen, WhatNoArrayCanCountIsExhaustion) {
    const Eigen::Map<const Eigen::VectorXd> tall(nullptr, Eigen::Index{1} << 31);
    EXPECT_THROW(cow_ArrayOf(tall), std::bad_alloc);
    EXPECT_THROW(cow_2DArrayOf(tall), std::bad_alloc);
    EXPECT_THROW(cow_2DArrayOf(tall.transpose()), std::bad_alloc);
}

TEST(Eigen, EmptyArraysGiveEmptyMaps) {
    cow_FixedArray<double> none;
    cow_2DArray<double> flat(0, 4, 0);
    EXPECT_TRUE(cow_WritableVector(none).size() == 0 && cow_WritableMatrix(flat).cols() == 4);
    EXPECT_EQ(cow_2DArrayOf(cow_ConstMatrix(flat)).Cols(), 4);
}
