// The containers by value that map keys: trees, maps and the tables of integers.
#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_BtreeUtils.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <support/allocations.h>
#include <support/expect_abort.h>
#include <support/memory_failure.h>

#include <climits>
#include <cmath>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Tree = cow_Btree<int, int>;
using Map = cow_Map<int, int>;

bool Put(Tree& tree, int key, int value) { return tree.InsertUnlessMember(key, value); }
bool Put(auto& c, int key, int value) { return c.Insert(key, value); }
int& At(Tree& tree, int key) { return tree.Find(key); }
int& At(Map& map, int key) { return map.Get(key); }

template <class C>
C Counting(int n) {
    C c;
    for (int i = 0; i < n; ++i) Put(c, i, 10 * i);
    return c;
}

TEST(KeyedDeathTest, TheValueOfAnAbsentKeyEndsTheProcess) {
    const auto expect = [](auto container) {
        EXPECT_ABORT(container.ConstGet(7));
        EXPECT_ABORT(container.Get(INT_MIN));
    };
    expect(Counting<Map>(3));
    expect(Counting<cow_IntTableInt>(3));
    expect(Counting<cow_IntMultiMapInt>(3));
}

auto Children(const Tree::Node& n) { return std::pair(n.Left(), n.Right()); }
auto Children(const Map::Node& n) { return std::pair(n.Child0().GetPtr(), n.Child1().GetPtr()); }

// The key, then the subtrees, "." for a missing one beside a present one.
std::string Shape(const auto* node) {
    if (!node) return ".";
    const auto [first, second] = Children(*node);
    const std::string below = Shape(first) + " " + Shape(second);
    return std::to_string(node->key) + (below == ". ." ? "" : "(" + below + ")");
}

template <class C>
std::string ShapeOf(const std::vector<int>& inserted, const std::vector<int>& removed = {}) {
    C c;
    for (const int key : inserted) EXPECT_TRUE(Put(c, key, 0));
    for (const int key : removed) EXPECT_TRUE(c.Remove(key));
    return Shape(c.Root());
}

TEST(Btree, RotatesOnceAndTreatsMissingChildrenAsLeaves) {
    EXPECT_EQ(ShapeOf<Tree>({1, 2, 3, 4, 5}), "3(2(1 .) 4(. 5))");
    EXPECT_EQ(ShapeOf<Tree>({2, 1}), "2(1 .)");
    EXPECT_EQ(ShapeOf<Tree>({4, 3, 2, 1}), "3(2(1 .) 4)");
    EXPECT_EQ(ShapeOf<Tree>({5, 3, 7, 2, 4, 8, 1}, {5}), "3(2(1 .) 7(4 8))");
    EXPECT_EQ(ShapeOf<Tree>({1, 4, 2, 3}), "4(1(. 2(. 3)) .)");
    EXPECT_EQ(ShapeOf<Tree>({4, 2, 8, 1, 3, 6, 9, 5, 7}, {4, 5}), "6(2(1 3) 8(7 9))");
    EXPECT_EQ(ShapeOf<Tree>({5, 3, 7, 2, 8, 1}, {8}), "3(2(1 .) 5(. 7))");
    Tree fromBothEnds;
    for (int i = 0; i < 2500; ++i)
        for (const int key : {i, 4999 - i}) fromBothEnds.InsertUnlessMember(key, key);
    EXPECT_EQ(fromBothEnds.Root()->Depth(), 15);
    for (const int key : {0, 4321, 4999}) EXPECT_EQ(fromBothEnds.ConstFind(key), key);
    EXPECT_FALSE(fromBothEnds.FindValue(5000));
}

TEST(Map, BranchesByBitsAndPullsChainsUpOnRemoval) {
    EXPECT_EQ(ShapeOf<Map>({0, 1, 2, 3}, {0}), "1(2 3)");
    EXPECT_EQ(ShapeOf<Map>({0, 2, 4, 6}, {0}), "2(6(4 .) .)");
    EXPECT_EQ(ShapeOf<Map>({0, -1, INT_MIN}), "0(-2147483648 -1)");
    EXPECT_FALSE(cow_MapBit(-1, 32) || cow_MapBit(~0u, 32) || cow_MapBit(~1u, 0));
}

// How many nodes one write to a copy makes: '+' inserts, '-' removes, '=' sets a value.
template <class C>
int NodesCopied(const C& original, char op, int key) {
    std::set<const void*> old;
    int made = 0;
    for (auto walk = original.begin(); walk != original.end(); ++walk)
        old.insert(walk.CurrentNode());
    C copy = original;
    op == '+' ? Put(copy, key, 1) : op == '-' ? copy.Remove(key) : (At(copy, key) = 1) != 0;
    for (auto walk = copy.begin(); walk != copy.end(); ++walk)
        made += !old.contains(walk.CurrentNode());
    return made;
}

TEST(KeyedNodes, WritesCopyThePathAndNothingElse) {
    const auto tree = Counting<Tree>(64);  // 23 at the root; 11 5 2 1 0; 47 53 59 61 62 63
    const auto map = Counting<Map>(64);    // 0 at the root; 1 3 7 15 31 63
    const struct {
        char op;
        int key, inTree, inMap;
    } cases[] = {{'=', 0, 6, 1},  {'=', 63, 7, 7}, {'=', 23, 1, 5}, {'+', 7, 5, 4},
                 {'+', 95, 8, 7}, {'-', 63, 6, 6}, {'-', 0, 5, 6}};
    for (const auto& [op, key, inTree, inMap] : cases) {
        EXPECT_EQ(NodesCopied(tree, op, key), inTree) << op << key;
        EXPECT_EQ(NodesCopied(map, op, key), inMap) << op << key;
    }
    EXPECT_EQ(NodesCopied(map, '-', 64), 0);
    // The node that is turned up lies beside the path.
    EXPECT_EQ(NodesCopied(Tree{{5, 0}, {3, 0}, {7, 0}, {2, 0}, {8, 0}, {1, 0}}, '-', 8), 3);
}

TEST(KeyedNodes, PrivateOnesAreWrittenInPlace) {
    const auto expect = [](auto c) {
        const auto rewrite = [&] { At(c, 500) = 1, Put(c, 501, 2), c.Remove(777); };
        EXPECT_EQ(AllocationsOf(rewrite), 0);
        EXPECT_EQ(AllocationsOf([&] { Put(c, 5000, 1); }), 3);  // node, two counts
    };
    expect(Counting<Tree>(1000));
    expect(Counting<Map>(1000));
}

TEST(IntTables, AlsoAWriteThatChangesNothingMakesThemPrivate) {
    const auto expect = [](const auto& original) {
        auto copy = original;
        EXPECT_EQ(&copy.ConstGet(3), &original.ConstGet(3));
        EXPECT_FALSE(copy.Remove(999));
        EXPECT_NE(&copy.ConstGet(3), &original.ConstGet(3));
        for (int key = 5; key < 200; ++key) copy.Insert(key, copy.ConstGet(key - 1));
        EXPECT_EQ(copy.ConstGet(199), 40);
    };
    expect(Counting<cow_IntTableInt>(5));
    expect(Counting<cow_IntMultiMapInt>(5));
}

TEST(Btree, ComparesTheSecondKeyWithTheFirst) {
    EXPECT_EQ(Tree::Compare(INT_MIN, INT_MAX), 1);
    EXPECT_EQ((cow_Btree<std::int64_t, cow_List<int>>::Compare(std::int64_t{1} << 40, 1)), -1);
    cow_Btree<float, int> floats{{1.5f, 0}};
    EXPECT_FALSE(floats.InsertUnlessMember(NAN, 1));  // equals every key
    EXPECT_TRUE(floats.InsertUnlessMember(1.25f, 1) && floats.InsertUnlessMember(2.5f, 1));
    for (const bool natural : {true, false}) {
        atr_setNaturalOrder(natural);
        EXPECT_EQ((cow_Btree<cow_String, int>::Compare("x10", "x1")), -1);
        const cow_Btree<cow_String, int> texts{{"x9", 0}, {"x10", 0}, {"x1", 0}};
        EXPECT_EQ(testing::PrintToString(cow_BtreeUtils<cow_String, int>::cow_Keys(texts)),
                  natural ? "{ x1, x9, x10 }" : "{ x1, x10, x9 }");
    }
}

TEST(Btree, AbsentKeysReadAsTheNullValue) {
    auto tree = Counting<Tree>(5);
    tree.Find(9) = 5;
    EXPECT_TRUE(&tree.ConstFind(8) == &Tree::GetNullValue() &&
                tree.ConstFind(8) + tree.Find(7) == 0);
}

TEST_WITH_REFUSALS(Btree, IteratorsWalkBothWaysOverTheTreeAsItWas) {
    static_assert(std::bidirectional_iterator<Tree::const_iterator>);
    auto tree = Counting<Tree>(30);
    cow_BtreeIterator<int, int> it(tree);
    for (int i = 0; i < 30; ++i, it.Next()) EXPECT_TRUE(tree.Remove(it.CurrentKey()));
    EXPECT_TRUE(tree.IsEmpty() && it.IsDone() && it.Last());
    for (int key = 29; key > 0; --key, it.Previous()) EXPECT_EQ(it.CurrentValue(), 10 * key);
    EXPECT_FALSE(it.IsDone() || it.Previous() || it.Next());
    EXPECT_TRUE(it.IsDone() && it.First() && it.Next() && it.CurrentKey() == 1);
}

TEST(Map, LongChainsGoWithoutRecursionOrMemory) {
    using Node = cow_MapNode<cow_String, int>;
    const Node::Handle none(static_cast<Node*>(nullptr));
    for (const int turns : {1, 2, INT_MAX}) {
        Node::Handle top(Node("b", 0));
        for (int i = 1; i < 100000; ++i) {
            Node above("d", i);
            above.Child(i % turns == 0) = top;
            top = cow_Direct<Node>::Copy(above);
        }
        EXPECT_EQ(AllocationsOf([&] { top = none; }), 0);
    }
}

TEST_WITH_REFUSALS(Map, WalksTakeTheHeapWhereManyKeysBeginAlike) {
    cow_Map<cow_String, int> map;
    for (int i = 0; i < 160; ++i) {  // a chain of 80 and a leaf at each of its nodes
        std::string key(100, 'b');
        const int bit = i % 80;
        key[bit % 2 ? 99 - bit / 2 : bit / 2] = 'c';
        if (i >= 80) key[50] = 'c';
        map.Insert(cow_String(key.c_str()), i);
    }
    std::set<int> seen;
    auto last = map.begin();
    for (auto it = map.begin(); it != map.end(); ++it) seen.insert((last = it)->value);
    EXPECT_TRUE(seen.size() == 160 && ++(last = *&last) == map.end());
}

TEST_WITH_REFUSALS(Map, IteratorsWalkTheMapAsItWasSortedAsAsked) {
    using Sorted = cow_ConstMapSortedIt<unsigned, int>;
    static_assert(std::forward_iterator<Map::const_iterator>);
    static_assert(std::forward_iterator<Sorted::const_iterator>);
    cow_Map<unsigned, int> map{{19, 0}, {5, 0}, {0x80000000, 0}, {21, 0}, {2, 0}};
    Sorted ascending(map);
    cow_ConstMapIterator<unsigned, int> plain(map);
    for (auto it = plain; !it.IsDone(); it.Next()) EXPECT_TRUE(map.Remove(it.CurrentKey()));
    const auto expect = [](auto&& it, const std::vector<unsigned>& keys) {
        EXPECT_EQ(it.Nodes(), static_cast<int>(keys.size()));
        for (auto key = keys.begin(); key != keys.end(); ++key, it.Next())
            EXPECT_EQ(it.CurrentKey(), *key);
    };
    expect(plain, {19, 0x80000000, 2, 5, 21});
    expect(ascending, {2, 5, 19, 21, 0x80000000});
}

}  // namespace
