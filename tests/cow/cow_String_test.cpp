#include <coreutils/atr_String.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <support/expect_abort.h>

#include <algorithm>
#include <climits>
#include <sstream>
#include <string>
#include <utility>

namespace {

std::string Text(const cow_String& s) {
    EXPECT_EQ(s.CStr()[s.Length()], '\0');
    return std::string(std::string_view(s));
}

TEST(String, EmptyStringsShareOneZeroByteAndNeverAllocate) {
    host_heap::Watch();
    {
        cow_String a;
        const cow_String b(a), fromNull(nullptr), fromNothing("abc", 0);
        a.Append("").Erase().ToLower().LeftTrim(" ");
        for (const cow_String* each : {&std::as_const(a), &b, &fromNull, &fromNothing}) {
            EXPECT_TRUE(each->Empty() && each->Length() == 0);
            EXPECT_EQ(each->CStr(), atr_StringBase::EmptyText());
        }
    }
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    host_heap::Unwatch();
}

TEST(String, CopiesShareUntilTheFirstWrite) {
    cow_String a("text");
    const cow_String b(a), c(std::move(a));
    const atr_String other(b);
    for (const char* each : {a.CStr(), c.CStr(), other.CStr(), cow_String(other).CStr()})
        EXPECT_EQ(each, b.CStr());
    a.Append("ure");
    a[0] = 'T';
    EXPECT_EQ(Text(a) + Text(b) + Text(c), "Texturetexttext");
    cow_String empty;
    EXPECT_EQ(empty[0], '\0');
    EXPECT_NE(empty.CStr(), cow_String().CStr());
}

TEST(StringDeathTest, ReadingOutsideTheTextGivesZeroAndWritingAborts) {
    cow_String a("ab");
    for (const int outside : {-1, 3, INT_MAX}) {
        EXPECT_EQ(std::as_const(a)[outside], '\0');
        EXPECT_ABORT(a[outside] = 'x');
    }
    EXPECT_EQ(std::as_const(a)[2], '\0');
}

TEST(String, ComparesBytesUnsignedUpToTheFirstZeroByte) {
    const struct {
        const char *a, *b;
        int order;
    } cases[] = {{"a", "b", -1},   {"b", "a", 1},        {"a", "ab", -1}, {"", "a", -1},
                 {"\x80", "z", 1}, {"\x7f", "\x80", -1}, {"ab", "ab", 0}, {nullptr, "", 0}};
    for (const auto& [a, b, order] : cases) {
        const cow_String left(a), right(b);
        EXPECT_TRUE(left.Compare(right) == order && left.Compare(b) == order);
        EXPECT_EQ(BtreeCompare(left, right), -order);
        EXPECT_EQ(left == right, order == 0);
        EXPECT_EQ(left < right, order < 0);
        EXPECT_EQ(left != b, order != 0);
    }
    const cow_String x("a\0b", 3), y("a\0c", 3);
    EXPECT_TRUE(x.Length() == 3 && x.Compare(y) == 0 && cow_String().Compare(nullptr) == 0);
    EXPECT_EQ(std::hash<cow_String>()(x), std::hash<cow_String>()(y));
    std::ostringstream out;
    EXPECT_EQ((out << cow_String("streamed"), out.str()), "streamed");
    EXPECT_EQ(BtreeCompare(x, atr_String("a")) + BtreeCompare("x10", "x9"), 1);
}

TEST(String, MapBitsAlternateBetweenFrontAndBack) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "000"}, {"a", "110"}, {"ab", "10000"}, {"abc", "110000"}, {"ba", "01100"}};
    for (const auto& [key, bits] : cases)
        for (int i = 0; bits[i]; ++i)
            EXPECT_EQ(cow_MapBit(cow_String(key), i), bits[i] == '1') << key << " bit " << i;
}

TEST(String, EditsClampPositionsAndCountsAndNumbersReadBack) {
    const cow_String text("hello"), ad("ad"), parts(" \t x y ");
    const std::pair<cow_String, const char*> cases[] = {
        {text.Substr(1, INT_MAX), "ello"},
        {cow_String(text).Erase(1, INT_MAX), "h"},
        {cow_String(ad).Insert(99, "bc", INT_MAX), "adbc"},
        {cow_String(text).Replace(3, INT_MAX, "p", INT_MAX), "help"},
        {cow_String(text).Replace(0, 2, nullptr, 4), "llo"},
        {cow_String(40, cow_String::PreSize).Append(cow_String(-1, cow_String::PreSize)), ""},
        {cow_String(parts).LeftTrim("\t ").RightTrim(" "), "x y"},
        {cow_String("x").RightTrim(nullptr), "x"},
        {cow_String("\xC4 ABz").ToLower().Capitalize(), "\xC4 abz"},
        {cow_String("hELLO").Capitalize(), "HELLO"},
        {cow_String(0), "0"},
        {cow_String(INT_MIN), "-2147483648"},
        {cow_String(0.1F), "0.1"},
        {cow_String(0.1), "0.1"},
        {cow_String(1e300), "1e+300"}};
    for (const auto& [edited, expected] : cases) EXPECT_EQ(Text(edited), expected);
}

TEST(String, SearchesFromBothEnds) {
    const cow_String text("abcabc");
    const struct {
        const char* s;
        int pos, found, foundBackwards;
    } cases[] = {{"bc", 0, 1, -1},   {"bc", 2, 4, 1},       {"bc", INT_MAX, -1, 4},
                 {"x", 0, -1, -1},   {"abc", -7, 0, 0},     {"", 3, 3, 3},
                 {nullptr, 9, 6, 6}, {"abcabcd", 0, -1, -1}};
    for (const auto& [s, pos, found, foundBackwards] : cases) {
        EXPECT_EQ(text.Find(s, pos), found) << pos;
        EXPECT_EQ(text.RFind(s, pos), foundBackwards) << pos;
    }
}

TEST(String, AppendingByteByByteReallocatesRarely) {
    host_heap::Watch();
    {
        cow_String s;
        for (int i = 0; i < 100000; ++i) s.Append("x");
        EXPECT_EQ(s.Length(), 100000);
    }
    EXPECT_LT(host_heap::g_probe.requests, 40);
    host_heap::Unwatch();
}

}  // namespace
