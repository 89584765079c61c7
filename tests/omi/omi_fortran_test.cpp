#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_fortran.h>

#include <climits>
#include <string>
#include <utility>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
using LossIsIntended = __lsan::ScopedDisabler;
#else
struct LossIsIntended {
    LossIsIntended() {}
};
#endif

namespace {

std::string Repeated(int n, char c) { return std::string(static_cast<std::size_t>(n), c); }

TEST(Fortran, TextsAreTrimmedFirstThenCutToSeventyNineCharacters) {
    struct Case {
        std::string text, converted;
    };
    const Case cases[] = {
        {"AB      ", "AB"},
        {"  A B ", "  A B"},
        {"A\t", "A\t"},
        {Repeated(8, ' '), ""},
        {"", ""},
        {Repeated(100, 'x'), Repeated(79, 'x')},
        {"A" + Repeated(98, ' ') + "B", "A" + Repeated(78, ' ')},
        {Repeated(79, 'y') + " ", Repeated(79, 'y')},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.text);
        char out[81];
        out[80] = '#';
        omi_fortranStringConvert(out, each.text.data(), static_cast<int>(each.text.size()));
        EXPECT_EQ(out, each.converted);
        EXPECT_EQ(out[80], '#');
    }
}

TEST(Fortran, FileNamesAreCutToTheCallersBuffer) {
    struct Case {
        int size;
        const char* text;
        const char* converted;
    };
    const Case cases[] = {{5, "ABCDEFG", "ABCD"},    {5, "AB  CDE", "AB  "},
                          {5, "AB     ", "AB"},      {8, "ABCDEFG", "ABCDEFG"},
                          {1, "ABCDEFG", ""},        {0, "ABCDEFG", "#######"},
                          {-3, "ABCDEFG", "#######"}};
    for (const Case& each : cases) {
        SCOPED_TRACE(each.size);
        char out[] = "#######";
        omi_fortranFileNameConvert(out, each.size, each.text, 7);
        EXPECT_STREQ(out, each.converted);
    }
}

TEST(Fortran, EnblankFillsExactlyTheBuffer) {
    struct Case {
        int length;
        const char* text;
        const char* filled;
    };
    const Case cases[] = {{6, nullptr, "      ##"},    {6, "AB", "AB    ##"},
                          {6, "", "      ##"},         {6, "ABCDEF", "ABCDEF##"},
                          {6, "ABCDEFGH", "ABCDEF##"}, {0, "AB", "########"},
                          {-1, "AB", "########"}};
    for (const Case& each : cases) {
        char out[] = "########";
        omi_fortranStringEnblank(out, each.length, each.text);
        EXPECT_STREQ(out, each.filled);
    }
}

TEST(Fortran, ListsHoldATerminatedTextPerElement) {
    const char texts[] = "ABCDEF    GH";  // three texts of four
    char** list = omi_fortranStringListConvert(3, texts, 4);
    EXPECT_STREQ(list[0], "ABCD");
    EXPECT_STREQ(list[1], "EF");
    EXPECT_STREQ(list[2], "  GH");
    omi_fortranStringListFree(3, list);

    for (const auto& [size, expected] : {std::pair{10, "ABCD"}, {3, "AB"}, {1, ""}, {0, ""}}) {
        list = omi_fortranStringVarListConvert(3, size, texts, 4);
        EXPECT_STREQ(list[0], expected);
        omi_fortranStringListFree(3, list);
    }
    const std::string wide = Repeated(200, 'w');
    list = omi_fortranStringListConvert(2, wide.data(), 100);
    EXPECT_EQ(list[1], Repeated(79, 'w'));
    omi_fortranStringListFree(2, list);
}

TEST(Fortran, ListsOfNothingAreEmptyNotNull) {
    for (const auto& [n, length] : {std::pair{0, 4}, {-1, 4}, {2, 0}, {2, -7}, {2, 4}}) {
        char** const list = omi_fortranStringListConvert(n, nullptr, length);
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < n; ++i) EXPECT_STREQ(list[i], "");
        omi_fortranStringListFree(n, list);
    }
    omi_fortranStringListFree(3, nullptr);
}

// The elements made before the failure are lost, by contract; the list itself is not.
TEST(Fortran, ExhaustedMemoryGivesNullAndNeverThrows) {
    for (const auto& [refused, lost] : {std::pair{1, 0}, {2, 0}, {3, 1}, {4, 2}}) {
        const LossIsIntended intended;
        host_heap::Watch(refused);
        char** const list = omi_fortranStringVarListConvert(3, 8, "ABCDEFGHIJKL", 4);
        const long live = host_heap::g_probe.live;
        host_heap::Unwatch();
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(live, lost);
    }
}

}  // namespace
