#include <gtest/gtest.h>
#include <host/KZMBasFatalError.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <bit>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

omi_BlkBitVect Of(std::initializer_list<unsigned> bits) {
    omi_BlkBitVect vector;
    for (const unsigned bit : bits) vector.SetBit(bit);
    return vector;
}

std::vector<unsigned> Upwards(const omi_BlkBitVect& vector) {
    std::vector<unsigned> bits;
    omi_BlkBitVectTrav trav(&vector);
    unsigned i;
    for (bool more = trav.First(i); more; more = trav.Next(i)) bits.push_back(i);
    EXPECT_EQ(i, 0u);
    return bits;
}

std::vector<unsigned> Downwards(const omi_BlkBitVect& vector) {
    std::vector<unsigned> bits;
    omi_BlkBitVectTrav trav(&vector);
    unsigned i = 77;
    for (bool more = trav.Last(i); more; more = trav.Prev(i)) bits.push_back(i);
    EXPECT_EQ(i, bits.empty() ? 77 : bits.back());
    return bits;
}

TEST(BitVector, CountsBitsOfWordsByByte) {
    for (const unsigned word : {0u, 1u, 0x80000000u, 0xffffffffu, 0x12345678u, 0xff00ff01u})
        EXPECT_EQ(CountBits32(word), static_cast<unsigned>(std::popcount(word)));
}

TEST(BitVector, RangesSetWhatTheyCoverAndCountItOnce) {
    const unsigned cases[][3] = {{30, 100, 71},      {5, 5, 1},   {32, 40, 9},
                                 {0, 63, 64},        {63, 64, 2}, {8190, 8193, 4},
                                 {100, 5, 6},        {10, 5, 0},  {0xfffffff0u, 0xffffffffu, 16},
                                 {100, 30000, 29901}};
    for (const auto& [from, to, count] : cases) {
        SCOPED_TRACE(from);
        omi_BlkBitVect vector = Of({40, 9000});
        const unsigned had = (from <= 40 && 40 <= to) + (from <= 9000 && 9000 <= to);
        vector.SetFromTo(from, to);
        EXPECT_EQ(vector.Size(), 2 + count - had);
        EXPECT_EQ(Upwards(vector).size(), vector.Size());
        EXPECT_EQ(vector.IsSet(from) && vector.IsSet(to), from <= to);
    }
}

TEST(BitVector, EqualityComparesShapeToo) {
    const omi_BlkBitVect fresh;
    omi_BlkBitVect grown = Of({2000000});
    grown.Clear();
    EXPECT_FALSE(grown == fresh);
    EXPECT_EQ(grown.Compare(fresh), 0);

    omi_BlkBitVect emptied = Of({5});
    emptied.UnsetBit(5);
    EXPECT_FALSE(emptied == fresh);
    EXPECT_EQ(emptied.Compare(fresh), 128);
    EXPECT_EQ(fresh.Compare(emptied), -128);
    emptied &= emptied;
    EXPECT_TRUE(emptied == fresh);
}

TEST(BitVector, CompareOrdersByCountThenBlocksThenWords) {
    omi_BlkBitVect wide = Of({0, 2000000});
    wide.UnsetBit(2000000);
    wide -= omi_BlkBitVect();  // stale, so that the comparison frees the empty block
    const struct {
        omi_BlkBitVect a, b;
        int result;
    } cases[] = {
        {Of({0}), Of({8192}), 128}, {Of({8192}), Of({0}), -128}, {Of({8192}), Of({16384}), 127},
        {Of({31}), Of({0}), 1},     {Of({0}), Of({31}), -1},     {Of({1, 2, 3}), Of({1}), 2},
        {wide, Of({8192}), 128},    {Of({8192}), wide, -256},    {Of({1, 8192}), Of({1, 8192}), 0},
    };
    for (const auto& [a, b, result] : cases) EXPECT_EQ(a.Compare(b), result);
}

TEST(BitVector, SubsetsAndOverlapLookAtMembersOnly) {
    omi_BlkBitVect wide = Of({3, 2000000});
    wide.UnsetBit(2000000);
    EXPECT_TRUE(Of({3, 8192}).Contains(wide));
    EXPECT_TRUE(omi_BlkBitVect().Contains(omi_BlkBitVect()));
    EXPECT_FALSE(Of({3}).Contains(Of({3, 8192})));
    EXPECT_FALSE(Of({4, 5}).Contains(wide));
    EXPECT_TRUE(Of({3, 9000}).HasOverlap(wide));
    EXPECT_FALSE(Of({2000000, 4}).HasOverlap(wide));
}

TEST(BitVector, OperatorsWorkInPlaceOnThemselves) {
    omi_BlkBitVect a = Of({1, 8192});
    EXPECT_EQ((a |= a).Size(), 2u);
    EXPECT_EQ((a &= a).Size(), 2u);
    EXPECT_EQ((a ^= a).Size(), 0u);
    a = Of({1, 8192});
    EXPECT_EQ((a -= a).Size(), 0u);
}

TEST(BitVectorTraversal, VisitsBlockEdgesBothWaysAndSkipsEmptyBlocks) {
    omi_BlkBitVect vector = Of({0, 8191, 8192, 20000, 0xffffffffu});
    vector.UnsetBit(20000);
    EXPECT_EQ(Upwards(vector), (std::vector<unsigned>{0, 8191, 8192, 0xffffffffu}));
    EXPECT_EQ(Downwards(vector), (std::vector<unsigned>{0xffffffffu, 8192, 8191, 0}));
    EXPECT_TRUE(Upwards(omi_BlkBitVect()).empty());
    EXPECT_TRUE(Downwards(omi_BlkBitVect()).empty());
}

TEST(BitVectorTraversal, StandsNowhereBeforeTheFirstMoveAndAfterTheLast) {
    const omi_BlkBitVect vector = Of({7});
    omi_BlkBitVectTrav trav(&vector);
    unsigned i = 77;
    EXPECT_FALSE(trav.Prev(i));
    EXPECT_EQ(i, 77u);
    EXPECT_FALSE(trav.Next(i));
    EXPECT_EQ(i, 0u);
    ASSERT_TRUE(trav.First(i));
    EXPECT_FALSE(trav.Next(i) || trav.Next(i) || trav.Prev(i));
}

TEST(BitVectorTraversal, SetCurrentGoesOnToTheNearestBit) {
    omi_BlkBitVect vector = Of({0, 8191, 30000, 50000});
    vector.UnsetBit(30000);
    const struct {
        unsigned from;
        bool forward, found;
        unsigned at;
    } cases[] = {
        {8191, true, true, 8191},     {1, true, true, 8191},         {1, false, true, 0},
        {9000, true, true, 50000},    {9000, false, true, 8191},     {30001, true, true, 50000},
        {30001, false, true, 8191},   {50001, true, false, 0},       {100000, true, false, 0},
        {100000, false, true, 50000}, {2000000, false, true, 50000}, {2000000, true, false, 0}};
    for (const auto& [from, forward, found, at] : cases) {
        SCOPED_TRACE(from);
        omi_BlkBitVectTrav trav(&vector);
        unsigned i = from;
        ASSERT_EQ(trav.SetCurrent(i, forward), found);
        if (!found) continue;
        EXPECT_EQ(i, at);
        EXPECT_TRUE(!trav.Next(i) || i > at);
    }
}

TEST(BitVectorTraversal, NullPointersAreFatal) {
    const auto throwing = [](const char* message, const char*, const char*, const char*,
                             const char* source, int line) {
        throw std::runtime_error(std::string(message) + " " + source + std::to_string(line));
    };
    const auto before = KZMBasSetFatalErrorHandler(throwing);
    const auto text = [](auto call) -> std::string {
        try {
            call();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "returned";
    };
    const omi_BlkBitVect vector;
    EXPECT_EQ(text([&] { SetBitTraverseData(&vector, nullptr); }),
              "AssertionFailed:trav omi_BlkBitVectTrav27");
    EXPECT_EQ(text([] { omi_BlkBitVectTrav trav(nullptr); }),
              "AssertionFailed:flist omi_BlkBitVectTrav28");
    KZMBasSetFatalErrorHandler(before);
}

TEST(BitVector, DumpListsEightNumbersALine) {
    const auto dump = [](const omi_BlkBitVect& vector) {
        testing::internal::CaptureStderr();
        vector.DumpList();
        return testing::internal::GetCapturedStderr();
    };
    omi_BlkBitVect stale = Of({5});
    stale -= Of({5});
    EXPECT_EQ(dump(stale), "Empty List\n");
    EXPECT_EQ(dump(Of({5})), "ListCount=1\n       5\n");
    EXPECT_EQ(dump(Of({1, 2, 3, 4, 5, 6, 7, 0xffffffffu})),
              "ListCount=8\n       1       2       3       4       5       6       7      -1\n\n");
}

TEST(BitVectorModel, OperatorsEqualSetOperationsUnderRandomEdits) {
    Random rng(7);
    constexpr unsigned kRange = 1u << 24;
    omi_BlkBitVect vectors[5];
    std::set<unsigned> models[5];
    for (int step = 0; step < 6000; ++step) {
        const unsigned at = rng.Below(5);
        const unsigned with = rng.Below(5);
        omi_BlkBitVect& vector = vectors[at];
        std::set<unsigned>& model = models[at];
        const std::set<unsigned>& other = models[with];
        const auto differ = [&](unsigned bit) { return other.count(bit) == 0; };
        const unsigned bit = rng.Clustered() % kRange;
        switch (rng.Below(24)) {
            case 0:
                vector = vectors[with], model = other;
                break;
            case 1:
                vector |= vectors[with], model.insert(other.begin(), other.end());
                break;
            case 2:
                vector &= vectors[with], std::erase_if(model, differ);
                break;
            case 3: {
                const std::set<unsigned> removed = other;
                vector -= vectors[with];
                std::erase_if(model, [&](unsigned b) { return removed.count(b) != 0; });
                break;
            }
            case 4: {
                const std::set<unsigned> toggled = other;
                vector ^= vectors[with];
                for (const unsigned b : toggled)
                    if (!model.insert(b).second) model.erase(b);
                break;
            }
            case 5: {
                const unsigned to = std::min(bit + rng.Below(300), kRange);
                vector.SetFromTo(bit, to);
                for (unsigned b = bit; b <= to; ++b) model.insert(b);
                break;
            }
            case 6:
                if (rng.OneIn(8)) vector.Clear(), model.clear();
                break;
            case 7:
                ASSERT_EQ(Upwards(vector), std::vector<unsigned>(model.begin(), model.end()));
                ASSERT_EQ(Downwards(vector), std::vector<unsigned>(model.rbegin(), model.rend()));
                break;
            case 8:
                ASSERT_EQ(vector.Contains(vectors[with]),
                          std::includes(model.begin(), model.end(), other.begin(), other.end()));
                ASSERT_EQ(vector.HasOverlap(vectors[with]),
                          std::any_of(model.begin(), model.end(),
                                      [&](unsigned b) { return !differ(b); }));
                break;
            default:
                if (rng.Below(3))
                    vector.SetBit(bit), model.insert(bit);
                else
                    vector.UnsetBit(bit), model.erase(bit);
        }
        ASSERT_EQ(vector.IsSet(bit), model.count(bit) != 0);
        ASSERT_EQ(vector.Size(), model.size());
    }
}

TEST(BitVectorFailure, EveryOperationLeavesTheMembersOrCompletes) {
    const omi_BlkBitVect other = Of({3, 9000, 2000000});
    const auto prepare = [] { return Of({3, 8192}); };
    const auto expect = [&](auto operation, unsigned sizeAfter) {
        ForEveryAllocationFailure(prepare, operation, [=](const omi_BlkBitVect& vector, bool done) {
            EXPECT_EQ(vector.Size(), done ? sizeAfter : 2u);
            EXPECT_EQ(Upwards(vector).size(), vector.Size());
        });
    };
    expect([](omi_BlkBitVect& vector) { vector.SetBit(5000000); }, 3);
    expect([](omi_BlkBitVect& vector) { vector.SetFromTo(30000, 90000); }, 60003);
    expect([&](omi_BlkBitVect& vector) { vector |= other; }, 4);
    expect([&](omi_BlkBitVect& vector) { vector ^= other; }, 3);
    expect([&](omi_BlkBitVect& vector) { vector = other; }, 3);
}

}  // namespace
