#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_BtreeUtils.h>
#include <support/boxed.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "keyed_model.h"

namespace {

using Tree = cow_Btree<int, int>;

// Key:depth, then the subtrees, "." for a missing one beside a present one.
template <class Node>
std::string Shape(const Node* node) {
    if (!node) return ".";
    std::string text = std::to_string(node->key) + ":" + std::to_string(node->Depth());
    if (node->Left() || node->Right())
        text += "(" + Shape(node->Left()) + " " + Shape(node->Right()) + ")";
    return text;
}

template <class K>
cow_Btree<K, int> TreeOf(std::initializer_list<K> keys) {
    cow_Btree<K, int> tree;
    for (const K& key : keys) tree.InsertUnlessMember(key, 0);
    return tree;
}
Tree Counting(int n) {
    Tree tree;
    for (int i = 0; i < n; ++i) tree.InsertUnlessMember(i, 10 * i);
    return tree;
}

// Depths are right, keys ascend.
template <class Node>
void ExpectSound(const Node* node) {
    if (!node) return;
    const int left = node->Left() ? node->Left()->Depth() : -1;
    const int right = node->Right() ? node->Right()->Depth() : -1;
    EXPECT_EQ(node->Depth(), 1 + std::max(left, right));
    EXPECT_TRUE(!node->Left() || Node::Compare(node->key, node->Left()->key) < 0);
    EXPECT_TRUE(!node->Right() || Node::Compare(node->key, node->Right()->key) > 0);
    ExpectSound(node->Left());
    ExpectSound(node->Right());
}

TEST(Btree, ComparesTheSecondKeyWithTheFirst) {
    EXPECT_EQ(Tree::Compare(INT_MIN, INT_MAX), 1);
    EXPECT_EQ((cow_Btree<std::int64_t, cow_List<int>>::Compare(std::int64_t{1} << 40, 1)), -1);
    EXPECT_EQ((cow_Btree<cow_String, int>::Compare("a", "b")), 1);
    cow_Btree<float, int> floats = TreeOf<float>({1.5f});
    EXPECT_FALSE(floats.InsertUnlessMember(NAN, 1));  // equals every key
    EXPECT_TRUE(floats.InsertUnlessMember(1.25f, 1));
}

TEST(Btree, RotatesOnceAndTreatsMissingChildrenAsLeaves) {
    const struct {
        std::vector<int> inserted, removed;
        const char* shape;
    } cases[] = {
        {{1, 2, 3}, {}, "1:2(. 2:1(. 3:0))"},
        {{1, 2, 3, 4}, {}, "2:2(1:0 3:1(. 4:0))"},
        {{1, 2, 3, 4, 5}, {}, "3:2(2:1(1:0 .) 4:1(. 5:0))"},
        {{4, 3, 2, 1}, {}, "3:2(2:1(1:0 .) 4:0)"},
        {{1, 4, 2, 3}, {}, "4:3(1:2(. 2:1(. 3:0)) .)"},
        {{2, 1, 3}, {2}, "3:1(1:0 .)"},
        {{2, 1, 3}, {3}, "2:1(1:0 .)"},
        {{2, 1}, {2}, "1:0"},
        {{1}, {1}, "."},
        {{4, 2, 8, 1, 3, 6, 9, 5, 7}, {4}, "5:3(2:1(1:0 3:0) 8:2(6:1(. 7:0) 9:0))"},
        {{4, 2, 8, 1, 3, 6, 9, 5, 7}, {4, 5}, "6:2(2:1(1:0 3:0) 8:1(7:0 9:0))"},
        {{5, 3, 7, 2, 8, 1}, {8}, "3:2(2:1(1:0 .) 5:1(. 7:0))"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.shape);
        Tree tree;
        for (int key : each.inserted) tree.InsertUnlessMember(key, 0);
        for (int key : each.removed) EXPECT_TRUE(tree.Remove(key));
        EXPECT_EQ(Shape(tree.Root()), each.shape);
    }
    Tree fromBothEnds;
    for (int i = 0; i < 2500; ++i)
        for (int key : {i, 4999 - i}) fromBothEnds.InsertUnlessMember(key, 0);
    EXPECT_EQ(fromBothEnds.Root()->Depth(), 15);
}

TEST(Btree, AbsentKeysReadAsTheNullValue) {
    Tree tree = Counting(5);
    tree.Find(9) = 5;
    EXPECT_EQ(tree.ConstFind(8), 0);
    EXPECT_EQ(tree.Find(7), 0);
    EXPECT_EQ(&tree.ConstFind(8), &Tree::GetNullValue());
    EXPECT_EQ((cow_Btree<cow_String, cow_List<int>>().ConstFind("x").Length()), 0);
    cow_ReleaseNullValues();
    EXPECT_EQ(tree.ConstFind(8) + tree.Find(8), 0);
}

int NodesOnTheWay(const Tree& tree, int key) {
    int nodes = 0;
    for (auto node = tree.Root(); node; node = node->key < key ? node->Right() : node->Left())
        if (++nodes; node->key == key) break;
    return nodes;
}

TEST(Btree, WritesCopyThePathAndNothingElse) {
    const Tree original = Counting(100);
    const auto copies = [&](auto write) {
        Tree tree = original;
        write(tree);
        return NewNodes(original, tree);
    };
    for (const int key : {-1, 0, 39, original.Root()->key, 100}) {
        SCOPED_TRACE(key);
        const int way = NodesOnTheWay(original, key);
        const bool absent = !original.IsMember(key);
        EXPECT_EQ(copies([&](Tree& t) { t.ConstFind(key); }), 0);
        EXPECT_EQ(copies([&](Tree& t) { t.Find(key) = 1; }), way);
        EXPECT_EQ(copies([&](Tree& t) { t.InsertUnlessMember(key, 1); }), way + absent);
    }
    EXPECT_EQ(copies([](Tree& t) { t.Remove(0); }), NodesOnTheWay(original, 0) - 1);
    EXPECT_EQ(original, Counting(100));
}

TEST(Btree, TurningUpANodeBesideThePathCopiesIt) {
    const Tree original = TreeOf({5, 3, 7, 2, 8, 1});
    Tree tree = original;
    tree.Remove(8);  // turns 3 up
    EXPECT_EQ(NewNodes(original, tree), 3);
    EXPECT_EQ(Shape(original.Root()), "5:3(3:2(2:1(1:0 .) .) 7:1(. 8:0))");
}

TEST(Btree, PrivateTreesAreReadAndWrittenInPlace) {
    Tree tree = Counting(1000);
    EXPECT_EQ(AllocationsOf([&] {
                  tree.Find(500) = 1;
                  tree.InsertUnlessMember(500, 2);
                  Tree copy(tree);
                  EXPECT_EQ(copy.ConstFind(500), 1);
                  int sum = 0;
                  for (const auto& [key, value] : copy) sum += value;
                  EXPECT_NE(sum, 0);
              }),
              0);
    EXPECT_EQ(AllocationsOf([&] { tree.Remove(777); }), 0);
}

TEST(Btree, ArgumentsMayLieInTheTree) {
    Tree tree = Counting(50);
    while (!tree.IsEmpty()) tree.Remove(tree.Root()->key);
    tree = Counting(50);
    cow_BtreeIterator<int, int> it(tree);
    for (int i = 0; i < 50; ++i, it.Next()) EXPECT_TRUE(tree.Remove(it.CurrentKey()));
    EXPECT_TRUE(tree.IsEmpty() && it.IsDone());
    cow_Btree<cow_String, Tree> nested{{"a", Counting(3)}};
    nested.InsertUnlessMember("b", nested.ConstFind("a"));
    EXPECT_EQ(nested.ConstFind("b"), Counting(3));
}

TEST(BtreeIterator, WalksBothWaysOverTheTreeAsItWas) {
    Tree tree = Counting(30);
    cow_BtreeIterator<int, int> it(tree);
    tree.Find(0) = 77;
    tree.Remove(29);
    EXPECT_EQ(it.CurrentValue(), 0);
    EXPECT_TRUE(it.Last());
    EXPECT_EQ(it.CurrentKey(), 29);
    int steps = 0;
    while (it.Previous()) ++steps;
    EXPECT_EQ(steps, 29);
    EXPECT_TRUE(it.IsDone());
    EXPECT_FALSE(it.Next() || it.Previous());
    EXPECT_TRUE(it.First() && it.Next());
    const cow_BtreeIterator<int, int> copy = it;
    EXPECT_EQ(copy.CurrentKey(), 1);
    const Tree empty;
    EXPECT_FALSE((cow_BtreeIterator<int, int>(empty).First()));
}

TEST(BtreeIterator, StandardAlgorithmsWorkOnConstTrees) {
    static_assert(std::bidirectional_iterator<Tree::const_iterator>);
    const Tree tree = Counting(100);
    const auto found = std::find_if(tree.begin(), tree.end(), [](auto& e) { return e.key == 42; });
    EXPECT_EQ(found->value, 420);
    EXPECT_EQ(std::prev(tree.end())->key, 99);
    EXPECT_TRUE(std::is_sorted(std::make_reverse_iterator(tree.end()),
                               std::make_reverse_iterator(tree.begin()),
                               [](auto& a, auto& b) { return a.key > b.key; }));
    const std::map<int, int> pairs{{3, 4}, {1, 2}};
    EXPECT_EQ(Tree(pairs.begin(), pairs.end()), (Tree{{1, 2}, {3, 4}}));
    EXPECT_FALSE(tree == Counting(99));
}

TEST(BtreeIterator, TextKeysFollowTheOrderInForce) {
    for (const bool natural : {false, true}) {
        atr_setNaturalOrder(natural);
        const auto keys =
            cow_BtreeUtils<cow_String, int>::cow_Keys(TreeOf<cow_String>({"x9", "x10", "x1"}));
        EXPECT_EQ(keys.Length(), 3);
        EXPECT_EQ(keys.ConstGet(1), cow_String(natural ? "x9" : "x10"));
        atr_setNaturalOrder(0);
    }
}

template <class C>
void EditTree(C& tree, ModelOf<C>& model, const typename C::key_type& key,
              const typename C::mapped_type& value, Random& rng) {
    if (rng.OneIn(2)) {
        EXPECT_EQ(tree.InsertUnlessMember(key, value), model.emplace(key, value).second);
    } else if (rng.OneIn(2)) {
        EXPECT_EQ(tree.Remove(key), model.erase(key) != 0);
    } else if (const auto found = model.find(key); found != model.end()) {
        tree.Find(key) = value;
        found->second = value;
    } else {
        EXPECT_FALSE(tree.IsMember(key));
    }
}

TEST(BtreeModel, CopiesStayIndependentUnderRandomEdits) {
    ExpectCopiesToStayIndependent<Tree>(20000, 400, EditTree<Tree>,
                                        [](const Tree& tree) { ExpectSound(tree.Root()); });
    host_heap::Watch();
    using BoxedTree = cow_Btree<cow_String, Boxed>;
    ExpectCopiesToStayIndependent<BoxedTree>(
        5000, 60, EditTree<BoxedTree>, [](const BoxedTree& tree) { ExpectSound(tree.Root()); });
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

TEST(BtreeMemoryFailure, LeavesEntriesAsBeforeOrAfter) {
    using T = cow_Btree<int, Boxed>;
    T().ConstFind(0);  // makes the null value, which stays
    ExpectWritesToSurviveExhaustion<T>(
        {{"rotate the root", {1, 2, 3}, [](T& t) { t.InsertUnlessMember(4, 9); }},
         {"insert into nothing", {}, [](T& t) { t.InsertUnlessMember(4, 9); }},
         {"find", {4, 2, 8, 1, 3, 6, 9}, [](T& t) { t.Find(1) = 9; }},
         {"copy beside the path", {5, 3, 7, 2, 8, 1}, [](T& t) { t.Remove(8); }},
         {"rotate inside", {8, 4, 9, 2, 5, 10, 1}, [](T& t) { t.Remove(5); }},
         {"remove the root", {4, 2, 8, 1, 3, 6, 9, 5, 7}, [](T& t) { t.Remove(4); }},
         {"remove the last", {1}, [](T& t) { t.Remove(1); }}},
        true, [](const T& t) { ExpectSound(t.Root()); });
}

template <class K, class V>
void Exercise() {
    using T = cow_Btree<K, V>;
    T tree;
    for (int n = 0; n < 9; ++n) tree.InsertUnlessMember(NthKey<K>(n), V());
    T copy = tree;
    copy.Find(NthKey<K>(4)) = V();
    EXPECT_TRUE(copy.Remove(NthKey<K>(5)));
    EXPECT_EQ((cow_BtreeUtils<K, V>::cow_Keys(tree).Length()), 9);
    EXPECT_EQ((cow_BtreeUtils<K, V>::cow_Values(copy).Length()), 8);
    EXPECT_TRUE((cow_BtreeIterator<K, V>(tree).Last()));
    EXPECT_EQ(&copy.ConstFind(NthKey<K>(5)), &T::GetNullValue());
    EXPECT_FALSE(tree == copy);
}
#define EXERCISE(...) Exercise<__VA_ARGS__>();

TEST(Btree, EveryListedInstanceIsInTheLibrary) {
    COW_BTREES_1(EXERCISE)
    COW_BTREES_2(EXERCISE)
}

}  // namespace
