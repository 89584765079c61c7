#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <support/allocations.h>
#include <support/memory_failure.h>

#include <climits>
#include <string>
#include <vector>

namespace {

using Numbers = std::vector<int>;

struct Bits : omi_BlkBitVect {
    Bits(std::initializer_list<unsigned> bits) {
        for (const unsigned bit : bits) SetBit(bit);
    }
};

TEST(Sets, PrintEightMembersALine) {
    const Numbers values = {-1, 0, 1, 2, 3, 4, 5, 6, 7};
    testing::internal::CaptureStdout();
    omi_Set(values.data(), 9).Print("nodes");
    omi_Set(values.data(), 8).Print(nullptr);
    const std::string line = "      -1       0       1       2       3       4       5       6\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "nodes\n" + line + "       7\n\n" + line);
    Bits stale = {5};
    stale -= Bits{5};
    testing::internal::CaptureStderr();
    for (const Bits& bits : {stale, Bits{5}, Bits{1, 2, 3, 4, 5, 6, 7, 0xffffffffu}})
        bits.DumpList();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Empty List\nListCount=1\n       5\nListCount=8\n"
              "       1       2       3       4       5       6       7      -1\n\n");
}

TEST(Sets, ContainAndOverlapOnBothSidesOfZero) {
    const Numbers some = {-5, 3, 9000}, few = {-5, 9000}, mirrored = {5, -3};
    const omi_Set set(some.begin(), some.end()), part(few.begin(), few.end());
    const omi_Set other(mirrored.begin(), mirrored.end()), none;
    EXPECT_TRUE(set.Contains(part) && set.Contains(none) && set.HasOverlap(part));
    EXPECT_FALSE(part.Contains(set) || set.Contains(other) || set.HasOverlap(other));
    EXPECT_FALSE(set.HasOverlap(none));
}

TEST(BitVector, EqualityComparesShapeAndCompareCountsThenBlocksThenWords) {
    Bits grown = {2000000}, emptied = {5}, wide = {0, 2000000};
    grown.Clear();
    emptied.UnsetBit(5);
    wide.UnsetBit(2000000);
    wide -= Bits{};  // stale, so that the comparison frees the empty block
    const struct {
        Bits a, b;
        int result;
    } cases[] = {{{0}, {8192}, 128},  {{8192}, {0}, -128},  {{8192}, {16384}, 127},
                 {{31}, {0}, 1},      {{0}, {31}, -1},      {{1, 2, 3}, {1}, 2},
                 {wide, {8192}, 128}, {{8192}, wide, -256}, {{1, 8192}, {1, 8192}, 0},
                 {emptied, {}, 128},  {{}, emptied, -128},  {grown, {}, 0}};
    for (const auto& [a, b, result] : cases) EXPECT_EQ(a.Compare(b), result);
    EXPECT_FALSE(grown == Bits{} || emptied == Bits{});
    EXPECT_TRUE(Bits{}.Contains(emptied) && !Bits{}.Contains(wide) && wide.Contains(emptied));
    emptied &= emptied;
    EXPECT_TRUE(emptied == Bits{});
}

TEST(BitVector, ManyBlocksUniteAsFewDo) {
    Bits many = {1}, other = {0};
    for (unsigned block = 0; block < 1200; block += 2) other.SetBit(block * 8192);
    many |= other;
    EXPECT_TRUE(many.Size() == 601 && many.Contains(other));
}

TEST(BitVectorTraversal, StandsNowhereBeforeTheFirstMoveAndAfterTheLastAlsoAtTheLastBit) {
    Bits bits = {7};
    bits.SetFromTo(0xfffffff0u, 0xffffffffu);
    EXPECT_EQ(bits.Size(), 17u);
    omi_BlkBitVectTrav trav(&bits);
    unsigned i = 77;
    EXPECT_TRUE(!trav.Prev(i) && i == 77 && !trav.Next(i) && i == 0);
    EXPECT_TRUE(trav.First(i) && trav.Next(i) && i == 0xfffffff0u);
    EXPECT_TRUE(trav.Prev(i) && !trav.Prev(i) && i == 7);
    EXPECT_TRUE(trav.Last(i) && i == 0xffffffffu && !trav.Next(i) && i == 0 && !trav.Prev(i));
    const Bits few = {7};
    i = 1u << 30;
    EXPECT_FALSE(omi_BlkBitVectTrav(&few).SetCurrent(i, true));
    EXPECT_TRUE(omi_BlkBitVectTrav(&few).SetCurrent(i, false) && i == 7);
    EXPECT_DEATH(SetBitTraverseData(&bits, nullptr), "AssertionFailed:trav .*BlkBitVectTrav:27");
    EXPECT_DEATH(omi_BlkBitVectTrav(nullptr), "AssertionFailed:flist .*BlkBitVectTrav:28");
}

TEST(SparseSet, GrowsByMultiplesOf1024) {
    omi_SparseSet set;
    const auto requestsFor = [&](int inserts) {
        return AllocationsOf([&] {
            for (; inserts > 0; --inserts) set.Insert(inserts);
        });
    };
    EXPECT_EQ(requestsFor(1025), 2);
    set.Reserve(2049);
    EXPECT_TRUE(requestsFor(2047) == 0 && requestsFor(1) == 1);
    set.ReserveAdditional(9000);
    EXPECT_TRUE(requestsFor(9215) == 0 && set.IsMember(1000) && !set.IsMember(9999));
    EXPECT_THROW(set.ReserveAdditional(INT_MAX), std::bad_alloc);
}

TEST_WITH_REFUSALS(SparseSet, TakesAndDropsTheMembersOfABitVector) {
    const Bits bits = {2, 9, 0x7fffffffu, 0x80000000u};
    omi_SparseSet set;
    for (const int v : {9, 4, -2}) set.Insert(v);
    set.Insert(bits);
    EXPECT_EQ(Numbers(set.begin(), set.end()), (Numbers{-2, 2, 4, 9, INT_MAX}));
    set.Remove(bits);
    set.Reserve(2000);
    KZMBasVector<int> members;
    set.Members(members);
    EXPECT_EQ(Numbers(members.begin(), members.end()), (Numbers{-2, 4}));
}

TEST(GeneratedSet, TrimClipsAndReturnsWhatItCutsOff) {
    const struct {
        int range[3], low, high, n;
        Numbers left;
        Bits cutOff;
    } cases[] = {{{3, 20, 5}, 0, 9, 2, {3, 9, 5}, {13, 18}},
                 {{3, 20, 5}, 0, 9, 1, {3, 9, 5}, {13}},
                 {{3, 20, -5}, 9, 14, 9, {8, 14, -5}, {3, 18}},
                 {{3, 20, 5}, 30, 40, 4, {1, 0, 5}, {3, 8, 13, 18}},
                 {{-7, -1, 3}, 0, 4, 9, {1, 0, 3}, {0u - 7, 0u - 4, 0u - 1}},
                 {{10, 1, -3}, 0, 5, 9, {1, 0, -3}, {1, 4, 7, 10}},
                 {{1, 0, 2}, 5, 6, 9, {1, 0, 2}, {}},
                 {{3, 20, 5}, 4, 9, 9, {3, 9, 5}, {13, 18}},
                 {{INT_MIN, INT_MAX, 1}, 0, 1, 1, {0, 1, 1}, {2, 1u << 31}}};
    for (const auto& [range, low, high, n, left, cutOff] : cases) {
        omi_GeneratedSet set(range[0], range[1], range[2]);
        EXPECT_EQ(set.Trim(low, high, n).Compare(cutOff), 0) << range[0] << ' ' << low;
        for (const int i : {-1, 0, 1}) {
            Numbers found(3);
            set.GetRange(i, found[0], found[1], found[2]);
            EXPECT_EQ(found, i == 0 ? left : (Numbers{0, 0, 1}));
        }
    }
    ForEveryAllocationFailure(
        [] { return omi_GeneratedSet(1, 3, 1); }, [](omi_GeneratedSet& set) { set.Trim(0, 1, 9); },
        [](const omi_GeneratedSet& set, bool done) { EXPECT_EQ(set.IsMember(3), !done); });
}

}  // namespace
