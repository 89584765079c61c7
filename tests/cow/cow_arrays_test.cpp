#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <new>
#include <utility>
#include <vector>

namespace {

using Numbers = cow_FixedArray<double>;

TEST(FixedArray, WritesDetachOnceAndOnlyTheWriter) {
    Numbers a(3, 1.5);
    Numbers b(std::move(a));  // shares
    EXPECT_EQ(a.begin(), b.begin());
    host_heap::Watch();
    b.Get(1) = 2.5;
    EXPECT_EQ(host_heap::g_probe.requests, 3);  // representation, elements, count
    b.Get(2) = 3.5;
    a.Get(0) = 0.5;
    EXPECT_EQ(host_heap::g_probe.requests, 3);
    host_heap::Unwatch();
    EXPECT_EQ(std::vector<double>(a.begin(), a.end()), (std::vector{0.5, 1.5, 1.5}));
    EXPECT_EQ(std::vector<double>(b.begin(), b.end()), (std::vector{1.5, 2.5, 3.5}));
    const double* const before = b.begin();
    b.Get(0);
    EXPECT_EQ(b.begin(), before);
}

TEST(FixedArray, EqualityIsSizeThenElements) {
    const Numbers nan(1, std::nan(""));
    const Numbers copy(nan);
    EXPECT_FALSE(nan == nan);
    EXPECT_TRUE(nan != copy);
    EXPECT_EQ(Numbers(2, 0.0), Numbers(2, -0.0));
    EXPECT_NE(Numbers(2, 1.0), Numbers(3, 1.0));
    const int source[] = {3, 3};
    EXPECT_EQ(Numbers(source, source + 2), Numbers(2, 3.0));
    EXPECT_EQ(Numbers(), Numbers(0, 7.0));
    EXPECT_EQ(Numbers(-4, 1.0).Size(), 0);
}

TEST(FixedArray, ArgumentMayBeAnElementOfTheTarget) {
    cow_FixedArray<cow_String> names(2, "old");
    names.Get(0) = "new";
    names = cow_FixedArray<cow_String>(3, names.Get(0));
    EXPECT_EQ(names, cow_FixedArray<cow_String>(3, "new"));
}

TEST(Array2D, ElementsLieRowByRow) {
    cow_2DArray<int> a(2, 3, 0);
    const cow_2DArray<int> b(a);
    a.Get(1, 0) = 7;
    EXPECT_EQ(std::vector<int>(a.begin(), a.end()), (std::vector{0, 0, 0, 7, 0, 0}));
    EXPECT_EQ(b.ConstGet(1, 0), 0);
}

TEST(Array2D, ShapeCountsInEquality) {
    using A = cow_2DArray<int>;
    EXPECT_EQ(A(2, 3, 1), A(2, 3, 1));
    EXPECT_NE(A(2, 3, 1), A(3, 2, 1));
    EXPECT_NE(A(0, 3, 1), A(0, 5, 1));
    EXPECT_NE(cow_2DArray<float>(1, 1, NAN), cow_2DArray<float>(1, 1, NAN));
}

TEST(Array2D, NoElementsNeedNoStorage) {
    for (const auto& [rows, cols] : {std::pair(0, 5), {5, 0}, {-3, 2}, {0, 0}}) {
        const cow_2DArray<cow_String> a(rows, cols, "x");
        EXPECT_EQ(a.begin(), nullptr);
        EXPECT_EQ(a.begin(), a.end());
        EXPECT_EQ(a.Rows(), std::max(rows, 0));
    }
}

TEST(Array2D, MoreElementsThanMemoryIsExhaustion) {
    EXPECT_THROW(cow_2DArray<double>(INT_MAX, INT_MAX, 0.0), std::bad_alloc);
}

TEST(ArrayReps, AssignmentCopiesDeepAndSurvivesSelf) {
    cow_FixedArrayRep<cow_String> a(2);
    a.Data()[1] = "b";
    cow_FixedArrayRep<cow_String> b(5);
    b = a;
    a.Data()[1] = "changed";
    b = *&b;
    EXPECT_EQ(b.Data()[1], "b");
    EXPECT_TRUE(a != b);
    cow_2DArrayRep<int> none(0, 4);
    cow_2DArrayRep<int> some(1, 2, 3);
    some = some = none;
    EXPECT_EQ(some.Data(), nullptr);
    EXPECT_EQ(some.Cols(), 4);
}

template <class A>
struct Sharing {
    A written, other;
    explicit Sharing(const A& a) : written(a), other(written) {}
};
TEST(Arrays, MemoryFailureLeavesAllSharersAsTheyWere) {
    using Row = cow_FixedArray<cow_String>;
    using Plane = cow_2DArray<cow_String>;
    ForEveryAllocationFailure([] { return Sharing(Row(3, "x")); },
                              [](auto& s) { s.written.Get(1) = "y"; },
                              [](const auto& s, bool done) {
                                  EXPECT_EQ(s.written.ConstGet(1), done ? "y" : "x");
                                  EXPECT_EQ(s.other, Row(3, "x"));
                              });
    ForEveryAllocationFailure([] { return Sharing(Plane(2, 2, "x")); },
                              [](auto& s) { s.written = Plane(1, 1, "y"); },
                              [](const auto& s, bool done) {
                                  EXPECT_EQ(s.written, done ? Plane(1, 1, "y") : Plane(2, 2, "x"));
                                  EXPECT_EQ(s.other, Plane(2, 2, "x"));
                              });
}

}  // namespace
