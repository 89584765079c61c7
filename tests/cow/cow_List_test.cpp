#include <coreutils/atr_String.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <cow/cow_ListIter.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <sstream>
#include <string>

#include "list_view.h"

namespace {

using List = cow_List<int>;
using View = kzm_ListView;

List Counting(int n, int first = 0) {
    List list;
    for (int i = 0; i < n; ++i) list.Append(first + i);
    return list;
}
List Sized(int n) { return List(cow_ListConstruct(), n); }

TEST(List, ConstructorsHoldTheirArgumentsInOrder) {
    EXPECT_EQ(List(5), (List{5}));
    EXPECT_EQ(List(3, 4), (List{3, 4}));
    EXPECT_EQ(List(1, 2, 3, 4, 5), Counting(5, 1));
    std::istringstream text("4 5");
    EXPECT_EQ(List(std::istream_iterator<int>(text), std::istream_iterator<int>()), List(4, 5));
    EXPECT_EQ(cow_List<cow_String>("a", "b").ConstGet(1), "b");  // not a pair of iterators
    EXPECT_EQ((cow_List<cow_List<int>>{{1, 2}, {3}}).ConstGet(0), List(1, 2));
}

TEST(List, TableTakesTheRequiredShapes) {
    struct Case {
        List list;
        const char* shape;
    };
    const Case cases[] = {
        {Sized(-1), "0 slots, shift 4, offset 0:"},
        {Sized(255), "16 slots, shift 4, offset 0:"},
        {Sized(256), "24 slots, shift 5, offset 0:"},
        {Sized(257), "25 slots, shift 5, offset 0:"},
        {Sized(511), "32 slots, shift 5, offset 0:"},
        {Sized(512), "24 slots, shift 6, offset 0:"},
        {Sized(1000000), "32 slots, shift 16, offset 0:"},
        {Sized(33554431), "24 slots, shift 22, offset 0:"},
        {Sized(INT_MAX), "24 slots, shift 28, offset 0:"},
        {Sized(300), "26 slots, shift 5, offset 0:"},
        {Sized(300).Append(1), "16 slots, shift 5, offset 0: 0"},
        {Sized(300).Append(1).Resize(0), "0 slots, shift 4, offset 0:"},
        {Sized(300).Prepend(1), "26 slots, shift 5, offset 831: 25"},
        {Sized(300).Prepend(1).Prepend(2).Resize(1), "32 slots, shift 5, offset 830: 25"},
        {Sized(300).Concatenate(List()), "0 slots, shift 4, offset 0:"},
        {List().Resize(10), "16 slots, shift 4, offset 0:"},
        {List().Resize(10).Resize(1000), "64 slots, shift 4, offset 0:"},
        {List(1).Resize(1000).Append(1), "16 slots, shift 4, offset 0: 0"},
        {List().Prepend(1), "16 slots, shift 4, offset 255: 15"},
        {List().InsertIndex(0, 1).Append(2), "32 slots, shift 4, offset 255: 15 16"},
        {List().Prepend(1).Resize(0), "16 slots, shift 4, offset 0:"},
        {List().Prepend(1).Resize(0).Append(1), "16 slots, shift 4, offset 0: 0"},
        {Counting(200).Prepend(1),
         "16 slots, shift 4, offset 47: 2 3 4 5 6 7 8 9 10 11 12 13 14 15"}};
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        EXPECT_EQ(View::Of(each.list), each.shape);
    }
}

TEST(List, PrependsFillTheBlocksInFrontOfAFullTable) {
    List list = Counting(256);
    const auto expectShape = [&](const char* shape) {
        EXPECT_EQ(View::Of(list).substr(0, std::string(shape).length()), shape);
    };
    list.Prepend(-1);
    expectShape("32 slots, shift 4, offset 255: 15 16 17");
    for (int i = -2; i >= -256; --i) list.Prepend(i);
    expectShape("32 slots, shift 4, offset 0: 0 1 2");
    list.Prepend(-257);
    expectShape("48 slots, shift 4, offset 255: 15 16");
    EXPECT_EQ(list, Counting(513, -257));
}

TEST(List, OneWriteCopiesTheTableAndOneBlock) {
    const List original = Counting(100);
    List copy(original);
    host_heap::Watch();
    copy.Get(50) = -1;
    copy.Get(51) = -2;
    EXPECT_EQ(host_heap::g_probe.requests, 3);  // count, table, block
    host_heap::Unwatch();
    EXPECT_EQ(original, Counting(100));
    EXPECT_EQ(View::Of(copy), "16 slots, shift 4, offset 0: 0*2 1*2 2*2 3 4*2 5*2 6*2");
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(&original.ConstGet(i) == &copy.ConstGet(i), i / 16 != 3) << i;
}

TEST(List, ShrinkingCopiesTheLastBlockOnlyIfItIsCut) {
    for (const int n : {10, 16}) {
        const List original = Counting(20);
        List copy(original);
        copy.Resize(n);
        EXPECT_EQ(View::Of(copy).substr(28), n == 16 ? " 0*2" : " 0");
        EXPECT_EQ(copy, Counting(n));
        EXPECT_EQ(original, Counting(20));
    }
}

TEST(List, ArgumentsMayBeElementsOfTheListItself) {
    struct Case {
        List before;
        void (*apply)(List&);
        List after;
    };
    const Case cases[] = {
        {{1, 2, 3}, [](List& l) { l.InsertIndex(1, l.ConstGet(2)); }, {1, 3, 2, 3}},
        {{1, 2, 3}, [](List& l) { l.Prepend(l.ConstGet(2)); }, {3, 1, 2, 3}},
        {{7, 8}, [](List& l) { l.Fill(3, l.ConstGet(1)); }, {8, 8, 8}},
        {{1, 2, 1}, [](List& l) { l.RemoveMember(l.ConstGet(2)); }, {2, 1}},
        {{1, 2, 3, 4}, [](List& l) { l.SetFromArray(&l.ConstGet(1), 3); }, {2, 3, 4}},
        {{1, 2, 3}, [](List& l) { l.Concatenate(l); }, {1, 2, 3, 1, 2, 3}},
        {{1, 2}, [](List& l) { l = *&l; }, {1, 2}}};
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        List shared(each.before);
        List alone(each.before.begin(), each.before.end());
        for (List* const list : {&shared, &alone}) {
            each.apply(*list);
            EXPECT_EQ(*list, each.after);
        }
    }
}

template <class T>
void ExpectSorted(cow_List<T> list, const cow_List<T>& sorted) {
    const cow_List<T> copy(list);
    const cow_List<T> before(list.begin(), list.end());
    EXPECT_EQ(list.Sort(), sorted);
    EXPECT_EQ(copy, before);
}
TEST(List, SortComparesWithoutSubtractingOrCutting) {
    ExpectSorted<int>({}, {});
    ExpectSorted<int>({INT_MAX, INT_MIN, 0}, {INT_MIN, 0, INT_MAX});
    ExpectSorted<unsigned>({0xFFFFFFFFu, 1}, {1, 0xFFFFFFFFu});
    ExpectSorted<std::int64_t>({std::int64_t{1} << 32, 1, 0}, {0, 1, std::int64_t{1} << 32});
    ExpectSorted<cow_String>({"b", "\x80", "ab", ""}, {"", "ab", "b", "\x80"});
    ExpectSorted<cow_List<double>>({{2.0}, {1.0, 5.0}, {1.0}}, {{1.0}, {1.0, 5.0}, {2.0}});
    ExpectSorted<cow_FixedArray<double>>({{2, 1.0}, {1, 1.0}}, {{1, 1.0}, {2, 1.0}});
    ExpectSorted<std::string>({"two", "a"}, {"a", "two"});  // points into itself
}

TEST(List, EqualityIsThatOfTheElements) {
    const cow_List<double> numbers(1, std::nan(""));
    const cow_List<double> copy(numbers);
    EXPECT_FALSE(numbers == numbers);
    EXPECT_TRUE(numbers != copy);
    EXPECT_EQ(Counting(99).Prepend(-1).RemoveIndex(0), Counting(99));  // blocks lie differently
}

TEST(List, DerivedListsKeepOrderAndRepeats) {
    const List list{5, 3, 5, 1, 3};
    EXPECT_EQ(list.Difference({3, 9}), List(5, 5, 1));
    EXPECT_EQ(list.Slice(1, 3), List(3, 5, 1));
    EXPECT_EQ(list.Slice(3, 0), List());
    const List big = Counting(1000);
    EXPECT_EQ(big.Difference(Counting(990)), Counting(10, 990));
    cow_List<double> numbers;
    for (int i = 0; i < 40; ++i) numbers.Append(i % 4 == 1 ? std::nan("") : i);
    EXPECT_EQ(numbers.Difference(numbers).Length(), 10);  // NaN is in no list
    List slice = big.Slice(100, 500);
    EXPECT_EQ(&slice.ConstGet(0), &big.ConstGet(100));
    slice.Append(600).Prepend(99);
    EXPECT_EQ(slice, Counting(502, 99));
    EXPECT_EQ(big, Counting(1000));
}

TEST(List, BlocksThatAFailedWriteLeavesAreUsedOrFreed) {
    const List many = Counting(600);
    for (const bool prepend : {false, true}) {
        ForEveryAllocationFailure([] { return List(7); },
                                  [&](List& list) { list.Concatenate(many); },
                                  [&](List& list, bool succeeded) {
                                      if (succeeded) return;
                                      prepend ? list.Prepend(7) : list.Append(7);
                                      EXPECT_EQ(list, List(7, 7));
                                  });
    }
}

TEST(List, IteratorsWorkWithTheStandardAlgorithmsWithoutCopying) {
    static_assert(std::random_access_iterator<List::const_iterator>);
    for (const int n : {0, 1, 16, 17, 256}) {
        SCOPED_TRACE(n);
        const List list = Counting(n);
        const List prepended = Counting(n).Prepend(-1);
        host_heap::Watch();
        EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0), n * (n - 1) / 2);
        EXPECT_TRUE(std::equal(std::reverse_iterator(prepended.end()),
                               std::reverse_iterator(prepended.begin() + 1),
                               std::reverse_iterator(list.end())));
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(std::lower_bound(list.begin(), list.end(), i) - list.begin(), i);
            EXPECT_EQ((list.end() - n)[i], i);
        }
        EXPECT_EQ(host_heap::g_probe.requests, 0);
        host_heap::Unwatch();
    }
}

TEST(List, IterWalksTheListAsItWas) {
    for (const int n : {0, 15, 40}) {
        List list = Counting(n).Prepend(-1);
        cow_ListIter<int> it(list);
        int seen = 0;
        for (; it.NotDone(); it.Next(), ++seen) {
            EXPECT_EQ(it.ArrayIndex(), seen);
            EXPECT_EQ(it.CurrentItem(), seen - 1);
            list.Append(7).Get(seen) = 5;
        }
        EXPECT_EQ(seen, n + 1);
        it.First();
        EXPECT_EQ(it.CurrentItem(), -1);
    }
}

TEST(ListDeathTest, IndexOutsideTheListAborts) {
    List list(1, 2, 3);
    List empty;
    for (const int i : {-1, 3, INT_MIN}) EXPECT_ABORT(list.ConstGet(i));
    EXPECT_ABORT(list.Get(INT_MAX));
    EXPECT_ABORT(list.RemoveIndex(3));
    EXPECT_ABORT(list.InsertIndex(4, 0));
    EXPECT_ABORT(list.Slice(1, INT_MAX));
    EXPECT_ABORT(list.Resize(-1));
    EXPECT_ABORT(empty.Last());
    EXPECT_ABORT(empty.Pop());
}

TEST(List, PositionsBeyondIntAreExhaustion) {
    List presized = Sized(INT_MAX);
    EXPECT_THROW(presized.Prepend(1), std::bad_alloc);
    EXPECT_EQ(presized.Length(), 0);
    List prepended = List(1).Prepend(0);  // offset 255
    EXPECT_THROW(prepended.Resize(INT_MAX), std::bad_alloc);
    EXPECT_EQ(prepended, List(0, 1));
}

}  // namespace
