// The examples of docs/sets.md, docs/multimap.md and docs/tables.md, word for word.
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <gtest/gtest.h>
#include <omi/HashTable.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>

#include <vector>

namespace {

TEST(Examples, Sets) {
    const int corners[] = {3, -1, -4, 0};
    omi_Set fixed(corners, 4);
    omi_SparseSet loaded;
    for (const int node : {5, 2, 2000000000, 5}) loaded.Insert(node);  // repeats are accepted

    omi_Set both(loaded.begin(), loaded.end());
    both += fixed;
    std::vector<int> order(both.begin(), both.end());  // -1, -4, 0, 2, 3, 5, 2000000000

    omi_GeneratedSet every(10, 1, -3);                     // 10, 7, 4, 1
    every.Insert(100, 200, 50);                            // 100, 150, 200
    const omi_BlkBitVect cutOff = every.Trim(0, 160, 10);  // 200; the range ends at 160 now

    EXPECT_EQ(order, (std::vector<int>{-1, -4, 0, 2, 3, 5, 2000000000}));
    EXPECT_EQ(std::vector<int>(every.begin(), every.end()),
              (std::vector<int>{10, 7, 4, 1, 100, 150}));
    EXPECT_TRUE(cutOff.Size() == 1 && cutOff.IsSet(200));
}

TEST(Examples, MultiMap) {
    using Adjacency = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
    Adjacency elements;
    const int corners[2][3] = {{1, 2, 3}, {2, 3, 2000000000}};
    for (int element = 0; element < 2; ++element)
        for (const int node : corners[element]) elements.Insert(node, element);

    int shared = 0;  // elements at node 2, newest first
    for (const auto* link = elements.GetFirst(2); link; link = link->next) ++shared;
    for (const auto& [node, element] : elements) {
        if (node > 3) shared += element;  // pairs in key order
    }
    elements.Remove(2, 0);  // the pair
    elements.Remove(3);     // the key with all its values

    EXPECT_EQ(shared, 3);
    EXPECT_EQ(elements.Size(), 3);
}

TEST(Examples, HashTable) {
    double load[3] = {1, 2, 3};
    HashTable<void*, unsigned> index(16);
    for (unsigned i = 0; i < 3; ++i) index.Insert(&load[i], i);
    unsigned position = 99;
    const bool found = index.LookUp(&load[2], position);  // true, 2
    index[&load[0]] += 10;                                // absent keys start with 0

    EXPECT_TRUE(found && position == 2);
    EXPECT_EQ(index[&load[0]], 10u);
}

TEST(Examples, Tables) {
    const std::vector<std::pair<int, int>> rows = {{2147483647, 0}, {-5, 1}, {7, 2}};
    cow_IntTableInt rowOf(rows.begin(), rows.end());

    const cow_IntTableInt before = rowOf;  // shares the table
    rowOf.Insert(8, 3);                    // copies its blocks once
    int equal = 0;
    for (const auto& [label, row] : before) equal += rowOf.ConstGet(label) == row;  // 3

    cow_IntMultiMapInt elementsAt;
    elementsAt.Insert(7, 100);
    elementsAt.Insert(7, 101);
    cow_List<int> elements;
    elementsAt.ConstGetValues(7, elements);  // 101, 100

    EXPECT_EQ(equal + before.Size(), 6);
    EXPECT_EQ(elements, cow_List<int>(101, 100));
}

}  // namespace
