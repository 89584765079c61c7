#include <coreutils/atr_String.h>
#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <climits>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
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
        const cow_String b(a);
        const cow_String fromNull(nullptr);
        const cow_String fromNothing("abc", 0);
        a.Append("").Erase().ToLower().LeftTrim(" ");
        for (const cow_String* each : {&std::as_const(a), &b, &fromNull, &fromNothing}) {
            EXPECT_TRUE(each->Empty());
            EXPECT_EQ(each->Length(), 0);
            EXPECT_EQ(each->CStr(), atr_StringBase::EmptyText());
        }
    }
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    host_heap::Unwatch();
}

TEST(String, CopiesShareUntilTheFirstWrite) {
    cow_String a("text");
    const cow_String b(a);
    const cow_String c(std::move(a));
    EXPECT_EQ(a.CStr(), b.CStr());
    EXPECT_EQ(a.CStr(), c.CStr());
    a.Append("ure");
    a[0] = 'T';
    EXPECT_EQ(Text(a) + Text(b) + Text(c), "Texturetexttext");
    const atr_String other(b);
    EXPECT_EQ(other.CStr(), b.CStr());
    EXPECT_EQ(cow_String(other).CStr(), b.CStr());
}

TEST(String, WritingThroughAnIndexOfAnEmptyStringStaysPrivate) {
    cow_String a;
    EXPECT_EQ(a[0], '\0');
    EXPECT_NE(a.CStr(), cow_String().CStr());
    const cow_String b("ab");
    EXPECT_EQ(b[1], 'b');
    for (int outside : {-1, 2, INT_MAX, INT_MIN}) EXPECT_EQ(b[outside], '\0');
}

TEST(StringDeathTest, WritingOutsideTheTextAborts) {
    cow_String a("ab");
    for (int outside : {-1, 3, INT_MAX}) EXPECT_ABORT(a[outside] = 'x');
}

TEST(String, NumbersReadBackInTheirShortestForm) {
    EXPECT_EQ(Text(cow_String(0)), "0");
    EXPECT_EQ(Text(cow_String(INT_MIN)), "-2147483648");
    EXPECT_EQ(Text(cow_String(0.1F)), "0.1");
    EXPECT_EQ(Text(cow_String(0.1)), "0.1");
    EXPECT_EQ(Text(cow_String(1e300)), "1e+300");
}

TEST(String, ComparesBytesUnsignedUpToTheFirstZeroByte) {
    const struct {
        const char* a;
        const char* b;
        int order;
    } cases[] = {{"a", "b", -1},   {"b", "a", 1},        {"a", "ab", -1}, {"", "a", -1},
                 {"\x80", "z", 1}, {"\x7f", "\x80", -1}, {"ab", "ab", 0}, {nullptr, "", 0}};
    for (const auto& [a, b, order] : cases) {
        const cow_String left(a);
        const cow_String right(b);
        EXPECT_EQ(left.Compare(right), order);
        EXPECT_EQ(left.Compare(b), order);
        EXPECT_EQ(BtreeCompare(left, right), -order);
        EXPECT_EQ(left == right, order == 0);
        EXPECT_EQ(left < right, order < 0);
        EXPECT_EQ(left != b, order != 0);
    }
    const cow_String x("a\0b", 3);
    const cow_String y("a\0c", 3);
    EXPECT_EQ(x.Length(), 3);
    EXPECT_EQ(x.Compare(y), 0);
    EXPECT_EQ(std::hash<cow_String>()(x), std::hash<cow_String>()(y));
    EXPECT_EQ(cow_String().Compare(nullptr), 0);
}

TEST(String, TreeOrderFollowsTheNaturalSwitch) {
    atr_setNaturalOrder(1);
    EXPECT_LT(BtreeCompare(cow_String("x10"), cow_String("x9")), 0);
    EXPECT_GT(BtreeCompare(cow_String("x9"), cow_String("x10")), 0);
    atr_setNaturalOrder(0);
    EXPECT_EQ(BtreeCompare(cow_String("x10"), atr_String("x9")), 1);
    EXPECT_EQ(BtreeCompare("x10", "x9"), 1);
}

TEST(String, MapBitsAlternateBetweenFrontAndBack) {
    const struct {
        const char* key;
        const char* bits;
    } cases[] = {{"", "000"}, {"a", "110"}, {"ab", "10000"}, {"abc", "110000"}, {"ba", "01100"}};
    for (const auto& [key, bits] : cases)
        for (int i = 0; bits[i]; ++i)
            EXPECT_EQ(cow_MapBit(cow_String(key), i), bits[i] == '1') << key << " bit " << i;
}

TEST(String, PositionsAndCountsAreClamped) {
    const cow_String text("hello");
    EXPECT_EQ(Text(text.Substr(1, INT_MAX)), "ello");
    EXPECT_EQ(Text(text.Substr(-5, 2)), "he");
    EXPECT_EQ(Text(text.Substr(9, 2)), "");
    EXPECT_EQ(Text(text.Substr(1, -2)), "");
    EXPECT_EQ(Text(cow_String(text).Erase(1, INT_MAX)), "h");
    EXPECT_EQ(Text(cow_String(text).Erase(1, -1)), "hello");
    EXPECT_EQ(Text(cow_String("ad").Insert(1, "bcX", 2)), "abcd");
    EXPECT_EQ(Text(cow_String("ad").Insert(99, "bc", INT_MAX)), "adbc");
    EXPECT_EQ(Text(cow_String(text).Replace(1, 3, "ipp", 2)), "hipo");
    EXPECT_EQ(Text(cow_String(text).Replace(3, INT_MAX, "p", INT_MAX)), "help");
    EXPECT_EQ(Text(cow_String(text).Replace(0, 2, nullptr, 4)), "llo");
    EXPECT_EQ(cow_String(40, cow_String::PreSize).Length(), 0);
    EXPECT_EQ(cow_String(-1, cow_String::PreSize).Length(), 0);
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

TEST(String, TrimsAndChangesCase) {
    EXPECT_EQ(Text(cow_String(" \t x y ").LeftTrim("\t ").RightTrim(" ")), "x y");
    EXPECT_EQ(Text(cow_String("xxx").LeftTrim("x")), "");
    EXPECT_EQ(Text(cow_String("x").RightTrim(nullptr)), "x");
    EXPECT_EQ(Text(cow_String("\xC4 ABz").ToLower().Capitalize()), "\xC4 abz");
    EXPECT_EQ(Text(cow_String("hELLO").Capitalize()), "HELLO");
}

TEST(String, SourcesMayLieInTheStringItself) {
    for (const bool shared : {false, true}) {
        cow_String s("abc");
        cow_String other;
        if (shared) other = s;
        s.Append(s);
        EXPECT_EQ(Text(s), "abcabc");
        s.Insert(1, s.CStr(), 3);
        EXPECT_EQ(Text(s), "aabcbcabc");
        s.Replace(2, 2, s.CStr() + 4, 3);
        EXPECT_EQ(Text(s), "aabcabcabc");
        s = s.CStr() + 7;
        EXPECT_EQ(Text(s), "abc");
        s = *&s;
        EXPECT_EQ(Text(s), "abc");
    }
}

TEST(String, MeetsTheStandardLibrary) {
    const cow_String s(std::string_view("a\0b", 3));
    const std::string_view view = s;
    EXPECT_EQ(view.size(), 3U);
    std::ostringstream out;
    out << cow_String("streamed");
    EXPECT_EQ(out.str(), "streamed");
    std::unordered_set<cow_String> set{"x", "y", "x"};
    EXPECT_EQ(set.size(), 2U);
}

// A text and the std::string it must equal.
struct CheckedString {
    cow_String text;
    std::string model;

    void RandomStep(std::minstd_rand& rng) {
        const auto number = [&rng](int below) { return static_cast<int>(rng()) % below; };
        const auto clamped = [this](int n) {
            return static_cast<std::size_t>(std::clamp(n, 0, text.Length()));
        };
        const int pos = number(40) - 4;
        const int n = number(12) - 1;
        const auto from = clamped(pos);
        const auto count = static_cast<std::size_t>(std::max(n, 0));
        std::string source(static_cast<std::size_t>(number(20)),
                           static_cast<char>('a' + number(26)));
        const char* s = source.c_str();
        if (number(4) == 0) {  // a source inside the own text
            source = model.substr(from);
            s = text.CStr() + from;
        }
        switch (number(8)) {
            case 0:
                text.Append(s), model.append(source);
                break;
            case 1:
                text.Insert(pos, s, n), model.insert(from, source, 0, count);
                break;
            case 2:
                text.Erase(pos, n), model.erase(from, count);
                break;
            case 3:
                text.Replace(pos, n, s, 7), model.replace(from, count, source, 0, 7);
                break;
            case 4:
                if (number(3) == 0) text = s, model = source;
                break;
            case 5:
                if (!text.Empty() && pos >= 0 && pos < text.Length())
                    text[pos] = 'Z', model[static_cast<std::size_t>(pos)] = 'Z';
                break;
            case 6:
                text.RightTrim("ab"), model.erase(model.find_last_not_of("ab") + 1);
                break;
            default:
                text = text.Substr(pos, 30), model = model.substr(from, 30);
        }
    }
};

TEST(StringModel, CopiesStayIndependentUnderRandomEdits) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::minstd_rand rng(seed);
        CheckedString strings[6];
        for (int step = 0; step < 2000; ++step) {
            if (rng() % 8 == 0) strings[rng() % 6] = strings[rng() % 6];
            strings[rng() % 6].RandomStep(rng);
            for (const CheckedString& each : strings)
                ASSERT_EQ(Text(each.text), each.model) << step;
        }
    }
}

TEST(String, MemoryFailureLeavesEverySharerAsItWas) {
    struct Pair {
        cow_String a{"shared text of some length"};
        cow_String b{a};
    };
    using Operation = void (*)(Pair&);
    const Operation operations[] = {
        [](Pair& pair) { pair.a.Append(pair.b).Append(pair.a).Append("xyz"); },
        [](Pair& pair) { pair.a.Insert(3, pair.a.CStr(), 9); },
        [](Pair& pair) { pair.a.Erase(1, 2); },
        [](Pair& pair) { pair.a = pair.a.CStr() + 5; },
        [](Pair& pair) { pair.a[0] = 'S'; },
        [](Pair& pair) { pair.a = cow_String(3.25).Append(pair.b.Substr(2, 9)); },
        [](Pair& pair) { pair.a = cow_String(std::string_view(pair.b)); },
        [](Pair& pair) { pair.a = cow_String("TEXT").ToLower().Capitalize(); }};
    for (const Operation operation : operations)
        ForEveryAllocationFailure([] { return Pair(); }, operation,
                                  [](const Pair& pair, bool) {
                                      EXPECT_EQ(Text(pair.b), "shared text of some length");
                                      EXPECT_EQ(static_cast<int>(Text(pair.a).size()),
                                                pair.a.Length());
                                  });
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
