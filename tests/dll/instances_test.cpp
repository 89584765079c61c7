// Built without optimisation, so that no call is inlined: each must be found in the library. The
// list of instances is made with the library and cannot fall behind the headers.
#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "KZMBasShared.instances.h"

namespace {

template <class T>
using Kind = std::type_identity<T>;

template <class... Family>
struct Families : Family... {
    using Family::operator()...;
};

// Walks a container of one entry.
template <class Iterator>
bool Walk(Kind<Iterator>, auto container) {
    container.Insert({}, {});
    Iterator it(container);
    it.First();
    it.Next();
    return it.IsDone();
}

struct TableFamily {
    template <template <class, class> class Table, class V, class A>
    bool operator()(Kind<Table<V, A>>) const requires requires(const Table<V, A> t) {
        t.Copy();
    }
    {
        Table<V, A> table;
        table.Insert(9, V());
        const std::unique_ptr<Table<V, A>> copy(table.Copy());
        return table.Remove(9) && copy->Footprint() > 0;
    }
};

// A few calls for each family of templates. What has no family here is made and copied where it can
// be, and does not compile where it cannot.
constexpr Families kWorks{
    []<class T>(Kind<T>) {
        const T value;
        T copy(value);
        return true;
    },
    []<class K, class V>(Kind<HashTableEntry<K, V>>) { return true; },  // made by the tables
    []<class K, class V>(Kind<HashIterator<K, V>>) { return true; },    // made by the tables
    []<class K, class V>(Kind<HashTable<K, V>>) {
        HashTable<K, V> table(4);
        table.Insert(K(), V());
        HashIterator<K, V> it = table.find(K());
        it.Next();
        table.Delete(K());
        return it.IsDone();
    },
    []<class T>(Kind<cow_ListBlock<T>>) { return true; },  // all private
    []<class T>(Kind<cow_List<T>>) {
        cow_List<T> list(T{}, T{});
        return cow_List<T>(list).Append(T()).Sort().Slice(0, 2).IsEqual(list);
    },
    []<class T>(Kind<cow_ListIter<T>>) {
        cow_ListIter<T> it{cow_List<T>(T())};
        it.Next();
        return !it.NotDone();
    },
    []<class T>(Kind<cow_FixedArrayRep<T>>) { return cow_FixedArrayRep<T>(3, T()).Size() == 3; },
    []<class T>(Kind<cow_FixedArray<T>>) { return cow_FixedArray<T>(3, T()).Get(2) == T(); },
    []<class T>(Kind<cow_2DArrayRep<T>>) {
        return cow_2DArrayRep<T>(3, 1) != cow_2DArrayRep<T>(1, 3, T());
    },
    []<class T>(Kind<cow_2DArray<T>>) { return cow_2DArray<T>(2, 3, T()).Get(1, 2) == T(); },
    []<class T>(Kind<cow_CountedHld<T>>) {
        const cow_CountedHld<T> none(static_cast<T*>(nullptr));
        return cow_CountedHld<T>(none).IsNull();
    },
    []<class T>(Kind<cow_COW<T, cow_Direct<T>>>) {
        return !cow_COW<T, cow_Direct<T>>(static_cast<T*>(nullptr)).HasValue();
    },
    []<class K, class V>(Kind<cow_BtreeNode<K, V>>) {
        return cow_BtreeNode<K, V>(K(), V()).Depth() == 0;
    },
    []<class K, class V>(Kind<cow_MapNode<K, V>>) {
        return cow_MapNode<K, V>(K(), V()).Child0().IsNull();
    },
    []<class K, class V>(Kind<cow_BtreeIterator<K, V>>) {
        cow_BtreeIterator<K, V> it{cow_Btree<K, V>()};
        it.First();
        return it.IsDone();
    },
    []<class K, class V>(Kind<cow_ConstMapIterator<K, V>> it) { return Walk(it, cow_Map<K, V>()); },
    []<class K, class V>(Kind<cow_ConstMapSortedIt<K, V>> it) { return Walk(it, cow_Map<K, V>()); },
    []<class V, class A>(Kind<omi_UintTableIterator<V, A>> it) {
        return Walk(it, omi_UintTable<V, A>());
    },
    []<class V, class A>(Kind<omi_IntTableIterator<V, A>> it) {
        return Walk(it, omi_IntTable<V, A>());
    },
    []<class T>(Kind<omi_BlockedArray<T>>) {
        omi_BlockedArray<T> array(0u, 4u);
        array.SetCell(17, T());
        return omi_BlockedArray<T>(array).GetCell(17) != nullptr;
    },
    []<class V, class A>(Kind<omi_UintTableBlock<V, A>>) {
        omi_UintTableBlock<V, A> block(1u, 4u);
        block.Insert(3, V());
        return block.Remove(3) && block.Footprint() > 0;
    },
    TableFamily(),
    []<int N>(Kind<KZMBasSrmAllocator<N>>) {
        using Policy = KZMBasSrmAllocator<N>;
        Policy::Initialize();
        Policy::deallocate(Policy::allocate(8));
        Policy::Finalize();
        Policy().DebugPrint();
        return !Policy::GetPool();
    },
    []<class T>(Kind<omi_SingletonBase<T>>) { return omi_SingletonBase<T>::Finalize(), true; },
    []<class T>(Kind<omi_Singleton<T>>) { return &omi_Singleton<T>::Instance() != nullptr; },
    []<class T>(Kind<KZMBasAtiGlobalSingleton<T>>) {
        volatile KZMBasAtiGlobalSingleton<T>& base = KZMBasAtiGlobalSingleton<T>::Instance();
        base.Lock();
        base.Unlock();
        KZMBasAtiGlobalSingleton<T>::Finalize();
        return true;
    }};

TEST(Instances, EachCanBeUsedByAClientBuiltWithoutOptimisation) {
#define CHECK_ONE(...) EXPECT_TRUE(kWorks(Kind<__VA_ARGS__>())) << #__VA_ARGS__;
    KZM_INSTANCES(CHECK_ONE)
    CHECK_ONE(KZMBasSrmAllocator<63>)
    CHECK_ONE(KZMBasSrmAllocator<64>)
}

}  // namespace
