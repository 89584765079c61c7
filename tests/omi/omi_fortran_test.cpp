#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_fortran.h>

#include <string>

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

TEST(Fortran, TextsAreTrimmedFirstThenCutToSeventyNineCharacters) {
    const string cases[][2] = {{"AB      ", "AB"},
                               {"  A B ", "  A B"},
                               {"A\t", "A\t"},
                               {"     ", ""},
                               {"", ""},
                               {string(100, 'x'), string(79, 'x')},
                               {"A" + string(98, ' ') + "B", "A" + string(78, ' ')}};
    for (const auto& [text, converted] : cases) {
        char out[81] = "";
        out[80] = '#';
        const int length = static_cast<int>(text.size());
        omi_fortranStringConvert(out, text.data(), length);
        EXPECT_EQ(out + string(1, out[80]), converted + "#");
        char** const list = omi_fortranStringListConvert(2, (text + text).data(), length);
        EXPECT_EQ(list[0] + string(list[1]), converted + converted);
        omi_fortranStringListFree(2, list);
    }
}

TEST(Fortran, FileNamesAreCutToTheCallersBufferAndEnblankFillsIt) {
    const struct {
        int size;
        const char *fileName, *element, *enblanked, *nothing;
    } cases[] = {
        {6, "AB  C", "AB  C", "ABC   #", "      #"}, {3, "AB", "AB", "ABC####", "   ####"},
        {5, "AB  ", "AB  ", "ABC  ##", "     ##"},   {7, "AB  CD", "AB  CD", "ABC    ", "       "},
        {2, "A", "A", "AB#####", "  #####"},         {1, "", "", "A######", " ######"},
        {0, "#######", "", "#######", "#######"},    {-3, "#######", "", "#######", "#######"}};
    for (const auto& [size, fileName, element, enblanked, nothing] : cases) {
        SCOPED_TRACE(size);
        char name[] = "#######", text[] = "#######", blanks[] = "#######";
        omi_fortranFileNameConvert(name, size, "AB  CDE ", 8);
        EXPECT_STREQ(name, fileName);
        omi_fortranStringEnblank(text, size, "ABC");
        EXPECT_STREQ(text, enblanked);
        omi_fortranStringEnblank(blanks, size, nullptr);
        EXPECT_STREQ(blanks, nothing);
        char** const list = omi_fortranStringVarListConvert(2, size, "        AB  CDE ", 8);
        EXPECT_EQ(list[0] + string(list[1]), element);
        omi_fortranStringListFree(2, list);
    }
}

TEST(Fortran, ListsOfNothingAreEmptyNotNull) {
    omi_fortranStringListFree(3, nullptr);
    for (const auto& [n, length] : {std::pair{0, 4}, {-1, 4}, {2, 0}, {2, -7}, {2, 4}}) {
        char** const list = omi_fortranStringListConvert(n, nullptr, length);
        EXPECT_TRUE(list && (n < 1 || list[0] + string(list[1]) == ""));
        omi_fortranStringListFree(n, list);
    }
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
