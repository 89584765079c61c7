#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_fortran.h>

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

using std::string;
using Size = std::pair<int, const char*>;

TEST(Fortran, TextsAreTrimmedFirstThenCutToSeventyNineCharacters) {
    const string cases[][2] = {{"AB      ", "AB"},
                               {"  A B ", "  A B"},
                               {"A\t", "A\t"},
                               {"        ", ""},
                               {"", ""},
                               {string(100, 'x'), string(79, 'x')},
                               {"A" + string(98, ' ') + "B", "A" + string(78, ' ')}};
    for (const auto& [text, converted] : cases) {
        char out[81] = "";
        out[80] = '#';
        omi_fortranStringConvert(out, text.data(), static_cast<int>(text.size()));
        EXPECT_EQ(out, converted);
        EXPECT_EQ(out[80], '#');
    }
}

TEST(Fortran, FileNamesAreCutToTheCallersBuffer) {
    for (const auto& [size, converted] :
         {Size{5, "AB  "}, {3, "AB"}, {8, "AB  CDE"}, {1, ""}, {0, "#######"}, {-3, "#######"}}) {
        char out[] = "#######";
        omi_fortranFileNameConvert(out, size, "AB  CDE ", 8);
        EXPECT_STREQ(out, converted);
    }
}

TEST(Fortran, EnblankFillsExactlyTheBuffer) {
    for (const auto& [length, filled] : {Size{6, "ABC   ##"}, {2, "AB######"}, {-1, "########"}}) {
        char out[] = "########";
        omi_fortranStringEnblank(out, length, "ABC");
        EXPECT_STREQ(out, filled);
    }
    char out[] = "########";
    omi_fortranStringEnblank(out, 6, nullptr);
    EXPECT_STREQ(out, "      ##");
}

TEST(Fortran, ListsHoldATerminatedTextPerElement) {
    char** list = omi_fortranStringListConvert(3, "ABCDEF    GH", 4);
    EXPECT_EQ(string(list[0]) + list[1] + list[2], "ABCDEF  GH");
    omi_fortranStringListFree(3, list);
    for (const auto& [size, expected] : {Size{10, "ABCD"}, {3, "AB"}, {1, ""}, {0, ""}}) {
        list = omi_fortranStringVarListConvert(3, size, "ABCDEF    GH", 4);
        EXPECT_STREQ(list[0], expected);
        omi_fortranStringListFree(3, list);
    }
    list = omi_fortranStringListConvert(2, string(200, 'w').data(), 100);
    EXPECT_EQ(list[1], string(79, 'w'));
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
