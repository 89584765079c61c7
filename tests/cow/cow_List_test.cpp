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
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "list_view.h"

namespace {

using List = cow_List<int>;
using View = kzm_ListView;
using Shape = View::Shape;

List Counting(int n) {
    List list;
    for (int i = 0; i < n; ++i) list.Append(i);
    return list;
}
template <class Step>
void Times(int n, const Step& step) {
    for (int i = 0; i < n; ++i) step(i);
}

TEST(List, ConstructorsHoldTheirArgumentsInOrder) {
    EXPECT_EQ(List(5), (List{5}));
    EXPECT_EQ(List(3, 4), (List{3, 4}));
    EXPECT_EQ(List(1, 2, 3, 4, 5), (List{1, 2, 3, 4, 5}));
    EXPECT_EQ(List(cow_ListConstruct(), 9).Length(), 0);
    const std::vector<int> few{7, 8, 9};
    EXPECT_EQ(List(few.begin(), few.end()), List(7, 8, 9));
    std::istringstream text("4 5");
    EXPECT_EQ(List(std::istream_iterator<int>(text), std::istream_iterator<int>()), List(4, 5));
    EXPECT_EQ(cow_List<cow_String>("a", "b").ConstGet(1), cow_String("b"));  // not an iterator pair
    EXPECT_EQ((cow_List<cow_List<int>>{{1, 2}, {3}}).ConstGet(0).Length(), 2);
}

TEST(List, PreSizingChoosesBlocksFromTheRoundedExponent) {
    const int cases[][3] = {{-1, 0, 4},       {0, 0, 4},     {1, 16, 4},        {255, 16, 4},
                            {256, 24, 5},     {257, 25, 5},  {300, 26, 5},      {511, 32, 5},
                            {512, 24, 6},     {1000, 32, 6}, {1000000, 32, 16}, {33554431, 24, 22},
                            {INT_MAX, 24, 28}};
    for (const auto& [n, slots, shift] : cases) {
        SCOPED_TRACE(n);
        EXPECT_EQ(View::Of(List(cow_ListConstruct(), n)), (Shape{slots, shift, 0}));
    }
}

TEST(List, TableGrowsAndShrinksInTheRequiredSteps) {
    struct Step {
        const char* what;
        void (*apply)(List&);
        Shape shape;
        const char* blocks;
    };
    const auto presized = [](List& l) { l = List(cow_ListConstruct(), 300); };
    const auto append = [](List& l) { l.Append(1); };
    const auto prepend = [](List& l) { l.Prepend(1); };
    const Step steps[] = {
        {"room for 10",
         [](List& l) {
             l = List();
             l.Resize(10);
         },
         {16, 4, 0},
         ""},
        {"room for 1000", [](List& l) { l.Resize(1000); }, {64, 4, 0}, ""},
        {"append undoes it", append, {16, 4, 0}, "0:1"},
        {"append undoes it again", [](List& l) { l.Resize(1000).Append(1); }, {16, 4, 0}, "0:1"},
        {"pre-sized", presized, {26, 5, 0}, ""},
        {"append keeps the block size", append, {16, 5, 0}, "0:1"},
        {"nothing added to a pre-sized list",
         [](List& l) {
             l = List(cow_ListConstruct(), 300);
             l.Concatenate(List());
         },
         {0, 4, 0},
         ""},
        {"pre-sized, filled, cleared",
         [](List& l) {
             l = List(cow_ListConstruct(), 300);
             l.Append(1).Resize(0);
         },
         {0, 4, 0},
         ""},
        {"prepend first", prepend, {16, 4, 255}, "15:1"},
        {"then append", append, {32, 4, 255}, "15:1 16:1"},
        {"cleared with an offset",
         [](List& l) {
             l = List();
             l.Prepend(1).Resize(0);
         },
         {16, 4, 0},
         ""},
        {"blocks of 16 at the start", append, {16, 4, 0}, "0:1"},
        {"pre-sized, prepend",
         [](List& l) {
             l = List(cow_ListConstruct(), 300);
             l.Prepend(1);
         },
         {26, 5, 831},
         "25:1"},
        {"shrinking can lengthen it",
         [](List& l) { l.Prepend(1).Resize(1); },
         {32, 5, 830},
         "25:1"},
        {"200, prepend",
         [](List& l) { l = Counting(200).Prepend(1); },
         {16, 4, 47},
         "2:1 3:1 4:1 5:1 6:1 7:1 8:1 9:1 10:1 11:1 12:1 13:1 14:1 15:1"},
        {"full table, prepend",
         [](List& l) { l = Counting(256).Prepend(-1); },
         {32, 4, 255},
         "15:1 16:1 17:1 18:1 19:1 20:1 21:1 22:1 23:1 24:1 25:1 26:1 27:1 28:1 29:1 30:1 31:1"}};
    List list;
    for (const Step& step : steps) {
        SCOPED_TRACE(step.what);
        step.apply(list);
        EXPECT_EQ(View::Of(list), step.shape);
        EXPECT_EQ(View::Blocks(list), step.blocks);
    }
    Times(255, [&](int i) { list.Prepend(-2 - i); });
    EXPECT_EQ(View::Of(list), (Shape{32, 4, 0}));
    list.Prepend(-257);
    EXPECT_EQ(View::Of(list), (Shape{48, 4, 255}));
    Times(513, [&](int i) { ASSERT_EQ(list.ConstGet(i), i - 257); });
}

TEST(List, OneWriteCopiesTheTableAndOneBlock) {
    const List original = Counting(100);
    List copy(original);
    EXPECT_EQ(View::TableCount(copy), 2);
    host_heap::Watch();
    copy.Get(50) = -1;
    copy.Get(51) = -2;
    EXPECT_EQ(host_heap::g_probe.requests, 3);  // count, table, block
    host_heap::Unwatch();
    EXPECT_EQ(original, Counting(100));
    for (const List& each : {original, copy})
        EXPECT_EQ(View::Blocks(each), "0:2 1:2 2:2 3:1 4:2 5:2 6:2");
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(&original.ConstGet(i) == &copy.ConstGet(i), i / 16 != 3) << i;
}

TEST(List, EveryWriteLeavesASharedOriginalAlone) {
    void (*const writes[])(List&) = {[](List& l) { l.Get(3) = 9; },
                                     [](List& l) { l.UncheckedGet(3) = 9; },
                                     [](List& l) { l.Append(9); },
                                     [](List& l) { l.Prepend(9); },
                                     [](List& l) { l.InsertIndex(2, 9); },
                                     [](List& l) { l.Concatenate(l); },
                                     [](List& l) { l.Fill(40, 9); },
                                     [](List& l) { l.RemoveIndex(1); },
                                     [](List& l) { l.Resize(20); },
                                     [](List& l) { l.RemoveMember(30); },
                                     [](List& l) { l.Pop(); },
                                     [](List& l) { l.Sort().Get(0) = 9; },
                                     [](List& l) { l.Resize(0); },
                                     [](List& l) { l.SetFromArray(&l.Last(), 1); }};
    for (const auto& write : writes) {
        SCOPED_TRACE(&write - writes);
        const List original = Counting(40);
        List tableShared(original);
        List blocksShared(original);
        blocksShared.Get(39) = 39;
        write(tableShared);
        write(blocksShared);
        EXPECT_EQ(original, Counting(40));
        EXPECT_EQ(tableShared, blocksShared);
    }
}

TEST(List, ShrinkingCopiesTheLastBlockOnlyIfItIsCut) {
    const struct {
        int n;
        const char* blocks;
    } cases[] = {{10, "0:1"}, {16, "0:2"}};
    for (const auto& [n, blocks] : cases) {
        const List original = Counting(20);
        List copy(original);
        copy.Resize(n);
        EXPECT_EQ(View::Blocks(copy), blocks);
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
        {{1, 2, 3}, [](List& l) { l.InsertIndex(0, l.ConstGet(2)); }, {3, 1, 2, 3}},
        {{7, 8}, [](List& l) { l.Fill(3, l.ConstGet(1)); }, {8, 8, 8}},
        {{1, 2, 1}, [](List& l) { l.RemoveMember(l.ConstGet(2)); }, {2, 1}},
        {{1, 2, 3, 4}, [](List& l) { l.SetFromArray(&l.ConstGet(1), 3); }, {2, 3, 4}},
        {{1, 2, 3}, [](List& l) { l.Concatenate(l); }, {1, 2, 3, 1, 2, 3}},
        {{1, 2}, [](List& l) { l.Append(l.ConstGet(0)).Prepend(l.ConstGet(1)); }, {2, 1, 2, 1}},
        {{1, 2}, [](List& l) { l = *&l; }, {1, 2}}};
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        List list(each.before);
        each.apply(list);  // shared with the case
        EXPECT_EQ(list, each.after);
        List alone(each.before.begin(), each.before.end());
        each.apply(alone);
        EXPECT_EQ(alone, each.after);
    }
    cow_List<cow_List<int>> nested;
    nested.Append(List(1, 2));
    List inner = nested.ConstGet(0);
    nested = cow_List<cow_List<int>>(nested.ConstGet(0));
    EXPECT_EQ(nested.ConstGet(0), inner);
}

template <class T>
void ExpectSorted(cow_List<T> list, const cow_List<T>& sorted) {
    const cow_List<T> before(list.begin(), list.end());
    const cow_List<T> copy(list);
    EXPECT_EQ(list.Sort(), sorted);
    EXPECT_EQ(copy, before);
}
TEST(List, SortComparesWithoutSubtractingOrCutting) {
    ExpectSorted<int>({INT_MAX, INT_MIN, 0}, {INT_MIN, 0, INT_MAX});
    ExpectSorted<unsigned>({0xFFFFFFFFu, 1}, {1, 0xFFFFFFFFu});
    ExpectSorted<std::int64_t>({std::int64_t{1} << 32, 1, 0}, {0, 1, std::int64_t{1} << 32});
    ExpectSorted<cow_String>({"b", "\x80", "ab", ""}, {"", "ab", "b", "\x80"});
    ExpectSorted<bool>({true, false, true}, {false, true, true});
    ExpectSorted<cow_List<double>>({{2.0}, {1.0, 5.0}, {1.0}}, {{1.0}, {1.0, 5.0}, {2.0}});
    ExpectSorted<cow_FixedArray<double>>({{2, 1.0}, {1, 1.0}}, {{1, 1.0}, {2, 1.0}});
    ExpectSorted<std::string>({"two", std::string(40, 'x'), "a"},
                              {"a", "two", std::string(40, 'x')});
    ExpectSorted<int>({}, {});
    List many;
    Times(1000, [&](int i) { many.Append(i * 577 % 1000); });
    EXPECT_EQ(many.Sort(), Counting(1000));
}

TEST(List, EqualityIsThatOfTheElements) {
    const cow_List<double> numbers(1, std::nan(""));
    const cow_List<double> copy(numbers);
    EXPECT_FALSE(numbers == numbers);
    EXPECT_TRUE(numbers != copy);
    EXPECT_EQ(cow_List<double>(0.0), cow_List<double>(-0.0));
    EXPECT_NE(List(1), List(1, 2));
    EXPECT_EQ(Counting(99).Prepend(-1).RemoveIndex(0), Counting(99));  // blocks lie differently
}

TEST(List, DerivedListsKeepOrderAndRepeats) {
    const List list{5, 3, 5, 1, 3};
    EXPECT_EQ(list.Difference({3, 9}), List(5, 5, 1));
    EXPECT_EQ(list.FindMember(3), 1);
    EXPECT_EQ(list.FindMember(4), -1);
    EXPECT_EQ(list.Slice(1, 3), List(3, 5, 1));
    EXPECT_EQ(list.Slice(3, 0), List());
    const List big = Counting(1000);
    EXPECT_EQ(big.Difference(Counting(990)).Length(), 10);
    cow_List<double> numbers;
    Times(40, [&](int i) { numbers.Append(i % 4 == 1 ? std::nan("") : i); });
    EXPECT_EQ(numbers.Difference(numbers).Length(), 10);  // NaN is in no list
    List slice = big.Slice(100, 500);
    EXPECT_EQ(&slice.ConstGet(0), &big.ConstGet(100));
    slice.Append(-1).Prepend(-2).Get(9) = -3;
    EXPECT_EQ(slice.ConstGet(10), 109);
    EXPECT_EQ(slice.Length(), 502);
    EXPECT_EQ(big, Counting(1000));
}

TEST(List, CArrayBelongsToTheCaller) {
    int n = -1;
    EXPECT_EQ(List().GetCArray(n), nullptr);
    EXPECT_EQ(n, 0);
    cow_List<cow_String> list("a", "b");
    cow_String* const copies = list.GetCArray(n);
    list.Get(0) = "c";
    EXPECT_EQ(n, 2);
    EXPECT_EQ(copies[0], "a");
    cow_List<cow_String>::ReleaseCArray(copies, n);
}

TEST(List, IteratorsWorkWithTheStandardAlgorithmsWithoutCopying) {
    static_assert(std::random_access_iterator<List::const_iterator>);
    for (const int n : {0, 1, 15, 16, 17, 100, 256}) {
        SCOPED_TRACE(n);
        List list = Counting(n);
        const List prepended = Counting(n).Prepend(-1);
        const List copy(list);
        host_heap::Watch();
        EXPECT_EQ(list.end() - list.begin(), n);
        EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0), n * (n - 1) / 2);
        EXPECT_TRUE(std::equal(std::reverse_iterator(prepended.end()),
                               std::reverse_iterator(prepended.begin() + 1),
                               std::reverse_iterator(list.end())));
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(*std::lower_bound(list.begin(), list.end(), i), i);
            EXPECT_EQ((list.end() - n)[i], i);
        }
        EXPECT_EQ(host_heap::g_probe.requests, 0);
        host_heap::Unwatch();
    }
}

TEST(List, IterWalksTheListAsItWas) {
    for (const int n : {0, 16, 40}) {
        List list = Counting(n).Prepend(-1);
        int seen = 0;
        cow_ListIter<int> it(list);
        for (; it.NotDone(); it.Next(), ++seen) {
            EXPECT_EQ(it.ArrayIndex(), seen);
            EXPECT_EQ(it.CurrentItem(), seen - 1);
            list.Append(7).Get(seen) = 5;
        }
        EXPECT_EQ(seen, n + 1);
        it.Next();
        EXPECT_FALSE(it.NotDone());
        cow_ListIter<int> again(it);
        again.First();
        EXPECT_EQ(again.CurrentItem(), -1);
    }
}

TEST(ListDeathTest, IndexOutsideTheListAborts) {
    const List three(1, 2, 3);
    List list(three);
    List empty;
    for (const int i : {-1, 3, INT_MAX, INT_MIN}) {
        EXPECT_ABORT(three.ConstGet(i));
        EXPECT_ABORT(list.Get(i));
        EXPECT_ABORT(list.RemoveIndex(i));
    }
    EXPECT_ABORT(empty.Last());
    EXPECT_ABORT(empty.Pop());
    EXPECT_ABORT(empty.RemoveLast());
    EXPECT_ABORT(list.InsertIndex(4, 0));
    EXPECT_ABORT(three.Slice(1, INT_MAX));
    EXPECT_ABORT(list.Resize(-1));
    EXPECT_ABORT(list.Fill(-1, 0));
}

TEST(List, PositionsBeyondIntAreExhaustion) {
    const List full(List(1).Prepend(0));  // offset 255
    for (const auto& step : {+[](List& l) { l.Resize(INT_MAX); },
                             +[](List& l) {
                                 l = List(cow_ListConstruct(), INT_MAX);
                                 l.Prepend(1);
                             }}) {
        List list(full);
        EXPECT_THROW(step(list), std::bad_alloc);
        EXPECT_TRUE(list == full || list.Length() == 0);
    }
}

}  // namespace
