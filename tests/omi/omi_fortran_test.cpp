#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_fortran.h>

#include <string>

namespace {

using std::string;

TEST(Fortran, FileNamesAreCutToTheCallersBufferAndEnblankFillsIt) {
    const struct {
        int size;
        const char *fileName, *element, *enblanked, *nothing;
    } cases[] = {
        {5, "AB  ", "AB  ", "ABC  ##", "     ##"}, {7, "AB  CD", "AB  CD", "ABC    ", "       "},
        {2, "A", "A", "AB#####", "  #####"},       {1, "", "", "A######", " ######"},
        {0, "#######", "", "#######", "#######"},  {-3, "#######", "", "#######", "#######"}};
    for (const auto& [size, fileName, element, enblanked, nothing] : cases) {
        string name = "#######", text = name, blanks = name;
        omi_fortranFileNameConvert(name.data(), size, "AB  CDE ", 8);
        omi_fortranStringEnblank(text.data(), size, "ABC");
        omi_fortranStringEnblank(blanks.data(), size, nullptr);
        EXPECT_EQ(name.c_str() + text + blanks, fileName + string(enblanked) + nothing) << size;
        char** const list = omi_fortranStringVarListConvert(2, size, "        AB  CDE ", 8);
        EXPECT_EQ(list[0] + string(list[1]), element) << size;
        omi_fortranStringListFree(2, list);
    }
    omi_fortranStringListFree(3, nullptr);
    for (const auto& [n, length] : {std::pair{0, 4}, {-1, 4}, {2, -7}, {2, 4}}) {
        char** const list = omi_fortranStringListConvert(n, nullptr, length);
        EXPECT_TRUE(list && (n < 1 || list[0] + string(list[1]) == ""));
        omi_fortranStringListFree(n, list);
    }
}

TEST(Fortran, ExhaustedMemoryGivesNullAndNeverThrows) {
    for (const long refused : {1, 2}) {  // from the third on, elements made before are lost
        host_heap::Watch(refused);
        EXPECT_EQ(omi_fortranStringVarListConvert(3, 8, "ABCDEFGHIJKL", 4), nullptr);
        EXPECT_EQ(host_heap::g_probe.live, 0);
        host_heap::Unwatch();
    }
}

}  // namespace
