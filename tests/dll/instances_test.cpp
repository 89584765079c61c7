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

template <class Array, class... Place>
bool CopiesOnWrite(const Array& array, Place... place) {
    Array copy(array);
    copy.Get(place...) = array.ConstGet(place...);
    return copy == array && copy.begin() != array.begin();
}

// Walks a container that the given call fills with one entry.
template <class Iterator, class Container>
bool VisitsOne(auto fill) {
    Container container;
    if (!fill(container)) return false;
    Iterator it(container);
    it.First();
    const bool good = !it.IsDone() && &it.CurrentValue() == &it.CurrentValue();
    it.Next();
    return good && it.IsDone();
}

constexpr auto kInsert = [](auto& c) { return c.Insert({}, {}); };

template <class Table, class V>
bool CopiesApart(V value) {
    Table table;
    table.Insert(9, value);
    const std::unique_ptr<Table> copy(table.Copy());
    return table.Remove(9) && copy->ConstGetValue(9, value) && copy->Footprint() > 0;
}

// A few calls for each family of templates. What has no family here is made and copied where it can
// be, and fails where it cannot.
constexpr Families kWorks{
    []<class T>(Kind<T>) {
        if constexpr (std::is_default_constructible_v<T> && std::is_copy_constructible_v<T>) {
            const T value;
            T copy(value);
            return true;
        }
        return false;
    },
    []<class K, class V>(Kind<HashTable<K, V>>) {
        HashTable<K, V> table(4);
        table.Insert(K(), V());
        HashIterator<K, V> it = table.find(K());
        const bool good = table.CurrentKey(table.First()) == it.CurrentKey();
        V value = it.CurrentValue();
        it.Next();
        table.Delete(K());
        return good && it.IsDone() && !table.LookUp(K(), value);
    },
    []<class K, class V>(Kind<HashTableEntry<K, V>>) { return true; },  // made by the tables
    []<class K, class V>(Kind<HashIterator<K, V>>) { return true; },    // made by the tables
    []<class T>(Kind<cow_ListBlock<T>>) { return true; },               // all private
    []<class T>(Kind<cow_List<T>>) {
        const T v = T();
        cow_List<T> list(v, v);
        cow_List<T> copy(list);
        copy.Append(v).Prepend(v).InsertIndex(1, v).Concatenate(list);
        copy.RemoveIndex(0).RemoveLast().RemoveMember(v).Get(0) = v;
        int n = 0;
        T* const elements = copy.GetCArray(n);
        cow_List<T>::ReleaseCArray(elements, n);
        return n == 4 && list.IsMember(copy.Pop()) && copy.Slice(0, 2).IsEqual(list) &&
               copy.Difference(list).Length() == 0 && copy.Sort().Length() == 3 &&
               copy.Fill(20, v).Resize(2).IsEqual(list);
    },
    []<class T>(Kind<cow_ListIter<T>>) {
        cow_ListIter<T> it{cow_List<T>(T())};
        const bool good = it.NotDone() && it.CurrentItem() == T() && it.ArrayIndex() == 0;
        it.Next();
        return good && !it.NotDone();
    },
    []<class T>(Kind<cow_FixedArrayRep<T>>) {
        return cow_FixedArrayRep<T>(3) != cow_FixedArrayRep<T>(2, T());
    },
    []<class T>(Kind<cow_FixedArray<T>>) { return CopiesOnWrite(cow_FixedArray<T>(3, T()), 1); },
    []<class T>(Kind<cow_2DArrayRep<T>>) {
        return cow_2DArrayRep<T>(3, 1) != cow_2DArrayRep<T>(1, 3, T());
    },
    []<class T>(Kind<cow_2DArray<T>>) { return CopiesOnWrite(cow_2DArray<T>(2, 3, T()), 1, 2); },
    []<class T>(Kind<cow_CountedHld<T>>) {
        const cow_CountedHld<T> none(static_cast<T*>(nullptr));
        const cow_CountedHld<T> copy(none);
        return copy.IsNull() && !copy.Exclusive();
    },
    []<class T>(Kind<cow_COW<T, cow_Direct<T>>>) {
        const cow_COW<T, cow_Direct<T>> none(static_cast<T*>(nullptr));
        return !cow_COW<T, cow_Direct<T>>(none).HasValue();
    },
    []<class K, class V>(Kind<cow_BtreeNode<K, V>>) {
        const cow_BtreeNode<K, V> node{K(), V()};
        return cow_BtreeNode<K, V>(node).Depth() == 0 && node.ConstFind(K()) == &node.value;
    },
    []<class K, class V>(Kind<cow_MapNode<K, V>>) {
        const cow_MapNode<K, V> node{K(), V()};
        return cow_MapNode<K, V>(node).Child(true).IsNull() && node.Child0().IsNull();
    },
    []<class K, class V>(Kind<cow_BtreeIterator<K, V>>) {
        return VisitsOne<cow_BtreeIterator<K, V>, cow_Btree<K, V>>(
            [](auto& tree) { return tree.InsertUnlessMember(K(), V()); });
    },
    []<class K, class V>(Kind<cow_ConstMapIterator<K, V>>) {
        return VisitsOne<cow_ConstMapIterator<K, V>, cow_Map<K, V>>(kInsert);
    },
    []<class K, class V>(Kind<cow_ConstMapSortedIt<K, V>>) {
        return VisitsOne<cow_ConstMapSortedIt<K, V>, cow_Map<K, V>>(kInsert);
    },
    []<class V, class A>(Kind<omi_UintTableIterator<V, A>>) {
        return VisitsOne<omi_UintTableIterator<V, A>, omi_UintTable<V, A>>(kInsert);
    },
    []<class V, class A>(Kind<omi_IntTableIterator<V, A>>) {
        return VisitsOne<omi_IntTableIterator<V, A>, omi_IntTable<V, A>>(kInsert);
    },
    []<class T>(Kind<omi_BlockedArray<T>>) {
        omi_BlockedArray<T> array(0u, 4u);
        array.SetCell(17, T());
        const omi_BlockedArray<T> copy(array);
        return copy.GetCell(17) && array.Footprint() == copy.Footprint();
    },
    []<class V, class A>(Kind<omi_UintTableBlock<V, A>>) {
        omi_UintTableBlock<V, A> block(1u, 4u);
        block.Insert(3, V());
        return block.Members().Size() == 1 && block.Remove(3) && block.Footprint() > 0;
    },
    []<class V, class A>(Kind<omi_UintTable<V, A>>) {
        return CopiesApart<omi_UintTable<V, A>>(V());
    },
    []<class V, class A>(Kind<omi_IntMultiMap<V, A>>) {
        return CopiesApart<omi_IntMultiMap<V, A>>(V());
    },
    []<class V, class A>(Kind<omi_IntTable<V, A>>) { return CopiesApart<omi_IntTable<V, A>>(V()); },
    []<int N>(Kind<KZMBasSrmAllocator<N>>) {
        using Policy = KZMBasSrmAllocator<N>;
        KZMBasCamPool pool;
        Policy::SetPool(&pool);
        Policy::Initialize();  // nobody manages the pools: it stays
        Policy::deallocate(Policy::allocate(8));
        const bool good = pool.Requests() == 1 && Policy::GetPool() == &pool;
        Policy::Finalize();
        Policy().DebugPrint();
        return good && !Policy::GetPool();
    },
    []<class T>(Kind<omi_SingletonBase<T>>) { return omi_SingletonBase<T>::Finalize(), true; },
    []<class T>(Kind<omi_Singleton<T>>) {
        const bool good = &omi_Singleton<T>::Instance() == &omi_Singleton<T>::Instance();
        omi_Singleton<T>::Finalize();
        return good;
    },
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
