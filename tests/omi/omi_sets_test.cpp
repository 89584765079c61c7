#include <gtest/gtest.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <support/memory_failure.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <functional>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace {

using Numbers = std::vector<int>;

// The bit vector with the interface of the sets; numbers from 2^31 on are negative here.
struct Bits : omi_BlkBitVect {
    Bits() = default;
    Bits(std::initializer_list<unsigned> bits) : Bits(bits.begin(), bits.end()) {}
    template <class It>
    Bits(It first, It last) {
        for (; first != last; ++first) SetBit(static_cast<unsigned>(*first));
    }
    void Insert(int v) { SetBit(static_cast<unsigned>(v)); }
    void Remove(int v) { UnsetBit(static_cast<unsigned>(v)); }
    bool IsMember(int v) const { return IsSet(static_cast<unsigned>(v)); }
    void operator+=(const Bits& other) { *this |= other; }
    bool operator==(const Bits& other) const { return Contains(other) && other.Contains(*this); }
};

Numbers Listed(const omi_BlkBitVect& set) {
    Numbers up, down;
    omi_BlkBitVectTrav walk(&set);
    unsigned i = 77;
    for (bool more = walk.Last(i); more; more = walk.Prev(i)) down.push_back(static_cast<int>(i));
    EXPECT_EQ(static_cast<int>(i), down.empty() ? 77 : down.back());
    for (bool more = walk.First(i); more; more = walk.Next(i)) up.push_back(static_cast<int>(i));
    EXPECT_EQ(i, 0u);
    EXPECT_EQ(up, Numbers(down.rbegin(), down.rend()));
    return up;
}

template <class Set>
requires requires(const Set& set) { set.begin(); }
Numbers Listed(const Set& set) { return Numbers(set.begin(), set.end()); }

TEST(Sets, PrintEightMembersALine) {
    Numbers values(9);
    std::iota(values.begin(), values.end(), -1);
    testing::internal::CaptureStdout();
    omi_Set(values.data(), 9).Print("nodes");
    omi_Set(values.data(), 8).Print("");
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

TEST(BitVector, RangesSetWhatTheyCoverAndCountItOnce) {
    for (const unsigned word : {0u, 0x80000000u, 0xffffffffu, 0x12345678u})
        EXPECT_EQ(CountBits32(word), static_cast<unsigned>(std::popcount(word)));
    const unsigned cases[][3] = {
        {30, 100, 71}, {32, 40, 9}, {100, 5, 6}, {10, 5, 0}, {0xfffffff0u, 0xffffffffu, 16}};
    for (const auto& [from, to, count] : cases) {
        SCOPED_TRACE(from);
        Bits bits = {40, 9000};
        const unsigned had = (from <= 40 && 40 <= to) + (from <= 9000 && 9000 <= to);
        bits.SetFromTo(from, to);
        EXPECT_EQ(bits.Size(), 2 + count - had);
        EXPECT_EQ(Listed(bits).size(), bits.Size());
        EXPECT_EQ(bits.IsSet(from) && bits.IsSet(to), from <= to);
    }
}

TEST(BitVector, EqualityComparesShapeAndCompareCountsThenBlocksThenWords) {
    const auto equal = [](const omi_BlkBitVect& a, const omi_BlkBitVect& b) { return a == b; };
    Bits grown = {2000000}, emptied = {5}, wide = {0, 2000000};
    grown.Clear();
    emptied.UnsetBit(5);
    wide.UnsetBit(2000000);
    wide -= Bits();  // stale, so that the comparison frees the empty block
    const struct {
        Bits a, b;
        int result;
    } cases[] = {{{0}, {8192}, 128},  {{8192}, {0}, -128},  {{8192}, {16384}, 127},
                 {{31}, {0}, 1},      {{0}, {31}, -1},      {{1, 2, 3}, {1}, 2},
                 {wide, {8192}, 128}, {{8192}, wide, -256}, {{1, 8192}, {1, 8192}, 0},
                 {emptied, {}, 128},  {{}, emptied, -128},  {grown, {}, 0}};
    for (const auto& [a, b, result] : cases) EXPECT_EQ(a.Compare(b), result);
    EXPECT_FALSE(equal(grown, Bits()) || equal(emptied, Bits()));
    emptied &= emptied;
    EXPECT_TRUE(equal(emptied, Bits()));
}

TEST(BitVectorTraversal, StandsNowhereBeforeTheFirstMoveAndAfterTheLast) {
    EXPECT_EQ(Listed(Bits{0, 0xffffffffu}), (Numbers{0, -1}));
    const Bits seven = {7};
    omi_BlkBitVectTrav trav(&seven);
    unsigned i = 77;
    EXPECT_FALSE(trav.Prev(i));
    EXPECT_EQ(i, 77u);
    EXPECT_FALSE(trav.Next(i));
    EXPECT_EQ(i, 0u);
    ASSERT_TRUE(trav.First(i));
    EXPECT_FALSE(trav.Next(i) || trav.Next(i) || trav.Prev(i));
    EXPECT_DEATH(SetBitTraverseData(&seven, nullptr), "AssertionFailed:trav .*BlkBitVectTrav:27");
    EXPECT_DEATH(omi_BlkBitVectTrav(nullptr), "AssertionFailed:flist .*BlkBitVectTrav:28");
}

TEST(SparseSet, GrowsByMultiplesOf1024) {
    omi_SparseSet set;
    const auto requestsFor = [&](int inserts) {
        host_heap::Watch();
        for (int i = inserts; i > 0; --i) set.Insert(i);
        const long requests = host_heap::g_probe.requests;
        host_heap::Unwatch();
        return requests;
    };
    EXPECT_EQ(requestsFor(1024), 1);
    EXPECT_EQ(requestsFor(1024), 1);
    set.Reserve(2049);
    EXPECT_EQ(requestsFor(1024), 0);
    EXPECT_EQ(requestsFor(1), 1);
    set.ReserveAdditional(1024);
    EXPECT_EQ(requestsFor(2047), 0);
    EXPECT_THROW(set.ReserveAdditional(INT_MAX), std::bad_alloc);
}

TEST(SparseSet, TakesAndDropsTheMembersOfABitVector) {
    const Bits bits = {2, 9, 0x7fffffffu, 0x80000000u};
    omi_SparseSet set;
    for (const int v : {9, 4, -2}) set.Insert(v);
    set.Insert(bits);
    EXPECT_EQ(Listed(set), (Numbers{-2, 2, 4, 9, INT_MAX}));
    set.Remove(bits);
    EXPECT_EQ(Listed(set), (Numbers{-2, 4}));
}

TEST(GeneratedSet, HoldsWhatLiesBetweenStartAndEndInWholeSteps) {
    const struct {
        int start, end, step;
        Numbers members;
    } cases[] = {{10, 1, -3, {10, 7, 4, 1}},
                 {3, 20, 5, {3, 8, 13, 18}},
                 {7, 7, 4, {7}},
                 {1, 0, 5, {}},
                 {4, 9, 0, {}},
                 {INT_MIN, INT_MAX, INT_MAX, {INT_MIN, -1, INT_MAX - 1}},
                 {INT_MAX, INT_MIN, INT_MIN, {INT_MAX, -1}}};
    Numbers queries = {INT_MIN, INT_MIN + 1, INT_MAX - 1, INT_MAX};
    for (int i = -10; i < 30; ++i) queries.push_back(i);
    for (const auto& [start, end, step, members] : cases) {
        SCOPED_TRACE(testing::Message() << start << ' ' << end << ' ' << step);
        const omi_GeneratedSet set(start, end, step);
        EXPECT_EQ(Listed(set), members);
        for (const int v : queries)
            EXPECT_EQ(set.IsMember(v), std::count(members.begin(), members.end(), v) > 0) << v;
    }
}

Numbers Range(const omi_GeneratedSet& set, int i) {
    Numbers range(3);
    set.GetRange(i, range[0], range[1], range[2]);
    return range;
}

TEST(GeneratedSet, TrimClipsAndReturnsWhatItCutsOff) {
    const struct {
        int range[3], low, high, n;
        Numbers left, cutOff;
    } cases[] = {{{3, 20, 5}, 0, 9, 2, {3, 9, 5}, {13, 18}},
                 {{3, 20, 5}, 0, 9, 1, {3, 9, 5}, {13}},
                 {{3, 20, 5}, 9, 30, 9, {8, 20, 5}, {3}},
                 {{3, 20, -5}, 9, 14, 9, {8, 14, -5}, {3, 18}},
                 {{3, 20, 5}, 30, 40, 4, {1, 0, 5}, {3, 8, 13, 18}},
                 {{-7, -1, 3}, 0, 4, 9, {1, 0, 3}, {-7, -4, -1}},
                 {{10, 1, -3}, 0, 5, 9, {1, 0, -3}, {1, 4, 7, 10}},
                 {{1, 0, 2}, 5, 6, 9, {1, 0, 2}, {}},
                 {{INT_MIN, INT_MAX, 1}, 0, 1, 1, {0, 1, 1}, {2, INT_MIN}}};
    for (const auto& [range, low, high, n, left, cutOff] : cases) {
        SCOPED_TRACE(testing::Message() << range[0] << ' ' << range[1] << " to " << low);
        omi_GeneratedSet set(range[0], range[1], range[2]);
        EXPECT_EQ(Listed(set.Trim(low, high, n)), cutOff);
        EXPECT_EQ(Range(set, 0), left);
    }
}

TEST(GeneratedSet, AppendsGeneratorsAlsoItsOwn) {
    omi_GeneratedSet set(1, 3, 1);
    set.Insert(9, 9, 1);
    set += set;
    EXPECT_EQ(Listed(set), (Numbers{1, 2, 3, 9, 1, 2, 3, 9}));
    for (const int i : {-1, 4}) EXPECT_EQ(Range(set, i), (Numbers{0, 0, 1}));
    const omi_GeneratedSet other(5, 5, 1);
    const std::function<void(omi_GeneratedSet&)> writes[] = {
        [](omi_GeneratedSet& s) { s.Insert(4, 5, 1); }, [](omi_GeneratedSet& s) { s += s; },
        [&](omi_GeneratedSet& s) { s = other; }, [](omi_GeneratedSet& s) { s.Trim(0, 1, 9); }};
    for (const auto& write : writes)
        ForEveryAllocationFailure([&] { return set; }, write,
                                  [&](const omi_GeneratedSet& s, bool done) {
                                      EXPECT_EQ(Listed(s) == Listed(set), !done);
                                  });
}

}  // namespace
