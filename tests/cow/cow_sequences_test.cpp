// The values in a row: handle, text, list and arrays.
#include <coreutils/atr_String.h>
#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <cow/cow_ListIter.h>
#include <cow/cow_String.h>
#include <support/allocations.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

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

TEST(CowHandle, WriteToACopyLeavesTheOriginalAndMakesBothExclusive) {
    cow_COW<int, cow_Direct<int>> a(1), b(std::move(a));  // shares
    EXPECT_TRUE(a.HasValue() && !a.Exclusive() && &a.ConstGet() == &b.ConstGet());
    EXPECT_EQ(AllocationsOf([&] { b.Get() = 2; }), 2);  // the referent and its count
    EXPECT_TRUE(a.Exclusive() && b.Exclusive() && &b.Get() == &b.ConstGet());
    EXPECT_EQ(a.ConstGet() + 10 * b.ConstGet(), 21);
    b = a;
    b = cow_Direct<int>::Copy(3);
    EXPECT_EQ(a.ConstGet() + 10 * b.ConstGet(), 31);
    EXPECT_EQ(AllocationsOf([&] { b = static_cast<int*>(nullptr); }), 0);  // keeps its counter
    EXPECT_TRUE(b.IsNull() && !a.IsNull());
}

TEST(String, CopiesShareAndEmptyOnesNeverAllocate) {
    cow_String a("text"), empty;
    const cow_String b(a), c(std::move(a));
    const atr_String other(b);
    for (const char* each : {a.CStr(), c.CStr(), other.CStr(), cow_String(other).CStr()})
        EXPECT_EQ(each, b.CStr());
    const auto edit = [&] {
        empty.Append("").Erase().ToLower().LeftTrim(" ");
        for (const cow_String& each : {empty, cow_String(nullptr), cow_String("abc", 0)})
            EXPECT_EQ(each.CStr(), atr_StringBase::EmptyText());
    };
    EXPECT_EQ(AllocationsOf(edit), 0);
    cow_String capital("Text"), same(capital);
    EXPECT_EQ(AllocationsOf([&] { same.Capitalize(); }), 0);
    EXPECT_EQ(empty[0], '\0');
    EXPECT_NE(empty.CStr(), cow_String().CStr());
}

TEST(StringDeathTest, ReadingOutsideTheTextGivesZeroAndWritingAborts) {
    cow_String a("ab");
    for (const int outside : {-1, 3, INT_MAX}) {
        EXPECT_EQ(std::as_const(a)[outside], '\0');
        EXPECT_DEATH(a[outside] = 'x', "AssertionFailed:pos >= 0 && pos <= Length");
    }
}

TEST(String, ComparesBytesUnsignedUpToTheFirstZeroByte) {
    const cow_String x("a\0b", 3), y("a\0c", 3);
    EXPECT_TRUE(x.Length() == 3 && x.Compare(y) == 0 && cow_String().Compare(nullptr) == 0);
    EXPECT_EQ(std::hash<cow_String>()(x), std::hash<cow_String>()(y));
    EXPECT_TRUE(x.Compare("\x80") == -1 && BtreeCompare(x, y) == 0 && x == "a" && x != "ab");
}

TEST(String, MapBitsAlternateBetweenFrontAndBack) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "000"}, {"a", "110"}, {"ab", "10000"}, {"abc", "110000"}, {"ba", "01100"}};
    for (const auto& [key, bits] : cases)
        for (int i = 0; bits[i]; ++i)
            EXPECT_EQ(cow_MapBit(cow_String(key), i), bits[i] == '1') << key << " bit " << i;
}

TEST_WITH_REFUSALS(String, EditsTakeAnyCountAndNumbersReadBack) {
    const std::pair<cow_String, const char*> cases[] = {
        {cow_String("hello").Substr(1, INT_MAX), "ello"},
        {cow_String("hello").Erase(1, INT_MAX), "h"},
        {cow_String("aA").Capitalize(), "AA"},
        {cow_String("ad").Insert(INT_MAX, "bc", INT_MAX), "adbc"},
        {cow_String("hello").Replace(3, INT_MAX, "p", INT_MAX), "help"},
        {cow_String("hello").Replace(0, 2, "p", -1), "llo"},
        {cow_String("hello").Replace(0, 2, nullptr, 4).RightTrim(nullptr), "llo"},
        {cow_String(" \t x y ").LeftTrim("\t ").RightTrim(" "), "x y"},
        {cow_String(INT_MIN), "-2147483648"},
        {cow_String(0.1), "0.1"},
        {cow_String(1e300), "1e+300"}};
    for (const auto& [edited, expected] : cases) EXPECT_EQ(std::string_view(edited), expected);
    EXPECT_EQ(cow_String("abab").RFind("ab", INT_MAX) + cow_String("ab").Find(nullptr, 9) +
                  cow_String("x\0", 2).RightTrim("x").Length(),
              6);
    EXPECT_THROW(cow_String(std::string_view("", INT_MAX)), std::bad_alloc);
}

using List = cow_List<int>;

List Counting(int appended, int prepended = 0) {
    List list;
    for (int i = 0; i < appended; ++i) list.Append(i);
    for (int i = 0; i < prepended; ++i) list.Prepend(-i);
    return list;
}
List Sized(int n) { return List(cow_ListConstruct(), n); }

TEST_WITH_REFUSALS(List, ConstructorsHoldTheirArgumentsInOrder) {
    EXPECT_TRUE(List(5) == List{5} && List(3, 4) == (List{3, 4}));
    EXPECT_EQ(cow_List<cow_String>("a", "b").ConstGet(1), "b");  // not a pair of iterators
    EXPECT_EQ((cow_List<List>{{1, 2}, {3}}).ConstGet(0), List(1, 2));
}

TEST(List, TableTakesTheRequiredShapes) {
    const std::pair<int, const char*> sizes[] = {{-1, "0 shift 4"},       {255, "16 shift 4"},
                                                 {256, "24 shift 5"},     {300, "26 shift 5"},
                                                 {511, "32 shift 5"},     {33554431, "24 shift 22"},
                                                 {INT_MAX, "24 shift 28"}};
    for (const auto& [size, shape] : sizes)
        EXPECT_EQ(kzm_ListView::Of(Sized(size)), std::string(shape) + " offset 0:");
    const std::pair<List, const char*> cases[] = {
        {Sized(300).Append(1), "16 shift 5 offset 0: 0"},
        {Sized(300).Append(1).Resize(0), "0 shift 4 offset 0:"},
        {Sized(300).Prepend(1), "26 shift 5 offset 831: 25"},
        {Sized(300).Concatenate(List()), "0 shift 4 offset 0:"},
        {List().Resize(10).Resize(1000), "64 shift 4 offset 0:"},
        {List().InsertIndex(0, 1).Append(2), "32 shift 4 offset 255: 15 16"},
        {List().Prepend(1).Resize(0), "16 shift 4 offset 0:"},
        {Counting(200, 1), "16 shift 4 offset 47: 2 3 4 5 6 7 8 9 10 11 12 13 14 15"}};
    for (const auto& [list, shape] : cases) EXPECT_EQ(kzm_ListView::Of(list), shape);
    const std::pair<int, const char*> prepends[] = {{1, "32 shift 4 offset 255: 15 16 17 "},
                                                    {257, "48 shift 4 offset 255: 15 16 17 "}};
    for (const auto& [n, shape] : prepends)
        EXPECT_EQ(kzm_ListView::Of(Counting(256, n)).find(shape), 0) << n;
    List many = Counting(256, 9000);
    EXPECT_TRUE(std::is_sorted(many.begin(), many.end()) && many.Append(256).Length() == 9257);
    EXPECT_TRUE(std::is_sorted(std::reverse_iterator(many.end()),
                               std::reverse_iterator(many.begin()), std::greater()));
    EXPECT_EQ(many.Resize(2).Prepend(-9000), List(-9000, -8999, -8998));
    List roomy = List(1).Resize(2000);
    const int& beyond = roomy.UncheckedGet(1500) = 7;
    EXPECT_EQ(roomy.Append(beyond), List(1, 7));  // which gives up the block that 7 was in
}

TEST(List, WritesCopyTheTableAndTheBlocksTheyChange) {
    const List original = Counting(100);
    List copy(original), cut(original), whole(original);
    EXPECT_EQ(AllocationsOf([&] { copy.Get(50) = copy.Get(51) = -1; }), 3);  // count, table, block
    EXPECT_EQ(kzm_ListView::Of(copy), "16 shift 4 offset 0: 0*2 1*2 2*2 3 4*2 5*2 6*2");
    EXPECT_EQ(kzm_ListView::Of(cut.Resize(10)), "16 shift 4 offset 0: 0");
    EXPECT_EQ(kzm_ListView::Of(whole.Resize(16)), "16 shift 4 offset 0: 0*3");
    EXPECT_EQ(kzm_ListView::Of(copy.Fill(100, 1)), "16 shift 4 offset 0: 0 1 2 3 4 5 6");
    EXPECT_EQ(&original.Slice(20, 16).ConstGet(0), &original.ConstGet(20));
}

TEST(List, RemovedElementsAreSharedNoMore) {
    cow_List<cow_String> names("a", "b", "c", "d");
    std::vector<cow_String> removed(names.begin() + 1, names.end());
    names.Pop();
    names.RemoveIndex(2).Resize(1);
    const auto write = [&] {
        for (cow_String& each : removed) each[0] = 'x';
    };
    EXPECT_EQ(AllocationsOf(write), 0);
}

TEST(List, SortComparesWithoutSubtractingOrCutting) {
    const auto expect = [](auto list, decltype(list) sorted) { EXPECT_EQ(list.Sort(), sorted); };
    expect(List(INT_MAX, INT_MIN, 0), {INT_MIN, 0, INT_MAX});
    expect(cow_List<std::int64_t>(std::int64_t{1} << 32, 1, 0), {0, 1, std::int64_t{1} << 32});
    expect(cow_List<List>{{2}, {1, 5}, {1}}, {{1}, {1, 5}, {2}});
    expect(cow_List<cow_FixedArray<double>>{{2, 1.0}, {1, 1.0}}, {{1, 1.0}, {2, 1.0}});
    expect(cow_List<std::string>{"two", "a"}, {"a", "two"});  // points into itself
}

TEST(List, IteratorsWorkWithTheStandardAlgorithms) {
    static_assert(std::random_access_iterator<List::const_iterator>);
    const List list = Counting(256);
    for (const int i : list)
        EXPECT_EQ(std::lower_bound(list.begin(), list.end(), i), list.end() - (256 - i));
}

TEST_WITH_REFUSALS(List, EndsAndAbsentElementsAreNoMistakes) {
    const List list(1, 2, 3);
    EXPECT_EQ(List(list).InsertIndex(3, 4).RemoveMember(7), List(1, 2, 3, 4));
    EXPECT_EQ(list.Slice(9, 0), List());
    int n = 7;
    EXPECT_TRUE(!List().GetCArray(n) && n == 0);
    int* const elements = list.GetCArray(n);
    EXPECT_EQ(elements[2], n);
    List::ReleaseCArray(elements, n);
    cow_ListIter<int> none = List();
    none.Next();
    EXPECT_FALSE(none.NotDone() || none.ArrayIndex());
}

TEST(ListDeathTest, IndexOutsideTheListAborts) {
    List list(1, 2, 3), empty;
    for (const int i : {-1, 3}) EXPECT_ABORT(list.ConstGet(i));
    EXPECT_ABORT(list.Get(INT_MAX));
    EXPECT_ABORT(list.RemoveIndex(3));
    EXPECT_ABORT(list.InsertIndex(4, 0));
    EXPECT_ABORT(list.Slice(1, INT_MAX));
    EXPECT_ABORT(list.Resize(-1));
    EXPECT_ABORT(list.Fill(-1, 0));
    EXPECT_ABORT(empty.Last());
    EXPECT_ABORT(empty.Pop());
}

TEST(List, PositionsBeyondIntAreExhaustion) {
    List presized = Sized(INT_MAX), prepended = List(1).Prepend(0);  // offset 255
    EXPECT_THROW(presized.Prepend(1), std::bad_alloc);
    EXPECT_THROW(prepended.Resize(INT_MAX), std::bad_alloc);
    EXPECT_TRUE(presized == List() && prepended == List(0, 1));
}

using Numbers = cow_FixedArray<double>;

TEST_WITH_REFUSALS(Sequences, EqualityIsThatOfTheElements) {
    const Numbers nan(1, std::nan(""));
    EXPECT_TRUE(!(nan == nan) && nan != Numbers(nan));
    cow_List<double> list;
    for (int i = 0; i < 40; ++i) list.Append(i % 4 == 1 ? nan.ConstGet(0) : i);
    EXPECT_TRUE(list != list && list.Difference(list).Length() == 10);
    EXPECT_TRUE(Numbers(list.begin(), list.end() - 39) == Numbers(1, -0.0));
    EXPECT_EQ(Numbers(), Numbers(-4, 1.0));
}

TEST(Array2D, NoElementsNeedNoStorageAndTooManyAreExhaustion) {
    for (const int rows : {0, -3}) EXPECT_FALSE(cow_2DArray<cow_String>(rows, 5, "x").begin());
    EXPECT_THROW(cow_2DArray<double>(INT_MAX, INT_MAX, 0.0), std::bad_alloc);
}

TEST_WITH_REFUSALS(ArrayReps, AssignmentCopiesDeepAndSurvivesSelf) {
    cow_FixedArrayRep<cow_String> a(2), b(5);
    a.Data()[1] = "b";
    b = a;
    a.Data()[1] = "changed";
    b = *&b;
    EXPECT_TRUE(b.Data()[1] == "b" && a != b);
    cow_2DArrayRep<int> none(0, 4), some(1, 2, 3);
    EXPECT_TRUE(some != cow_2DArrayRep<int>(2, 1, 3));
    some = some = none;
    EXPECT_TRUE(!some.Data() && some.Cols() == 4);
}

}  // namespace
