#include <coreutils/atr_String.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>
#include <support/random.h>

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

// What an edit works with, for a string and for the std::string it must equal. The source may lie
// in the string itself.
struct Args {
    Args(const cow_String& t, int position, int length, const char* source)
        : pos(position),
          n(length),
          from(static_cast<std::size_t>(std::clamp(pos, 0, t.Length()))),
          count(static_cast<std::size_t>(std::max(n, 0))),
          s(source ? source : t.CStr() + from),
          text(s) {}
    int pos, n;
    std::size_t from, count;
    const char* s;
    std::string text;
};

using S = cow_String;
using M = std::string;
using A = const Args&;
const std::pair<void (*)(S&, A), void (*)(M&, A)> kEdits[] = {
    {[](S& t, A a) { t.Append(a.s); }, [](M& m, A a) { m.append(a.text); }},
    {[](S& t, A) { t.Length() < 99 ? t.Append(t) : t; },
     [](M& m, A) { m += m.size() < 99 ? m : ""; }},
    {[](S& t, A a) { t.Insert(a.pos, a.s, a.n); },
     [](M& m, A a) { m.insert(a.from, a.text, 0, a.count); }},
    {[](S& t, A a) { t.Erase(a.pos, a.n); }, [](M& m, A a) { m.erase(a.from, a.count); }},
    {[](S& t, A a) { t.Replace(a.pos, a.n, a.s, 7); },
     [](M& m, A a) { m.replace(a.from, a.count, a.text, 0, 7); }},
    {[](S& t, A a) { a.n < 3 ? t = a.s : t; }, [](M& m, A a) { m = a.n < 3 ? a.text : m; }},
    {[](S& t, A a) { a.pos >= 0 && a.pos < t.Length() ? t[a.pos] = 'Z' : 'Z'; },
     [](M& m, A a) { a.pos >= 0 && a.from < m.size() ? m[a.from] = 'Z' : 'Z'; }},
    {[](S& t, A) { t.RightTrim("ab"); }, [](M& m, A) { m.erase(m.find_last_not_of("ab") + 1); }},
    {[](S& t, A) { t.LeftTrim("ab"); }, [](M& m, A) { m.erase(0, m.find_first_not_of("ab")); }},
    {[](S& t, A) { t.ToLower(); }, [](M& m, A) { std::replace(m.begin(), m.end(), 'Z', 'z'); }},
    {[](S& t, A a) { t = t.Substr(a.pos, 30); }, [](M& m, A a) { m = m.substr(a.from, 30); }}};

TEST(StringModel, CopiesStayIndependentUnderRandomEdits) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Random rng(seed);
        std::vector<std::pair<cow_String, std::string>> all(6);
        for (int step = 0; step < 2000; ++step) {
            if (rng.OneIn(8)) all[rng.Below(6)] = all[rng.Below(6)];
            auto& [text, model] = all[rng.Below(6)];
            const std::string other(rng.Below(20), static_cast<char>('a' + rng.Below(26)));
            const Args args(text, static_cast<int>(rng.Below(40)) - 4,
                            static_cast<int>(rng.Below(12)) - 1,
                            rng.OneIn(4) ? nullptr : other.c_str());
            const auto kind = rng.Below(std::size(kEdits));
            kEdits[kind].first(text, args);
            kEdits[kind].second(model, args);
            for (const auto& [each, itsModel] : all)
                ASSERT_EQ(Text(each), itsModel) << "seed " << seed << " edit " << kind;
        }
    }
}

TEST(String, MemoryFailureLeavesTheValueBeforeOrAfter) {
    const std::string before = "shared text of Zome length, ab";
    for (const auto& [edit, editModel] : kEdits)
        for (const char* const source : {static_cast<const char*>(nullptr), "another text"}) {
            std::string after = before;
            editModel(after, Args(before.c_str(), 2, 2, source));
            ForEveryAllocationFailure(
                [&] { return std::pair(cow_String(before.c_str()), cow_String()); },
                [&, apply = edit](auto& pair) {
                    pair.second = pair.first;
                    apply(pair.first, Args(pair.first, 2, 2, source));
                },
                [&](const auto& pair, bool done) {
                    EXPECT_EQ(Text(pair.first), done ? after : before);
                    EXPECT_TRUE(pair.second.Empty() || Text(pair.second) == before);
                });
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
