#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <omi/omi_fortran.h>

#include <string>

namespace {

using std::string;

TEST(Fortran, NothingIsWrittenWithoutRoomAndNothingIsTheEmptyText) {
    for (const int size : {0, -3}) {
        string name = "###";
        omi_fortranFileNameConvert(name.data(), size, "AB", 2);
        omi_fortranStringEnblank(name.data(), size, "AB");
        EXPECT_EQ(name, "###") << size;
        char** const list = omi_fortranStringVarListConvert(2, size, "AB", 1);
        EXPECT_EQ(list[0] + string(list[1]), "");
        omi_fortranStringListFree(2, list);
    }
    string cut = "###";
    omi_fortranStringEnblank(cut.data(), 2, "ABC");
    EXPECT_EQ(cut, "AB#");
    omi_fortranStringEnblank(cut.data(), 2, nullptr);
    EXPECT_EQ(cut, "  #");
    omi_fortranStringListFree(3, nullptr);
    omi_fortranFileNameConvert(nullptr, 4, "a", 1);
    omi_fortranStringEnblank(nullptr, 4, "a");
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
