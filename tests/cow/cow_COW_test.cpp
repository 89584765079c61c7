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
    host_heap::Watch();
    Handle b(std::move(a));  // shares
    EXPECT_TRUE(a.HasValue() && !a.Exclusive() && &a.ConstGet() == &b.ConstGet());
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    b.Get().value = 2;
    EXPECT_EQ(&b.Get(), &b.Get());
    EXPECT_EQ(host_heap::g_probe.requests, 2);  // the referent and its count
    EXPECT_TRUE(a.Exclusive() && b.Exclusive());
    EXPECT_EQ(a.ConstGet().value + 10 * b.ConstGet().value, 21);
    b = a;
    b = cow_Direct<Tracked>::Copy(Tracked(3));
    EXPECT_EQ(a.ConstGet().value + 10 * b.ConstGet().value, 31);
    host_heap::Watch();
    b = static_cast<Tracked*>(nullptr);  // exclusive: keeps its counter
    EXPECT_EQ(host_heap::g_probe.requests, 0);
    host_heap::Unwatch();
    EXPECT_TRUE(b.IsNull());
    a = std::move(b);
    EXPECT_TRUE(a.IsNull() && b.IsNull());
    EXPECT_EQ(Tracked::s_live, 0);
}

TEST(CowHandle, SelfAssignmentAndAssignmentFromTheOwnReferentAreSafe) {
    struct Node {
        explicit Node(Node* child) : next(child) {}
        cow_COW<Node, cow_Direct<Node>> next;
    };
    const Node leaf(nullptr);
    cow_COW<Node, cow_Direct<Node>> root(Node(cow_Direct<Node>::Copy(leaf)));
    root = *&root;
    for (int level = 0; level < 2; ++level) {
        ASSERT_TRUE(root.HasValue());
        root = root.ConstGet().next;
    }
    EXPECT_TRUE(root.IsNull());
}

TEST(CowHandle, MemoryFailureLeavesBothSharersAsTheyWere) {
    struct Pair {
        Handle a{Tracked(1)};
        Handle b{a};
    };
    void (*const writes[])(Pair&) = {
        [](Pair& pair) { pair.b.Get().value = 2; },
        [](Pair& pair) { pair.b = cow_Direct<Tracked>::Copy(Tracked(3)); },
        [](Pair& pair) { pair.a = Handle(Tracked(1)); }};
    for (const auto write : writes)
        ForEveryAllocationFailure([] { return Pair(); }, write,
                                  [](const Pair& pair, bool) {
                                      EXPECT_EQ(pair.a.ConstGet().value, 1);
                                      EXPECT_TRUE(pair.b.HasValue());
                                  });
    EXPECT_EQ(Tracked::s_live, 0);
}

}  // namespace
