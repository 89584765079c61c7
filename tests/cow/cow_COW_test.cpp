#include <cow/cow_COW.h>
#include <gtest/gtest.h>
#include <support/memory_failure.h>

#include <utility>

namespace {

// Counts its live objects, so that a lost or twice destroyed referent shows.
struct Tracked {
    static int s_live;
    int value;
    explicit Tracked(int v) : value(v) { ++s_live; }
    Tracked(const Tracked& other) : value(other.value) { ++s_live; }
    ~Tracked() { --s_live; }
};
int Tracked::s_live = 0;

using Handle = cow_COW<Tracked, cow_Direct<Tracked>>;

TEST(CowHandle, WriteToACopyLeavesTheOriginalAndMakesBothExclusive) {
    Handle a(Tracked(1));
    Handle b(a);
    EXPECT_FALSE(a.Exclusive());
    EXPECT_EQ(&a.ConstGet(), &b.ConstGet());
    b.Get().value = 2;
    EXPECT_EQ(a.ConstGet().value, 1);
    EXPECT_EQ(b.ConstGet().value, 2);
    EXPECT_TRUE(a.Exclusive() && b.Exclusive());
}

TEST(CowHandle, ExclusiveGetNeverAllocates) {
    Handle a(Tracked(1));
    host_heap::Watch();
    EXPECT_EQ(&a.Get(), &a.Get());
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    Handle b(a);
    b.Get();
    EXPECT_EQ(host_heap::g_probe.requests, 2);  // the referent and its count
    host_heap::Unwatch();
}

TEST(CowHandle, RvaluesShareAndStayValid) {
    Handle a(Tracked(5));
    Handle b(std::move(a));
    EXPECT_TRUE(a.HasValue());
    EXPECT_EQ(a.GetPtr(), b.GetPtr());
    Handle c(Tracked(6));
    c = std::move(b);
    EXPECT_EQ(b.GetPtr(), c.GetPtr());
    EXPECT_EQ(Tracked::s_live, 1);
}

TEST(CowHandle, ReplacingKeepsTheOldReferentForOtherSharers) {
    Handle a(Tracked(1));
    Handle b(a);
    b = cow_Direct<Tracked>::Copy(Tracked(2));
    EXPECT_TRUE(a.Exclusive() && b.Exclusive());
    EXPECT_EQ(a.ConstGet().value + 10 * b.ConstGet().value, 21);
    host_heap::Watch();
    b = static_cast<Tracked*>(nullptr);  // exclusive: keeps its counter
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    host_heap::Unwatch();
    EXPECT_TRUE(b.IsNull());
    EXPECT_EQ(Tracked::s_live, 1);
}

TEST(CowHandle, SelfAssignmentAndAssignmentFromTheOwnReferentAreSafe) {
    struct Node {
        explicit Node(Node* child) : next(child) {}
        cow_COW<Node, cow_Direct<Node>> next;
    };
    const Node leaf(nullptr);
    cow_COW<Node, cow_Direct<Node>> root(Node(cow_Direct<Node>::Copy(leaf)));
    root = *&root;
    ASSERT_TRUE(root.HasValue());
    root = root.ConstGet().next;
    ASSERT_TRUE(root.HasValue());
    root = root.ConstGet().next;
    EXPECT_TRUE(root.IsNull());
}

TEST(CowHandle, MemoryFailureLeavesBothSharersAsTheyWere) {
    struct Pair {
        Handle a{Tracked(1)};
        Handle b{a};
    };
    const auto prepare = [] { return Pair(); };
    const auto check = [](const Pair& pair, bool) {
        EXPECT_EQ(pair.a.ConstGet().value, 1);
        EXPECT_TRUE(pair.b.HasValue());
    };
    ForEveryAllocationFailure(
        prepare, [](Pair& pair) { pair.b.Get().value = 2; }, check);
    ForEveryAllocationFailure(
        prepare, [](Pair& pair) { pair.b = cow_Direct<Tracked>::Copy(Tracked(3)); }, check);
    ForEveryAllocationFailure(
        prepare, [](Pair& pair) { pair.a = Handle(Tracked(1)); }, check);
    EXPECT_EQ(Tracked::s_live, 0);
}

}  // namespace
