#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <new>
#include <utility>
#include <vector>

namespace {

// Counts its live objects, so that a lost or twice destroyed referent shows.
struct Tracked {
    static int s_live;
    int value;
    explicit Tracked(int v) : value(v) { ++s_live; }
    Tracked(const Tracked& other) : value(other.value) { ++s_live; }
    ~Tracked() { --s_live; }
};
int Tracked::s_live = 0;

using Handle = cow_COW<Tracked, cow_Direct<Tracked>>;

TEST(CowHandle, WriteToACopyLeavesTheOriginalAndMakesBothExclusive) {
    Handle a(Tracked(1));
    host_heap::Watch();
    Handle b(std::move(a));  // shares
    EXPECT_TRUE(a.HasValue() && !a.Exclusive() && &a.ConstGet() == &b.ConstGet());
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    b.Get().value = 2;
    EXPECT_EQ(&b.Get(), &b.Get());
    EXPECT_EQ(host_heap::g_probe.requests, 2);  // the referent and its count
    EXPECT_TRUE(a.Exclusive() && b.Exclusive());
    EXPECT_EQ(a.ConstGet().value + 10 * b.ConstGet().value, 21);
    b = a;
    b = cow_Direct<Tracked>::Copy(Tracked(3));
    EXPECT_EQ(a.ConstGet().value + 10 * b.ConstGet().value, 31);
    host_heap::Watch();
    b = static_cast<Tracked*>(nullptr);  // exclusive: keeps its counter
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    host_heap::Unwatch();
    EXPECT_TRUE(b.IsNull());
    a = std::move(b);
    EXPECT_TRUE(a.IsNull() && b.IsNull());
    EXPECT_EQ(Tracked::s_live, 0);
}

using Numbers = cow_FixedArray<double>;

TEST(FixedArray, WritesDetachOnceAndOnlyTheWriter) {
    Numbers a(3, 1.5);
    Numbers b(std::move(a));  // shares
    EXPECT_EQ(a.begin(), b.begin());
    host_heap::Watch();
    b.Get(1) = b.Get(2) = 2.5;
    a.Get(0) = 0.5;
    EXPECT_EQ(host_heap::g_probe.requests, 3);  // representation, elements, count
    host_heap::Unwatch();
    EXPECT_EQ(std::vector<double>(a.begin(), a.end()), (std::vector{0.5, 1.5, 1.5}));
    EXPECT_EQ(std::vector<double>(b.begin(), b.end()), (std::vector{1.5, 2.5, 2.5}));
    cow_FixedArray<cow_String> names(2, "new");
    names = cow_FixedArray<cow_String>(3, names.Get(0));
    EXPECT_EQ(names, cow_FixedArray<cow_String>(3, "new"));
}

TEST(Arrays, EqualityIsShapeThenElements) {
    const Numbers nan(1, std::nan(""));
    EXPECT_TRUE(!(nan == nan) && nan != Numbers(nan));
    EXPECT_TRUE(Numbers(2, 0.0) == Numbers(2, -0.0) && Numbers(2, 1.0) != Numbers(3, 1.0));
    const int source[] = {3, 3};
    EXPECT_EQ(Numbers(source, source + 2), Numbers(2, 3.0));
    EXPECT_TRUE(Numbers() == Numbers(0, 7.0) && Numbers(-4, 1.0).Size() == 0);
    using A = cow_2DArray<int>;
    EXPECT_TRUE(A(2, 3, 1) == A(2, 3, 1) && A(2, 3, 1) != A(3, 2, 1) && A(0, 3, 1) != A(0, 5, 1));
    EXPECT_NE(cow_2DArray<float>(1, 1, NAN), cow_2DArray<float>(1, 1, NAN));
}

TEST(Array2D, NoElementsNeedNoStorageAndTooManyAreExhaustion) {
    for (const auto& [rows, cols] : {std::pair(0, 5), {5, 0}, {-3, 2}, {0, 0}}) {
        const cow_2DArray<cow_String> a(rows, cols, "x");
        EXPECT_TRUE(!a.begin() && !a.end() && a.Rows() == std::max(rows, 0));
    }
    EXPECT_THROW(cow_2DArray<double>(INT_MAX, INT_MAX, 0.0), std::bad_alloc);
}

TEST(ArrayReps, AssignmentCopiesDeepAndSurvivesSelf) {
    cow_FixedArrayRep<cow_String> a(2);
    a.Data()[1] = "b";
    cow_FixedArrayRep<cow_String> b(5);
    b = a;
    a.Data()[1] = "changed";
    b = *&b;
    EXPECT_TRUE(b.Data()[1] == "b" && a != b);
    cow_2DArrayRep<int> none(0, 4);
    cow_2DArrayRep<int> some(1, 2, 3);
    some = some = none;
    EXPECT_TRUE(!some.Data() && some.Cols() == 4);
}

}  // namespace
