// Values for the debugger to show. show.py stops at each call of ShowLocals and prints what its
// caller has.
#include <cow/cow_2DArray.h>
#include <cow/cow_Btree.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_COW.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <cow/cow_ListIter.h>
#include <cow/cow_Map.h>
#include <cow/cow_MapIterator.h>
#include <cow/cow_String.h>
#include <generics/KZMBasTree.h>
#include <generics/KZMBasVector.h>
#include <omi/HashTable.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlockedArray.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_IntMultiMap.h>
#include <omi/omi_IntTable.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <omi/omi_UintTable.h>

#include <cstring>
#include <utility>

namespace {

using Policy = KZMBasOmiDefaultAllocator;

template <class... T>
__attribute__((noinline)) void ShowLocals(const T&... values) {
    const void* const addresses[] = {&values...};
    asm volatile("" : : "r"(addresses) : "memory");
}

void ShowTexts() {
    const cow_String empty, name("node \"1\""), sharing(name);
    const atr_String report("caf\303\251");
    ShowLocals(empty, name, sharing, report);
}

void ShowSequences() {
    const cow_List<int> none;
    cow_List<int> list{1, 2, 3}, shared(list), front(list);
    front.Prepend(0);
    cow_List<double> large;
    large.Fill(1000000, 0.5);
    const cow_List<cow_String> names{"a", "b"};
    const auto second = ++list.begin();
    const auto end = list.end();
    cow_ListIter<int> iter(list);
    const cow_FixedArray<double> array(3, 1.5), arraySharer(array);
    const cow_2DArray<int> plane(2, 3, 7);
    const KZMBasVector<int> vector(2, 9);
    ShowLocals(none, list, shared, front, large, names, second, end, iter, array, arraySharer,
               plane, vector);
}

void ShowMaps() {
    cow_Btree<cow_String, int> btree{{"b", 2}, {"a", 1}, {"c", 3}};
    const cow_Btree<cow_String, int> btreeSharer(btree);
    const cow_Btree<int, double> noBtree;
    const cow_BtreeIterator<cow_String, int> btreeIter(btree);
    cow_Map<int, cow_List<int>> map{{4, {1, 2}}, {-1, {}}};
    const cow_Map<int, cow_List<int>> mapSharer(map);
    const auto mapWalk = map.begin();
    const auto mapEnd = map.end();
    const cow_ConstMapIterator<int, cow_List<int>> mapIter(map);
    const cow_ConstMapSortedIt<int, cow_List<int>> sorted(map);
    KZMBasTree<int, double> tree;
    for (int key : {3, 1, 2}) tree.Set(key, key / 2.0);
    HashTable<unsigned int, void*> hash(8);
    hash.Insert(20, nullptr);
    hash.Insert(7, nullptr);
    ShowLocals(btree, btreeSharer, noBtree, btreeIter, map, mapSharer, mapWalk, mapEnd, mapIter,
               sorted, tree, hash);
}

void ShowTables() {
    omi_BlockedArray<int> blocked(4, 1);
    blocked.SetCell(5, 50);
    omi_BlockedArray<int> nothing(0, 5);
    omi_UintTable<double, Policy> uintTable;
    uintTable.Insert(40000000u, 2.5);
    uintTable.Insert(3, 0.5);
    const int keys[] = {2, -70000, 0, -1}, values[] = {20, -7, 0, -10};
    const omi_IntTable<int, Policy> intTable(4, keys, values);
    cow_IntTableInt sharedTable;
    sharedTable.Insert(-5, 6);
    const cow_IntTableInt sharedTableCopy(sharedTable);
    omi_IntMultiMap<int, Policy> multiMap;
    cow_IntMultiMapInt sharedMultiMap;
    const std::pair<int, int> pairs[] = {{1, 10}, {1, 11}, {-2, 5}};
    for (const auto& [key, value] : pairs) {
        multiMap.Insert(key, value);
        sharedMultiMap.Insert(key, value);
    }
    omi_BlkBitVect bitVector, other;
    for (unsigned int bit : {0u, 31u, 9000u, 70000u}) bitVector.SetBit(bit);
    other.SetBit(31);
    omi_BlkBitVect stale(bitVector);
    stale -= other;
    const int numbers[] = {-4, 3, -1, 3, 0};
    const omi_Set set(numbers, 5);
    omi_SparseSet sparse(numbers, 5);
    const omi_SparseSet unordered(sparse);
    sparse.MakeUnique();
    omi_GeneratedSet generated(3, 20, 5);
    generated.Insert(10, 1, -3);
    ShowLocals(blocked, nothing, uintTable, intTable, sharedTable, sharedTableCopy, multiMap,
               sharedMultiMap, bitVector, stale, set, sparse, unordered, generated);
}

void ShowHandles() {
    const cow_COW<cow_String, cow_Direct<cow_String>> handle(cow_String("held")), sharer(handle);
    const cow_CountedHld<cow_String> empty(nullptr);
    ShowLocals(handle, sharer, empty);
}

// Memory that never held a value: zeros, implausible counts, pointers to nowhere.
template <class T>
void ShowRaw() {
    alignas(T) unsigned char bytes[3][sizeof(T)];
    const int fills[3] = {0, 0x7f, 0x80};
    for (int i = 0; i < 3; ++i) std::memset(bytes[i], fills[i], sizeof(T));
    const T& zeros = reinterpret_cast<const T&>(bytes[0]);
    const T& large = reinterpret_cast<const T&>(bytes[1]);
    const T& negative = reinterpret_cast<const T&>(bytes[2]);
    ShowLocals(zeros, large, negative);
}

}  // namespace

int main() {
    ShowTexts();
    ShowSequences();
    ShowMaps();
    ShowTables();
    ShowHandles();
    ShowRaw<cow_String>();
    ShowRaw<cow_List<int>>();
    ShowRaw<cow_ListIter<int>>();
    ShowRaw<cow_FixedArray<double>>();
    ShowRaw<cow_2DArray<int>>();
    ShowRaw<cow_Btree<cow_String, int>>();
    ShowRaw<cow_BtreeIterator<cow_String, int>>();
    ShowRaw<cow_Map<int, cow_List<int>>>();
    ShowRaw<cow_IntTableInt>();
    ShowRaw<cow_IntMultiMapInt>();
    ShowRaw<omi_BlockedArray<int>>();
    ShowRaw<omi_BlkBitVect>();
    ShowRaw<omi_UintTable<double, Policy>>();
    ShowRaw<omi_IntTable<int, Policy>>();
    ShowRaw<omi_IntMultiMap<int, Policy>>();
    ShowRaw<HashTable<unsigned int, void*>>();
    ShowRaw<omi_Set>();
    ShowRaw<omi_SparseSet>();
    ShowRaw<omi_GeneratedSet>();
    ShowRaw<KZMBasVector<int>>();
    ShowRaw<KZMBasTree<int, double>>();
}
