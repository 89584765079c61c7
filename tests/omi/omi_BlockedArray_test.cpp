#include <cow/cow_String.h>
#include <gtest/gtest.h>
#include <omi/omi_BlockedArray.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <climits>
#include <map>

namespace {

TEST(BlockedArray, TableGrowsByWholeStepsToCoverTheBlock) {
    const unsigned cases[][4] = {{0, 10, 5000, 128}, {4, 2, 15, 4}, {4, 2, 17, 8}, {4, 33, 5, 4}};
    for (const auto& [slots, shift, index, grown] : cases) {
        SCOPED_TRACE(index);
        omi_BlockedArray<double> array(slots, shift);
        EXPECT_EQ(array.GetCell(index), nullptr);
        array.SetCell(index, 7);
        EXPECT_EQ(*array.GetCell(index), 7);
        EXPECT_EQ(*array.GetCell(index ^ 1), 0);
        EXPECT_EQ(array.Footprint(),
                  sizeof array + grown * sizeof(void*) + (sizeof(double) << (shift & 31)));
    }
}

TEST(BlockedArray, EqualShapesKeepTheirBlocksInAssignment) {
    omi_BlockedArray<int> a(8, 2);
    omi_BlockedArray<int> b(8, 2);
    a.SetCell(5, 1);
    a.SetCell(9, 1);
    b.SetCell(6, 2);
    b.SetCell(30, 3);
    const int* const kept = a.GetCell(4);
    a = b;
    EXPECT_EQ(a.GetCell(4), kept);
    EXPECT_EQ(*a.GetCell(5), 0);
    EXPECT_EQ(*a.GetCell(6), 2);
    EXPECT_EQ(a.GetCell(9), nullptr);
    EXPECT_EQ(*a.GetCell(30), 3);
    b.SetCell(30, 4);
    EXPECT_EQ(*a.GetCell(30), 3);
}

TEST(BlockedArray, AssignmentTakesTheSourcesShapeAndGrowthStep) {
    omi_BlockedArray<cow_String> a(2, 1);
    a.SetCell(3, "gone");
    const omi_BlockedArray<cow_String> empty(0, 4);
    omi_BlockedArray<cow_String> b(3, 4);
    b.SetCell(17, "kept");
    a = b;
    EXPECT_STREQ(a.GetCell(17)->CStr(), "kept");
    EXPECT_STREQ(a.GetCell(3) ? "present" : "absent", "absent");
    a = empty;
    EXPECT_EQ(a.Footprint(), sizeof a);
    a.SetCell(0, "x");
    EXPECT_EQ(a.Footprint(), sizeof a + 128 * sizeof(void*) + 16 * sizeof(cow_String));
}

TEST(BlockedArray, AStringCellMayBeAssignedToItselfAndToOthers) {
    omi_BlockedArray<cow_String> array(0, 3);
    array.SetCell(1, "a text that is longer than any small buffer");
    array.SetCell(1, *array.GetCell(1));
    array.SetCell(100000, *array.GetCell(1));
    EXPECT_EQ(array.GetCell(1)->CStr(), array.GetCell(100000)->CStr());
}

TEST(BlockedArray, DumpShowsBytesWidenedWithTheirSign) {
    omi_BlockedArray<int> array(2, 2);
    array.SetCell(5, -1);
    array.SetCell(6, 128);
    testing::internal::CaptureStdout();
    array.DumpArray();
    const std::string ff = "ffffffff";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Block indices= 4 - 7\n00000000|" + ff + ff +
                                                          ff + ff + "|ffffff80000000|00000000|\n");
    omi_BlockedArray<unsigned> eight(4, 3);
    eight.SetCell(8, 0x04030201);
    testing::internal::CaptureStdout();
    eight.DumpArray();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Block indices= 8 - 15\n01020304|00000000|00000000|00000000|00000000|00000000|"
              "00000000|00000000\n\n");
}

TEST(BlockedArray, ATableThatCannotBeNamedIsExhaustion) {
    omi_BlockedArray<int> array(0, 0);
    EXPECT_THROW(array.SetCell(0xffffff80u, 1), std::bad_alloc);
    EXPECT_EQ(array.GetCell(0xffffff80u), nullptr);
}

TEST(BlockedArrayModel, CopiesStayIndependentUnderRandomEdits) {
    Random rng(1);
    using Array = omi_BlockedArray<int>;
    Array arrays[] = {Array(0, 10), Array(4, 10), Array(4, 12), Array(128, 12)};
    std::map<unsigned, int> models[4];
    for (int step = 0; step < 20000; ++step) {
        const unsigned at = rng.Below(4);
        if (rng.OneIn(64)) {
            const unsigned from = rng.Below(4);
            arrays[at] = rng.Below(2) ? arrays[from] : Array(arrays[from]);
            models[at] = models[from];
        }
        const unsigned index = rng.Clustered() % (1u << 24);
        arrays[at].SetCell(index, step);
        models[at][index] = step;
        const unsigned probe = rng.Clustered() % (1u << 24);
        const auto found = models[at].find(probe);
        const int* const cell = arrays[at].GetCell(probe);
        ASSERT_EQ(cell ? *cell : 0, found == models[at].end() ? 0 : found->second);
    }
}

TEST(BlockedArrayFailure, WritesCopiesAndAssignmentsLeaveTheCellsAsTheyWere) {
    using Array = omi_BlockedArray<int>;
    const auto prepare = [] {
        Array array(2, 3);
        array.SetCell(1, 1);
        return array;
    };
    Array others[] = {Array(2, 3), Array(2, 4), Array(9, 3)};
    for (Array& other : others) {
        other.SetCell(1, 7);
        other.SetCell(9, 8);
        ForEveryAllocationFailure(
            prepare, [&](Array& array) { array = other; },
            [](const Array& array, bool done) { EXPECT_EQ(*array.GetCell(1), done ? 7 : 1); });
    }
    ForEveryAllocationFailure(
        prepare, [](Array& array) { array.SetCell(1000, 5); },
        [](const Array& array, bool done) { EXPECT_EQ(array.GetCell(1000) != nullptr, done); });
}

}  // namespace
