#include <gtest/gtest.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <support/memory_failure.h>
#include <support/random.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace {

using Numbers = std::vector<int>;

template <class Set>
Numbers Listed(const Set& set) {
    return Numbers(set.begin(), set.end());
}

// The order in which the sets list their members: -1, -2, 0, 1.
Numbers InOrder(const std::set<int>& model) {
    const auto zero = model.lower_bound(0);
    Numbers numbers(model.begin(), zero);
    std::reverse(numbers.begin(), numbers.end());
    numbers.insert(numbers.end(), zero, model.end());
    return numbers;
}

template <class Set>
class IntegerSets : public testing::Test {};
using BothSets = testing::Types<omi_Set, omi_SparseSet>;
TYPED_TEST_SUITE(IntegerSets, BothSets);

TYPED_TEST(IntegerSets, ListNegativeMembersByMagnitudeThenTheOthersAscending) {
    const std::pair<Numbers, Numbers> cases[] = {{{3, -1, -4, 0}, {-1, -4, 0, 3}},
                                                 {{5, 2, 5}, {2, 5}},
                                                 {{-2, -2}, {-2}},
                                                 {{INT_MAX, INT_MIN, 0}, {INT_MIN, 0, INT_MAX}},
                                                 {{}, {}}};
    for (const auto& [values, expected] : cases) {
        TypeParam set(values.data(), static_cast<int>(values.size()));
        EXPECT_EQ(Listed(set), expected);
        EXPECT_EQ(set.Size(), static_cast<int>(expected.size()));
        EXPECT_EQ(set.IsEmpty(), expected.empty());
        EXPECT_EQ(set, TypeParam(expected.rbegin(), expected.rend()));
        KZMBasVector<int> out(3, 77);
        set.Members(out);
        EXPECT_EQ(Numbers(out.begin(), out.end()), expected);
    }
}

// Each set beside the std::set it must equal; they copy and combine each other at random.
TYPED_TEST(IntegerSets, EqualTheirModelsUnderRandomEdits) {
    Random random(7);
    TypeParam sets[3];
    std::set<int> models[3];
    for (int step = 0; step < 1500; ++step) {
        const unsigned at = random.Below(3);
        const unsigned from = random.Below(3);
        // The ends of the range come late, since every walk over them is long.
        const auto number = [&] {
            const int edges[] = {0, 32, 8192, 1 << 20};
            const int near = edges[random.Below(4)] + static_cast<int>(random.Below(48)) - 16;
            if (step > 1400) return static_cast<int>(random.Clustered());
            return random.OneIn(2) ? near : -near;
        };
        TypeParam& set = sets[at];
        std::set<int>& model = models[at];
        const std::set<int> other = models[from];
        // Which numbers stay: those of this set alone 1, of both 2, of the other alone 4.
        const auto combined = [&](unsigned keep) {
            std::set<int> result = model;
            result.insert(other.begin(), other.end());
            std::erase_if(result, [&](int v) {
                return !(keep >> (model.count(v) ? other.count(v) : 2) & 1);
            });
            return result;
        };
        const unsigned kind = random.Below(9);
        if (kind == 0) sets[at] = TypeParam(sets[from]), model = other;
        if (kind == 1) set += sets[from], model = combined(7);
        if (kind == 2) set -= sets[from], model = combined(1);
        if (kind == 3) set &= sets[from], model = combined(2);
        if (kind == 4) set ^= sets[from], model = combined(5);
        if (kind == 5 && random.OneIn(8)) set.Clear(), model.clear();
        for (int i = 0; kind > 5 && i < 12; ++i) {
            const int v = number();
            if (random.Below(3))
                set.Insert(v), model.insert(v);
            else
                set.Remove(v), model.erase(v);
            const int query = i < 6 ? v : number();
            ASSERT_EQ(set.IsMember(query), model.count(query) != 0);
        }
        if (random.OneIn(4)) {
            ASSERT_EQ(Listed(set), InOrder(model));
            ASSERT_EQ(set == sets[from], model == models[from]);
        }
    }
}

TYPED_TEST(IntegerSets, AWriteThatRunsOutOfMemoryChangesNothing) {
    const Numbers before = {-3, 3, 8192};
    const Numbers numbers = {-3, -70000, 3, 1 << 22};
    const TypeParam other(numbers.begin(), numbers.end());
    const std::pair<std::function<void(TypeParam&)>, Numbers> cases[] = {
        {[](TypeParam& set) { set.Insert(5000000); }, {-3, 3, 8192, 5000000}},
        {[](TypeParam& set) { set.Insert(INT_MIN); }, {-3, INT_MIN, 3, 8192}},
        {[&](TypeParam& set) { set += other; }, {-3, -70000, 3, 8192, 1 << 22}},
        {[&](TypeParam& set) { set -= other; }, {8192}},
        {[&](TypeParam& set) { set &= other; }, {-3, 3}},
        {[&](TypeParam& set) { set ^= other; }, {-70000, 8192, 1 << 22}},
        {[&](TypeParam& set) { set = other; }, {-3, -70000, 3, 1 << 22}},
        {[&](TypeParam& set) { set.IsMember(3); }, before}};
    for (const auto& [operation, after] : cases) {
        SCOPED_TRACE(testing::PrintToString(after));
        ForEveryAllocationFailure([&] { return TypeParam(before.rbegin(), before.rend()); },
                                  operation,
                                  [&, &after = after](const TypeParam& set, bool done) {
                                      EXPECT_EQ(Listed(set), done ? after : before);
                                  });
    }
}

TEST(Set, AFailedInsertOfManyValuesInsertsNone) {
    const int values[] = {1, -1, 1 << 22, -(1 << 22)};
    ForEveryAllocationFailure(
        [] { return omi_Set(); }, [&](omi_Set& set) { set.Insert(values, 4); },
        [](const omi_Set& set, bool done) { EXPECT_EQ(set.Size(), done ? 4 : 0); });
}

TEST(Set, PrintsEightMembersALine) {
    Numbers values(9);
    std::iota(values.begin(), values.end(), -1);
    testing::internal::CaptureStdout();
    omi_Set(values.data(), 9).Print("nodes");
    omi_Set(values.data(), 8).Print("");
    const std::string line = "      -1       0       1       2       3       4       5       6\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "nodes\n" + line + "       7\n\n" + line);
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
    omi_SparseSet copy;
    copy += set;
    copy += copy;
    EXPECT_EQ(copy, set);
    EXPECT_THROW(set.ReserveAdditional(INT_MAX), std::bad_alloc);
}

TEST(SparseSet, TakesAndDropsTheMembersOfABitVector) {
    omi_BlkBitVect bits;
    for (const unsigned bit : {2u, 9u, 0x7fffffffu, 0x80000000u}) bits.SetBit(bit);
    omi_SparseSet set;
    set.Insert(9);
    set.Insert(bits);
    EXPECT_EQ(Listed(set), (Numbers{2, 9, INT_MAX}));
    set.Insert(-2);
    set.Insert(4);
    set.Remove(bits);
    EXPECT_EQ(Listed(set), (Numbers{-2, 4}));
}

TEST(GeneratedSet, HoldsWhatLiesBetweenStartAndEndInWholeSteps) {
    const struct {
        int start, end, step;
        Numbers members, others;
    } cases[] = {{10, 1, -3, {10, 7, 4, 1}, {13, 2, -2}},
                 {3, 20, 5, {3, 8, 13, 18}, {-2, 4, 23}},
                 {3, 20, -5, {3, 8, 13, 18}, {-2, 23}},
                 {7, 7, 4, {7}, {3, 11}},
                 {1, 0, 5, {}, {0, 1}},
                 {1, 0, 1, {}, {0, 1}},
                 {4, 9, 0, {}, {4, 9}},
                 {INT_MIN, INT_MAX, INT_MAX, {INT_MIN, -1, INT_MAX - 1}, {0, INT_MAX}},
                 {INT_MAX, INT_MIN, INT_MIN, {INT_MAX, -1}, {INT_MIN, 0}}};
    for (const auto& [start, end, step, members, others] : cases) {
        SCOPED_TRACE(testing::Message() << start << ' ' << end << ' ' << step);
        const omi_GeneratedSet set(start, end, step);
        EXPECT_EQ(Listed(set), members);
        for (const int v : members) EXPECT_TRUE(set.IsMember(v)) << v;
        for (const int v : others) EXPECT_FALSE(set.IsMember(v)) << v;
    }
}

TEST(GeneratedSet, TrimClipsAndReturnsWhatItCutsOff) {
    const struct {
        int range[3], low, high, n, left[3];
        Numbers cutOff;
    } cases[] = {{{3, 20, 5}, 0, 9, 2, {3, 9, 5}, {13, 18}},
                 {{3, 20, 5}, 0, 9, 1, {3, 9, 5}, {13}},
                 {{3, 20, 5}, 0, 9, 0, {3, 9, 5}, {}},
                 {{3, 20, 5}, 9, 30, 9, {8, 20, 5}, {3}},
                 {{3, 20, -5}, 9, 14, 9, {8, 14, -5}, {3, 18}},
                 {{3, 20, 5}, 30, 40, 4, {1, 0, 5}, {3, 8, 13, 18}},
                 {{-7, -1, 3}, 0, 4, 9, {1, 0, 3}, {-7, -4, -1}},
                 {{10, 1, -3}, 0, 5, 9, {1, 0, -3}, {1, 4, 7, 10}},
                 {{10, 1, -3}, 0, 10, 9, {10, 1, -3}, {}},
                 {{1, 0, 2}, 5, 6, 9, {1, 0, 2}, {}},
                 {{INT_MIN, INT_MAX, 1}, 0, 1, 1, {0, 1, 1}, {2, INT_MIN}}};
    for (const auto& [range, low, high, n, left, cutOff] : cases) {
        SCOPED_TRACE(testing::Message() << range[0] << ' ' << range[1] << " to " << low);
        omi_GeneratedSet set(range[0], range[1], range[2]);
        const omi_BlkBitVect bits = set.Trim(low, high, n);
        Numbers found;
        omi_BlkBitVectTrav walk(&bits);
        unsigned bit;
        for (bool more = walk.First(bit); more; more = walk.Next(bit))
            found.push_back(static_cast<int>(bit));
        EXPECT_EQ(found, cutOff);
        int start, end, step;
        set.GetRange(0, start, end, step);
        EXPECT_EQ((Numbers{start, end, step}), Numbers(left, left + 3));
    }
}

TEST(GeneratedSet, AppendsGeneratorsAlsoItsOwn) {
    omi_GeneratedSet set(1, 3, 1);
    set.Insert(9, 9, 1);
    set += set;
    EXPECT_EQ(Listed(set), (Numbers{1, 2, 3, 9, 1, 2, 3, 9}));
    int start, end, step;
    for (const int i : {-1, 4}) {
        set.GetRange(i, start, end, step);
        EXPECT_EQ((Numbers{start, end, step}), (Numbers{0, 0, 1}));
    }
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
