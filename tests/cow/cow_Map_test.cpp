#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <cow/cow_MapUtils.h>
#include <support/boxed.h>
#include <support/expect_abort.h>

#include <algorithm>
#include <climits>
#include <set>

#include "keyed_model.h"

namespace {

using Map = cow_Map<int, int>;

// The key, then the subtrees, "." for a missing one beside a present one.
template <class Node>
std::string Shape(const Node* node) {
    if (!node) return ".";
    const Node* const child0 = node->Child0().GetPtr();
    const Node* const child1 = node->Child1().GetPtr();
    std::string text = std::to_string(node->key);
    if (child0 || child1) text += "(" + Shape(child0) + " " + Shape(child1) + ")";
    return text;
}

Map Counting(int n) {
    Map map;
    for (int i = 0; i < n; ++i) map.Insert(i, 10 * i);
    return map;
}
cow_String ChainKey(int n) {  // all bits 0: a map of such keys is one chain
    cow_String key;
    for (; n > 0; n /= 8) key.Append(cow_String(&"bdfhjlnp"[n % 8], 1));
    return key;
}

TEST(MapBit, IsTheBitOfTheKeyAndFalseBeyond) {
    EXPECT_TRUE(cow_MapBit(5, 0) && !cow_MapBit(5, 1) && cow_MapBit(5u, 2));
    EXPECT_TRUE(cow_MapBit(-1, 31) && cow_MapBit(INT_MIN, 31) && !cow_MapBit(INT_MIN, 30));
    EXPECT_FALSE(cow_MapBit(-1, 32) || cow_MapBit(~0u, 1000));
}

TEST(Map, BranchesByBitsAndPullsChainsUpOnRemoval) {
    const struct {
        std::vector<int> inserted, removed;
        const char* shape;
    } cases[] = {
        {{0, 1}, {}, "0(. 1)"},
        {{0, 1}, {0}, "1"},
        {{0, 1, 2, 3}, {}, "0(2 1(. 3))"},
        {{0, 1, 2, 3}, {0}, "1(2 3)"},
        {{0, 1, 2, 3}, {0, 1}, "3(2 .)"},
        {{0, 1, 2, 3}, {0, 1, 3}, "2"},
        {{0, 1, 2, 3}, {2}, "0(. 1(. 3))"},
        {{0, 2, 4, 6}, {}, "0(2(4 6) .)"},
        {{0, 2, 4, 6}, {0}, "2(6(4 .) .)"},
        {{7}, {7}, "."},
        {{0, -1, INT_MIN}, {}, "0(-2147483648 -1)"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.shape);
        Map map;
        for (int key : each.inserted) EXPECT_TRUE(map.Insert(key, 1));
        for (int key : each.removed) EXPECT_TRUE(map.Remove(key));
        EXPECT_EQ(Shape(map.Root()), each.shape);
        EXPECT_EQ(map.Size(), static_cast<int>(each.inserted.size() - each.removed.size()));
    }
}

TEST(MapDeathTest, TheValueOfAnAbsentKeyEndsTheProcess) {
    Map map = Counting(3);
    EXPECT_ABORT(map.ConstGet(7));
    EXPECT_ABORT(map.Get(7));
    EXPECT_ABORT(Map().Get(0));
}

TEST(Map, WritesCopyThePathAndNothingElse) {
    const Map original = Counting(64);  // 0 at the root, 1 -> 3 -> 7 -> 15 -> 31 -> 63
    const auto copies = [&](auto write) {
        Map map = original;
        write(map);
        return NewNodes(original, map);
    };
    EXPECT_EQ(copies([](Map& m) { m.ConstGet(63); }), 0);
    EXPECT_EQ(copies([](Map& m) { m.Get(0) = 1; }), 1);
    EXPECT_EQ(copies([](Map& m) { m.Get(63) = 1; }), 7);
    EXPECT_EQ(copies([](Map& m) { m.Insert(7, 1); }), 4);
    EXPECT_EQ(copies([](Map& m) { m.Insert(95, 1); }), 7);  // becomes a child of 31
    EXPECT_EQ(copies([](Map& m) { m.Remove(63); }), 6);
    EXPECT_EQ(copies([](Map& m) { m.Remove(0); }), 6);
    EXPECT_EQ(copies([](Map& m) { m.Remove(64); }), 0);
    EXPECT_EQ(original, Counting(64));
}

TEST(Map, PrivateMapsAreReadAndWrittenInPlace) {
    Map map = Counting(1000);
    EXPECT_EQ(AllocationsOf([&] {
                  map.Get(500) = 1;
                  map.Insert(501, 2);
                  map.Remove(0);
                  const Map copy(map);
                  int sum = 0;
                  for (const auto& [key, value] : copy) sum += value;
                  EXPECT_NE(sum, 0);
              }),
              0);
    EXPECT_EQ(AllocationsOf([&] { map.Insert(5000, 1); }), 3);  // node, two counts
}

TEST(Map, ArgumentsMayLieInTheMap) {
    Map map = Counting(50);
    while (!map.IsEmpty()) map.Remove(map.Root()->key);
    map = Counting(50);
    map.Insert(77, map.ConstGet(49));
    map.Insert(map.Root()->key, map.ConstGet(49));
    EXPECT_EQ(map.ConstGet(77) + map.ConstGet(0), 980);
    for (cow_ConstMapIterator<int, int> it(map); !it.IsDone(); it.Next())
        EXPECT_TRUE(map.Remove(it.CurrentKey()));
    EXPECT_TRUE(map.IsEmpty());
    cow_Map<int, Map> nested;
    nested.Insert(1, Counting(3));
    Map inner = nested.ConstGet(1);
    cow_Map<int, cow_Map<int, Map>> outer;
    outer.Insert(1, nested);
    outer.Get(1) = outer.ConstGet(1);
    EXPECT_EQ(outer.ConstGet(1).ConstGet(1), inner);
}

TEST(Map, LongChainsOfTextKeysGoWithoutRecursionOrMemory) {
    using Node = cow_MapNode<cow_String, int>;
    // Inserting such keys one after the other takes O(n^2); here they are put above one another.
    Node::Handle top(Node("b", 0));
    for (int i = 1; i < 100000; ++i) {
        Node above("d", i);
        above.Child(i % 2 != 0) = top;
        top = cow_Direct<Node>::Copy(above);
    }
    const Node::Handle none(static_cast<Node*>(nullptr));
    EXPECT_EQ(AllocationsOf([&] { top = none; }), 0);
    cow_Map<cow_String, int> chain;
    for (int i = 1; i < 3000; ++i) chain.Insert(ChainKey(i), i);
    const auto copy = chain;
    chain.Remove(ChainKey(1));
    EXPECT_EQ(chain.Size(), 2998);
    EXPECT_EQ(copy.ConstGet(ChainKey(2999)), 2999);
}

TEST(MapIterator, GoesOnOverTheMapAsItWas) {
    Map map = Counting(4);
    cow_ConstMapIterator<int, int> it(map);
    cow_ConstMapSortedIt<int, int> sorted(map, cow_ConstMapSortedIt<int, int>::DescSortCmp);
    map.Get(0) = 5;
    map.Remove(3);
    std::vector<int> keys;
    for (; !it.IsDone(); it.Next()) keys.push_back(it.CurrentKey());
    EXPECT_EQ(keys, (std::vector<int>{0, 2, 1, 3}));
    EXPECT_EQ(it.Nodes(), 4);
    it.First();
    EXPECT_EQ(it.CurrentValue(), 0);
    EXPECT_EQ(sorted.CurrentValue(), 30);
    EXPECT_EQ(sorted.Nodes(), 4);
}

int ByLastDigit(const void* a, const void* b) {
    using Node = cow_MapNode<int, int>;
    return (*static_cast<const Node* const*>(a))->key % 10 -
           (*static_cast<const Node* const*>(b))->key % 10;
}

TEST(MapIterator, SortsKeysAsWhatTheyAre) {
    const auto keys = [](const auto& sorted) {
        std::string text;
        for (const auto& entry : sorted) text += testing::PrintToString(entry.key) + " ";
        return text;
    };
    using Sorted = cow_ConstMapSortedIt<int, int>;
    const Map map{{1, 0}, {-1, 0}, {0, 0}, {INT_MIN, 0}, {INT_MAX, 0}};
    EXPECT_EQ(keys(Sorted(map)), "-2147483648 -1 0 1 2147483647 ");
    EXPECT_EQ(keys(Sorted(map, Sorted::DescSortCmp)), "2147483647 1 0 -1 -2147483648 ");
    EXPECT_EQ(keys(Sorted(Map{{19, 0}, {21, 0}, {5, 0}}, ByLastDigit)), "21 5 19 ");
    const cow_Map<unsigned, int> large{{0x80000000, 0}, {1, 0}};
    EXPECT_EQ(keys(cow_ConstMapSortedIt<unsigned, int>(large)), "1 2147483648 ");
    const cow_Map<cow_String, int> texts{{"x9", 0}, {"x10", 0}, {"\xff", 0}};
    const cow_ConstMapSortedIt<cow_String, int> sorted(texts);
    EXPECT_EQ(sorted.CurrentKey(), cow_String("x10"));
    const Map empty;
    EXPECT_TRUE(Sorted(empty).IsDone());
}

TEST(MapIterator, StandardAlgorithmsWorkOnConstMaps) {
    static_assert(std::forward_iterator<Map::const_iterator>);
    const Map map = Counting(100);
    EXPECT_EQ(std::count_if(map.begin(), map.end(), [](auto& e) { return e.value < 500; }), 50);
    const std::map<int, int> pairs{{3, 4}, {1, 2}};
    EXPECT_EQ(Map(pairs.begin(), pairs.end()), (Map{{1, 2}, {3, 4}}));
    EXPECT_FALSE((Map{{1, 2}}) == (Map{{1, 3}}));
    EXPECT_FALSE((Map{{1, 2}}) == (Map{{2, 2}}));
}

template <class C>
void EditMap(C& map, ModelOf<C>& model, const typename C::key_type& key,
             const typename C::mapped_type& value, Random& rng) {
    if (rng.OneIn(2)) {
        EXPECT_EQ(map.Remove(key), model.erase(key) != 0);
    } else if (rng.OneIn(2) && map.IsMember(key)) {
        map.Get(key) = value;
        model.at(key) = value;
    } else {
        EXPECT_TRUE(map.Insert(key, value));
        model.insert_or_assign(key, value);
    }
    EXPECT_EQ(map.Size(), static_cast<int>(model.size()));
}

TEST(MapModel, CopiesStayIndependentUnderRandomEdits) {
    const auto check = [](const auto&) {};
    ExpectCopiesToStayIndependent<Map>(20000, 400, EditMap<Map>, check);
    host_heap::Watch();
    using BoxedMap = cow_Map<cow_String, Boxed>;
    ExpectCopiesToStayIndependent<BoxedMap>(5000, 60, EditMap<BoxedMap>, check);
    EXPECT_EQ(host_heap::g_probe.live, 0);
    host_heap::Unwatch();
}

// With values whose assignment never throws, and with others.
template <class V>
void ExhaustWrites() {
    using M = cow_Map<int, V>;
    ExpectWritesToSurviveExhaustion<M>(
        {{"insert", {0, 1, 2, 3}, [](M& m) { m.Insert(7, 9); }},
         {"insert into nothing", {}, [](M& m) { m.Insert(4, 9); }},
         {"overwrite", {0, 1, 2, 3}, [](M& m) { m.Insert(3, 9); }},
         {"get", {0, 1, 2, 3}, [](M& m) { m.Get(3) = 9; }},
         {"remove a leaf", {0, 1, 2, 3}, [](M& m) { m.Remove(3); }},
         {"remove with a chain", {0, 1, 2, 3, 4, 5, 6, 7}, [](M& m) { m.Remove(0); }},
         {"remove the last", {4}, [](M& m) { m.Remove(4); }}},
        false, [](const M& m) { EXPECT_EQ(m.Size(), std::distance(m.begin(), m.end())); });
}
TEST(MapMemoryFailure, LeavesEntriesAsTheyWere) {
    ExhaustWrites<int>();
    ExhaustWrites<Boxed>();
}

template <class K, class V>
void Exercise() {
    cow_Map<K, V> map;
    for (int n = 0; n < 9; ++n) EXPECT_TRUE(map.Insert(NthKey<K>(n), V()));
    cow_Map<K, V> copy = map;
    copy.Get(NthKey<K>(4)) = map.ConstGet(NthKey<K>(3));
    EXPECT_TRUE(copy.Remove(NthKey<K>(0)));
    EXPECT_EQ((copy.Size() + cow_MapUtils<K, V>::cow_Keys(map).Length()), 17);
    EXPECT_EQ((cow_MapUtils<K, V>::cow_Values(map).Length()), 9);
    EXPECT_EQ((cow_ConstMapIterator<K, V>(map).Nodes()), 9);
    EXPECT_EQ((cow_ConstMapSortedIt<K, V>(map).CurrentKey()), NthKey<K>(0));
    EXPECT_FALSE(map == copy);
}
#define EXERCISE(...) Exercise<__VA_ARGS__>();

TEST(Map, EveryListedInstanceIsInTheLibrary) {
    COW_MAPS_1(EXERCISE)
    COW_MAPS_2(EXERCISE)
}

}  // namespace
