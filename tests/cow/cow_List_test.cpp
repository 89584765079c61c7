#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <cow/cow_ListIter.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <support/expect_abort.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <sstream>

// What a list keeps behind its interface: how large its table is and which blocks it shares.
struct kzm_ListView {
    // Such as "16 shift 4 offset 255: 15 16*2", the last a block that two tables share.
    static std::string Of(const cow_List<int>& list) {
        std::ostringstream text;
        text << list.m_tableSlots << " shift " << list.m_blockShift << " offset " << list.m_offset
             << ":";
        for (int slot = 0; slot < list.m_tableSlots; ++slot) {
            if (!list.m_table[slot]) continue;
            text << ' ' << slot;
            if (list.m_table[slot]->m_count > 1) text << '*' << list.m_table[slot]->m_count;
        }
        return text.str();
    }
};

namespace {

using List = cow_List<int>;

List Counting(int n, int first = 0) {
    List list;
    for (int i = 0; i < n; ++i) list.Append(first + i);
    return list;
}
List Sized(int n) { return List(cow_ListConstruct(), n); }

TEST(List, ConstructorsHoldTheirArgumentsInOrder) {
    EXPECT_TRUE(List(5) == List{5} && List(3, 4) == (List{3, 4}));
    EXPECT_EQ(List(1, 2, 3, 4, 5), Counting(5, 1));
    std::istringstream text("4 5");
    EXPECT_EQ(List(std::istream_iterator<int>(text), std::istream_iterator<int>()), List(4, 5));
    EXPECT_EQ(cow_List<cow_String>("a", "b").ConstGet(1), "b");  // not a pair of iterators
    EXPECT_EQ((cow_List<cow_List<int>>{{1, 2}, {3}}).ConstGet(0), List(1, 2));
}

TEST(List, TableTakesTheRequiredShapes) {
    const std::pair<List, const char*> cases[] = {
        {Sized(-1), "0 shift 4 offset 0:"},
        {Sized(255), "16 shift 4 offset 0:"},
        {Sized(256), "24 shift 5 offset 0:"},
        {Sized(257), "25 shift 5 offset 0:"},
        {Sized(511), "32 shift 5 offset 0:"},
        {Sized(512), "24 shift 6 offset 0:"},
        {Sized(1000000), "32 shift 16 offset 0:"},
        {Sized(33554431), "24 shift 22 offset 0:"},
        {Sized(INT_MAX), "24 shift 28 offset 0:"},
        {Sized(300), "26 shift 5 offset 0:"},
        {Sized(300).Append(1), "16 shift 5 offset 0: 0"},
        {Sized(300).Append(1).Resize(0), "0 shift 4 offset 0:"},
        {Sized(300).Prepend(1), "26 shift 5 offset 831: 25"},
        {Sized(300).Prepend(1).Sort(), "26 shift 5 offset 831: 25"},
        {Sized(300).Prepend(1).Prepend(2).Resize(1), "32 shift 5 offset 830: 25"},
        {Sized(300).Concatenate(List()), "0 shift 4 offset 0:"},
        {List().Resize(10), "16 shift 4 offset 0:"},
        {List().Resize(10).Resize(1000), "64 shift 4 offset 0:"},
        {List(1).Resize(1000).Append(1), "16 shift 4 offset 0: 0"},
        {List().Prepend(1), "16 shift 4 offset 255: 15"},
        {List().InsertIndex(0, 1).Append(2), "32 shift 4 offset 255: 15 16"},
        {List().Prepend(1).Resize(0), "16 shift 4 offset 0:"},
        {List().Prepend(1).Resize(0).Append(1), "16 shift 4 offset 0: 0"},
        {Counting(200).Prepend(1), "16 shift 4 offset 47: 2 3 4 5 6 7 8 9 10 11 12 13 14 15"}};
    for (const auto& [list, shape] : cases) EXPECT_EQ(kzm_ListView::Of(list), shape);
}

TEST(List, PrependsFillTheBlocksInFrontOfAFullTable) {
    List list = Counting(256);
    const auto shape = [&](const List& l) { return kzm_ListView::Of(l).substr(0, 27); };
    EXPECT_EQ(shape(list.Prepend(-1)), "32 shift 4 offset 255: 15 1");
    for (int i = -2; i >= -256; --i) list.Prepend(i);
    EXPECT_EQ(shape(list), "32 shift 4 offset 0: 0 1 2 ");
    EXPECT_EQ(shape(list.Prepend(-257)), "48 shift 4 offset 255: 15 1");
    EXPECT_EQ(list, Counting(513, -257));
    for (int i = -258; i >= -9000; --i) list.Prepend(i);
    EXPECT_EQ(list.Append(256), Counting(9257, -9000));
    EXPECT_EQ(List(list).Resize(100).Prepend(-9001), Counting(101, -9001));
}

TEST(List, WritesCopyTheTableAndTheBlocksTheyChange) {
    const List original = Counting(100);
    List copy(original), cut(original), whole(original);
    host_heap::Watch();
    copy.Get(50) = copy.Get(51) = -1;
    EXPECT_EQ(host_heap::g_probe.requests, 3);  // count, table, block
    host_heap::Unwatch();
    EXPECT_EQ(kzm_ListView::Of(copy), "16 shift 4 offset 0: 0*2 1*2 2*2 3 4*2 5*2 6*2");
    EXPECT_EQ(kzm_ListView::Of(cut.Resize(10)), "16 shift 4 offset 0: 0");
    EXPECT_EQ(kzm_ListView::Of(whole.Resize(16)), "16 shift 4 offset 0: 0*3");
    const int* const own = &copy.ConstGet(50);
    EXPECT_EQ(kzm_ListView::Of(copy.Fill(100, 1)), "16 shift 4 offset 0: 0 1 2 3 4 5 6");
    EXPECT_TRUE(&copy.ConstGet(50) == own && copy == List().Fill(100, 1));
    EXPECT_EQ(original, Counting(100));
}

TEST(List, RemovedElementsAreSharedNoMore) {
    using Names = cow_List<cow_String>;
    void (*const removals[])(Names&) = {
        [](Names& l) { l.Pop(); }, [](Names& l) { l.RemoveIndex(1); },
        [](Names& l) { l.Resize(1); }, [](Names& l) { l.SetFromArray(&l.ConstGet(0), 1); }};
    for (const auto& remove : removals) {
        Names names("a", "b", "c");
        cow_String removed = names.ConstGet(&remove == removals + 1 ? 1 : 2);
        remove(names);
        host_heap::Watch();
        removed[0] = 'x';
        EXPECT_EQ(host_heap::g_probe.requests, 0) << &remove - removals;
        host_heap::Unwatch();
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

TEST(List, DerivedListsKeepOrderAndRepeats) {
    const List list{5, 3, 5, 1, 3};
    EXPECT_EQ(list.Difference({3, 9}), List(5, 5, 1));
    EXPECT_TRUE(list.Slice(1, 3) == List(3, 5, 1) && list.Slice(3, 0) == List());
    const List big = Counting(1000);
    EXPECT_EQ(big.Difference(Counting(990)), Counting(10, 990));
    cow_List<double> numbers;
    for (int i = 0; i < 40; ++i) numbers.Append(i % 4 == 1 ? std::nan("") : i);
    EXPECT_EQ(numbers.Difference(numbers).Length(), 10);  // NaN is in no list
    EXPECT_TRUE(numbers != numbers && !(numbers == cow_List<double>(numbers)));
    List slice = big.Slice(100, 500);
    EXPECT_EQ(&slice.ConstGet(0), &big.ConstGet(100));
    slice.Append(600).Prepend(99);
    EXPECT_EQ(slice, Counting(502, 99));
    EXPECT_EQ(big, Counting(1000));
}

TEST(List, IteratorsWorkWithTheStandardAlgorithmsWithoutCopying) {
    static_assert(std::random_access_iterator<List::const_iterator>);
    for (const int n : {0, 1, 16, 17, 256}) {
        const List list = Counting(n);
        host_heap::Watch();
        EXPECT_EQ(std::accumulate(list.begin(), list.end(), 0), n * (n - 1) / 2);
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(*std::lower_bound(list.begin(), list.end(), i) == i &&
                        (list.end() - n)[i] == i);
        EXPECT_EQ(host_heap::g_probe.requests, 0);
        host_heap::Unwatch();
    }
}

TEST(ListDeathTest, IndexOutsideTheListAborts) {
    List list(1, 2, 3), empty;
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
