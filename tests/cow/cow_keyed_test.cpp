// The containers by value that map keys: trees, maps and the tables of integers.
#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_BtreeUtils.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <gtest/gtest.h>
#include <host/host_heap.h>
#include <support/expect_abort.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <set>
#include <sstream>

namespace {

using Tree = cow_Btree<int, int>;
using Map = cow_Map<int, int>;

template <class C>
constexpr bool kIsTree = requires {
    &C::InsertUnlessMember;
};
template <class C>
constexpr bool kIsMultiMap = requires {
    &C::InsertUnique;
};

template <class C>
auto& At(C& c, const auto& key) {
    if constexpr (kIsTree<C>)
        return c.Find(key);
    else
        return c.Get(key);
}

const int& ConstAt(const auto& c, int key) {
    if constexpr (requires { c.ConstFind(key); })
        return c.ConstFind(key);
    else
        return c.ConstGet(key);
}

// Insertion that tells whether the key is new. Trees keep the value of a key that is not.
template <class C>
bool Put(C& c, const auto& key, const auto& value) {
    if constexpr (kIsTree<C>) return c.InsertUnlessMember(key, value);
    const bool isNew = !c.IsMember(key);
    if constexpr (!kIsTree<C>) return (isNew || !kIsMultiMap<C>)&&c.Insert(key, value) && isNew;
}

// One write: '+' inserts, '-' removes, '=' sets the value of a member. False if there was nothing
// to insert, remove or set.
template <class C>
bool Apply(C& c, char op, const auto& key, const auto& value) {
    if (op == '+') return Put(c, key, value);
    if (op == '-') return c.Remove(key);
    if (!c.IsMember(key)) return false;
    At(c, key) = value;
    return true;
}
long AllocationsOf(const auto& operation) {
    host_heap::Watch();
    operation();
    const long requests = host_heap::g_probe.requests;
    host_heap::Unwatch();
    return requests;
}

template <class C>
C Counting(int n) {
    C c;
    for (int i = 0; i < n; ++i) Put(c, i, 10 * i);
    return c;
}

std::vector<int> Ints(const char* text) {
    std::istringstream in(text);
    return {std::istream_iterator<int>(in), std::istream_iterator<int>()};
}

TEST(KeyedOfInts, ArgumentsMayLieInTheContainer) {
    const auto expect = [](auto c) {
        const auto copy = c;
        for (const int key : {77, 78}) {  // shared, then private
            EXPECT_TRUE(Put(c, key, ConstAt(c, 49)));
            EXPECT_EQ(ConstAt(c, key), 490);
        }
        EXPECT_TRUE(c.Remove(ConstAt(c, 4)) && !c.IsMember(40) && copy.IsMember(40));
        if constexpr (requires { c.Root(); }) {
            Put(c, c.Root()->key, ConstAt(c, 49));
            while (!c.IsEmpty()) EXPECT_TRUE(c.Remove(c.Root()->key));
        }
    };
    expect(Counting<Tree>(50));
    expect(Counting<Map>(50));
    expect(Counting<cow_IntTableInt>(50));
    expect(Counting<cow_IntMultiMapInt>(50));
}

TEST(KeyedDeathTest, TheValueOfAnAbsentKeyEndsTheProcess) {
    const auto expect = [](auto container) {
        EXPECT_ABORT(container.ConstGet(7));
        for (const int key : {4, -3, INT_MIN}) EXPECT_ABORT(container.Get(key));
    };
    expect(Map());
    expect(Counting<Map>(3));
    expect(Counting<cow_IntTableInt>(3));
    expect(Counting<cow_IntMultiMapInt>(3));
}

// The key (in trees with the depth), then the subtrees, "." for a missing one beside a present one.
template <class Node>
std::string Shape(const Node* node) {
    if (!node) return ".";
    std::string text = std::to_string(node->key);
    const Node* children[2];
    if constexpr (requires { node->Depth(); }) {
        text += ":" + std::to_string(node->Depth());
        children[0] = node->Left(), children[1] = node->Right();
    } else {
        children[0] = node->Child0().GetPtr(), children[1] = node->Child1().GetPtr();
    }
    if (children[0] || children[1])
        text += "(" + Shape(children[0]) + " " + Shape(children[1]) + ")";
    return text;
}

struct ShapeCase {
    const char *inserted, *removed, *shape;
};
template <class C>
void ExpectShapes(std::initializer_list<ShapeCase> cases) {
    for (const auto& [inserted, removed, shape] : cases) {
        C c;
        for (const int key : Ints(inserted)) EXPECT_TRUE(Put(c, key, 0));
        for (const int key : Ints(removed)) EXPECT_TRUE(c.Remove(key));
        EXPECT_EQ(Shape(c.Root()), shape);
    }
}

TEST(Btree, RotatesOnceAndTreatsMissingChildrenAsLeaves) {
    ExpectShapes<Tree>({{"1 2 3", "", "1:2(. 2:1(. 3:0))"},
                        {"1 2 3 4", "", "2:2(1:0 3:1(. 4:0))"},
                        {"1 2 3 4 5", "", "3:2(2:1(1:0 .) 4:1(. 5:0))"},
                        {"4 3 2 1", "", "3:2(2:1(1:0 .) 4:0)"},
                        {"1 4 2 3", "", "4:3(1:2(. 2:1(. 3:0)) .)"},
                        {"2 1 3", "2", "3:1(1:0 .)"},
                        {"2 1 3", "3", "2:1(1:0 .)"},
                        {"2 1", "2", "1:0"},
                        {"1", "1", "."},
                        {"4 2 8 1 3 6 9 5 7", "4", "5:3(2:1(1:0 3:0) 8:2(6:1(. 7:0) 9:0))"},
                        {"4 2 8 1 3 6 9 5 7", "4 5", "6:2(2:1(1:0 3:0) 8:1(7:0 9:0))"},
                        {"5 3 7 2 8 1", "", "5:3(3:2(2:1(1:0 .) .) 7:1(. 8:0))"},
                        {"5 3 7 2 8 1", "8", "3:2(2:1(1:0 .) 5:1(. 7:0))"}});
    Tree fromBothEnds;
    for (int i = 0; i < 2500; ++i)
        for (const int key : {i, 4999 - i}) fromBothEnds.InsertUnlessMember(key, 0);
    EXPECT_EQ(fromBothEnds.Root()->Depth(), 15);
}

TEST(Map, BranchesByBitsAndPullsChainsUpOnRemoval) {
    ExpectShapes<Map>({{"0 1", "", "0(. 1)"},
                       {"0 1", "0", "1"},
                       {"0 1 2 3", "", "0(2 1(. 3))"},
                       {"0 1 2 3", "0", "1(2 3)"},
                       {"0 1 2 3", "0 1", "3(2 .)"},
                       {"0 1 2 3", "0 1 3", "2"},
                       {"0 1 2 3", "2", "0(. 1(. 3))"},
                       {"0 2 4 6", "", "0(2(4 6) .)"},
                       {"0 2 4 6", "0", "2(6(4 .) .)"},
                       {"7", "7", "."},
                       {"0 -1 -2147483648", "", "0(-2147483648 -1)"}});
    EXPECT_TRUE(cow_MapBit(5, 0) && !cow_MapBit(5, 1) && cow_MapBit(5u, 2));
    EXPECT_TRUE(cow_MapBit(-1, 31) && !cow_MapBit(INT_MIN, 30) && !cow_MapBit(-1, 32));
}

// How many nodes one write to a copy makes.
template <class C>
long NodesCopied(const C& original, char op, int key) {
    std::set<const void*> old;
    for (auto walk = original.begin(); walk != original.end(); ++walk)
        old.insert(walk.CurrentNode());
    C copy = original;
    Apply(copy, op, key, 1);
    for (auto walk = copy.begin(); walk != copy.end(); ++walk) old.insert(walk.CurrentNode());
    return static_cast<long>(old.size()) - std::distance(original.begin(), original.end());
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

TEST(KeyedNodes, PrivateOnesAreReadAndWrittenInPlace) {
    const auto expect = [](auto c) {
        EXPECT_EQ(AllocationsOf([&] {
                      At(c, 500) = 1;
                      Put(c, 501, 2);
                      c.Remove(777);
                      const auto copy = c;
                      EXPECT_EQ(ConstAt(copy, 500), 1);
                      EXPECT_EQ(std::distance(copy.begin(), copy.end()), 999);
                  }),
                  0);
        EXPECT_EQ(AllocationsOf([&] { Put(c, 5000, 1); }), 3);  // node, two counts
    };
    expect(Counting<Tree>(1000));
    expect(Counting<Map>(1000));
}

TEST(IntTables, AlsoAWriteThatChangesNothingMakesThemPrivate) {
    const auto expect = [](const auto& original, auto write) {
        std::remove_cvref_t<decltype(original)> copy;
        EXPECT_EQ(AllocationsOf([&] { copy = original; }), 0);
        EXPECT_EQ(&copy.ConstGet(3), &original.ConstGet(3));
        EXPECT_FALSE(write(copy));
        EXPECT_NE(&copy.ConstGet(3), &original.ConstGet(3));
        EXPECT_TRUE(copy == original);
        copy.Clear();
        EXPECT_TRUE(copy.IsEmpty() && original.Size() == 5 && !(copy == original));
    };
    const auto table = Counting<cow_IntTableInt>(5);
    expect(table, [](auto& t) { return t.Remove(999); });
    expect(table, [](auto& t) { return t.Insert(3, 30); });
    const auto map = Counting<cow_IntMultiMapInt>(5);
    expect(map, [](auto& m) { return m.Remove(999); });
    expect(map, [](auto& m) { return m.InsertUnique(3, 30); });
}

TEST(Btree, ComparesTheSecondKeyWithTheFirst) {
    EXPECT_EQ(Tree::Compare(INT_MIN, INT_MAX), 1);
    EXPECT_EQ((cow_Btree<std::int64_t, cow_List<int>>::Compare(std::int64_t{1} << 40, 1)), -1);
    EXPECT_EQ((cow_Btree<cow_String, int>::Compare("a", "b")), 1);
    cow_Btree<float, int> floats{{1.5f, 0}};
    EXPECT_FALSE(floats.InsertUnlessMember(NAN, 1));  // equals every key
    EXPECT_TRUE(floats.InsertUnlessMember(1.25f, 1));
    for (const bool natural : {false, true}) {
        atr_setNaturalOrder(natural);
        const cow_Btree<cow_String, int> texts{{"x9", 0}, {"x10", 0}, {"x1", 0}};
        const auto keys = cow_BtreeUtils<cow_String, int>::cow_Keys(texts);
        EXPECT_TRUE(keys.Length() == 3 && keys.ConstGet(1) == (natural ? "x9" : "x10"));
        atr_setNaturalOrder(0);
    }
}

TEST(Btree, AbsentKeysReadAsTheNullValue) {
    auto tree = Counting<Tree>(5);
    tree.Find(9) = 5;
    EXPECT_EQ(tree.ConstFind(8) + tree.Find(7), 0);
    EXPECT_EQ(&tree.ConstFind(8), &Tree::GetNullValue());
    cow_ReleaseNullValues();
    EXPECT_EQ(tree.ConstFind(8) + tree.Find(8), 0);
}

TEST(Btree, IteratorsWalkBothWaysOverTheTreeAsItWas) {
    static_assert(std::bidirectional_iterator<Tree::const_iterator>);
    auto tree = Counting<Tree>(30);
    cow_BtreeIterator<int, int> it(tree);
    for (int i = 0; i < 30; ++i, it.Next()) EXPECT_TRUE(tree.Remove(it.CurrentKey()));
    EXPECT_TRUE(tree.IsEmpty() && it.IsDone() && it.Last());
    for (int key = 29; key > 0; --key, it.Previous()) EXPECT_EQ(it.CurrentValue(), 10 * key);
    EXPECT_FALSE(it.IsDone() || it.Previous() || it.Next());
    EXPECT_TRUE(it.IsDone() && it.First() && it.Next());
    const auto copy = it;
    EXPECT_EQ(copy.CurrentKey(), 1);
    EXPECT_FALSE((cow_BtreeIterator<int, int>(tree).First()));
    const std::map<int, int> pairs{{3, 4}, {1, 2}};
    const Tree two(pairs.begin(), pairs.end());
    EXPECT_TRUE(two == (Tree{{3, 4}, {1, 2}}) && !(two == Tree{{1, 2}}));
    EXPECT_EQ(std::prev(two.end())->key, 3);
}

TEST(Map, LongChainsGoWithoutRecursionOrMemory) {
    using Node = cow_MapNode<cow_String, int>;
    Node::Handle top(Node("b", 0));
    for (int i = 1; i < 100000; ++i) {
        Node above("d", i);
        above.Child(i % 2 != 0) = top;
        top = cow_Direct<Node>::Copy(above);
    }
    const Node::Handle none(static_cast<Node*>(nullptr));
    EXPECT_EQ(AllocationsOf([&] { top = none; }), 0);
}

int ByLastDigit(const void* a, const void* b) {
    using Node = cow_MapNode<int, int>;
    return (*static_cast<const Node* const*>(a))->key % 10 -
           (*static_cast<const Node* const*>(b))->key % 10;
}

TEST(Map, IteratorsWalkTheMapAsItWasSortedAsAsked) {
    static_assert(std::forward_iterator<Map::const_iterator>);
    using Sorted = cow_ConstMapSortedIt<int, int>;
    static_assert(std::forward_iterator<Sorted::const_iterator>);
    const auto keys = [](auto&& it) {
        std::string text;
        for (; !it.IsDone(); it.Next()) text += testing::PrintToString(it.CurrentKey()) + " ";
        return text + std::to_string(it.Nodes());
    };
    Map map{{1, 0}, {-1, 0}, {0, 0}, {INT_MIN, 0}, {INT_MAX, 0}};
    Sorted ascending(map), descending(map, Sorted::DescSortCmp);
    cow_ConstMapIterator<int, int> plain(map);
    for (; !plain.IsDone(); plain.Next()) EXPECT_TRUE(map.Remove(plain.CurrentKey()));
    EXPECT_EQ(keys(ascending), "-2147483648 -1 0 1 2147483647 5");
    EXPECT_EQ(keys(descending), "2147483647 1 0 -1 -2147483648 5");
    plain.First();
    EXPECT_EQ(keys(plain), "1 0 -2147483648 -1 2147483647 5");
    EXPECT_EQ(keys(Sorted(map)), "0");
    EXPECT_EQ(keys(Sorted(Map{{19, 0}, {21, 0}, {5, 0}}, ByLastDigit)), "21 5 19 3");
    const cow_Map<unsigned, int> large{{0x80000000, 0}, {1, 0}};
    EXPECT_EQ(keys(cow_ConstMapSortedIt<unsigned, int>(large)), "1 2147483648 2");
    const cow_Map<cow_String, int> texts{{"x9", 0}, {"x10", 0}, {"\xff", 0}};
    EXPECT_EQ((cow_ConstMapSortedIt<cow_String, int>(texts).CurrentKey()), cow_String("x10"));
    EXPECT_FALSE((Map{{1, 2}}) == (Map{{1, 3}}) || (Map{{1, 2}}) == (Map{{2, 2}}));
}

}  // namespace
