// Built without optimisation, so that no call is inlined: each must be found in the library. The
// list of instances is made with the library and cannot fall behind the headers.
#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "KZMBasShared.instances.h"

namespace {

// A few calls for each family of templates. One without a specialisation is made and copied where
// it can be, and fails where it cannot.
template <class T>
struct Exercise {
    static bool Run() {
        if constexpr (std::is_default_constructible_v<T> && std::is_copy_constructible_v<T>) {
            T value;
            T copy(value);
            return true;
        }
        return false;
    }
};

template <class V, class A>
struct Exercise<omi_IntMultiMap<V, A>> {
    static bool Run() {
        omi_IntMultiMap<V, A> map;
        map.Insert(-3, V());
        omi_IntMultiMap<V, A>* const copy = map.Copy();
        omi_IntMultiMapIterator<V, A> it(*copy);
        it.First();
        const bool good = it.CurrentKey() == -3 && copy->IsMember(-3, V());
        delete copy;
        return good;
    }
};

template <class K, class V>
struct Exercise<HashTableEntry<K, V>> {
    static bool Run() { return !HashTableEntry<K, V>(K(), V(), nullptr).next; }
};

template <class K, class V>
struct Exercise<HashTable<K, V>> {
    static bool Run() {
        HashTable<K, V> table(4);
        table.Insert(K(), V());
        V value;
        const bool good = table.LookUp(K(), value) && table.CurrentKey(table.First()) == K();
        table.Delete(K());
        return good && !table.LookUp(K(), value);
    }
};

template <class K, class V>
struct Exercise<HashIterator<K, V>> {
    static bool Run() {
        HashTable<K, V> table(4);
        table.Insert(K(), V());
        HashIterator<K, V> it = table.find(K());
        const bool good = !it.IsDone() && it.CurrentKey() == K() && it.CurrentValue() == V();
        it.Next();
        return good && it.IsDone();
    }
};

template <class T>
struct Exercise<cow_ListBlock<T>> {  // all private: used by the lists
    static bool Run() { return true; }
};

template <class T>
struct Exercise<cow_List<T>> {
    static bool Run() {
        const T v = T();
        cow_List<T> list(v, v);
        cow_List<T> copy(list);
        copy.Append(v).Prepend(v).InsertIndex(1, v).Concatenate(list);
        copy.RemoveIndex(0).RemoveLast().RemoveMember(v);
        copy.Get(0) = v;
        int n = 0;
        cow_List<T>::ReleaseCArray(copy.GetCArray(n), n);
        return n == 4 && list.IsMember(copy.Pop()) && copy.Slice(0, 2).IsEqual(list) &&
               copy.Difference(list).Length() == 0 && copy.Sort().Length() == 3 &&
               copy.Fill(20, v).Resize(2).IsEqual(list);
    }
};

template <class T>
struct Exercise<cow_ListIter<T>> {
    static bool Run() {
        cow_ListIter<T> it{cow_List<T>(T())};
        const bool good = it.NotDone() && it.CurrentItem() == T() && it.ArrayIndex() == 0;
        it.Next();
        return good && !it.NotDone();
    }
};

template <class T>
struct Exercise<cow_FixedArrayRep<T>> {
    static bool Run() { return cow_FixedArrayRep<T>(3) != cow_FixedArrayRep<T>(2, T()); }
};

template <class T>
struct Exercise<cow_FixedArray<T>> {
    static bool Run() {
        const cow_FixedArray<T> array(3, T());
        cow_FixedArray<T> copy(array);
        copy.Get(1) = T();
        return copy == array && copy.begin() != array.begin();
    }
};

template <class T>
struct Exercise<cow_2DArrayRep<T>> {
    static bool Run() { return cow_2DArrayRep<T>(3, 1) != cow_2DArrayRep<T>(1, 3, T()); }
};

template <class T>
struct Exercise<cow_2DArray<T>> {
    static bool Run() {
        const cow_2DArray<T> array(2, 3, T());
        cow_2DArray<T> copy(array);
        copy.Get(1, 2) = T();
        return copy == array && copy.begin() != array.begin();
    }
};

template <class T>
struct Exercise<cow_CountedHld<T>> {
    static bool Run() {
        const cow_CountedHld<T> none(static_cast<T*>(nullptr));
        const cow_CountedHld<T> copy(none);
        return copy.IsNull() && !copy.Exclusive();
    }
};

template <class T>
struct Exercise<cow_COW<T, cow_Direct<T>>> {
    static bool Run() {
        const cow_COW<T, cow_Direct<T>> none(static_cast<T*>(nullptr));
        return !cow_COW<T, cow_Direct<T>>(none).HasValue();
    }
};

template <class K, class V>
struct Exercise<cow_BtreeNode<K, V>> {
    static bool Run() {
        const cow_BtreeNode<K, V> node{K(), V()};
        const cow_BtreeNode<K, V> copy(node);
        return copy.ConstFind(K()) == &copy.value && !copy.Left() && copy.Depth() == 0;
    }
};

template <class K, class V>
struct Exercise<cow_MapNode<K, V>> {
    static bool Run() {
        const cow_MapNode<K, V> node{K(), V()};
        const cow_MapNode<K, V> copy(node);
        return copy.key == K() && copy.Child0().IsNull() && copy.Child(true).IsNull();
    }
};

// Walks the one entry of a container.
template <class Iterator, class Container>
bool VisitsOne(const Container& container) {
    Iterator it(container);
    it.First();
    const bool good = !it.IsDone() && &it.CurrentValue() == &it.CurrentValue();
    it.Next();
    return good && it.IsDone();
}

template <class K, class V>
cow_Map<K, V> MapOfOne() {
    cow_Map<K, V> map;
    map.Insert(K(), V());
    return map;
}

template <class K, class V>
struct Exercise<cow_BtreeIterator<K, V>> {
    static bool Run() {
        cow_Btree<K, V> tree;
        tree.InsertUnlessMember(K(), V());
        const cow_Btree<K, V> copy(tree);
        return VisitsOne<cow_BtreeIterator<K, V>>(copy) && tree.Remove(K()) && copy.IsMember(K());
    }
};

template <class K, class V>
struct Exercise<cow_ConstMapIterator<K, V>> {
    static bool Run() { return VisitsOne<cow_ConstMapIterator<K, V>>(MapOfOne<K, V>()); }
};

template <class K, class V>
struct Exercise<cow_ConstMapSortedIt<K, V>> {
    static bool Run() { return VisitsOne<cow_ConstMapSortedIt<K, V>>(MapOfOne<K, V>()); }
};

template <class T>
struct Exercise<omi_BlockedArray<T>> {
    static bool Run() {
        omi_BlockedArray<T> array(0u, 4u);
        array.SetCell(17, T());
        const omi_BlockedArray<T> copy(array);
        return copy.GetCell(17) && array.Footprint() == copy.Footprint();
    }
};

template <class V, class A>
struct Exercise<omi_UintTableBlock<V, A>> {
    static bool Run() {
        omi_UintTableBlock<V, A> block(1u, 4u);
        block.Insert(3, V());
        return block.Members().Size() == 1 && block.Remove(3) && block.Footprint() > 0;
    }
};

template <class V, class A>
struct Exercise<omi_UintTable<V, A>> {
    static bool Run() {
        omi_UintTable<V, A> table;
        V value = V();
        return table.Insert(9, value) && table.ConstGetValue(9, value) && table.Size() == 1 &&
               table.Remove(9) && table.IsEmpty();
    }
};

template <class V, class A>
struct Exercise<omi_IntTable<V, A>> {
    static bool Run() {
        omi_IntTable<V, A> table;
        table.Insert(-9, V());
        omi_IntTable<V, A>* const copy = table.Copy();
        const bool good = table.Remove(-9) && copy->IsMember(-9) && copy->Footprint() > 0;
        delete copy;
        return good;
    }
};

template <class V, class A>
struct Exercise<omi_UintTableIterator<V, A>> {
    static bool Run() {
        omi_UintTable<V, A> table;
        table.Insert(9, V());
        omi_UintTableIterator<V, A> it(table);
        it.Last();
        it.Previous();
        it.First();
        const bool good = it.CurrentKey() == 9;
        it.Next();
        return good && it.IsDone();
    }
};

template <class V, class A>
struct Exercise<omi_IntTableIterator<V, A>> {
    static bool Run() {
        omi_IntTable<V, A> table;
        table.Insert(-9, V());
        omi_IntTableIterator<V, A> it(table);
        it.First();
        const bool good = it.CurrentKey() == -9;
        it.Next();
        return good && it.IsDone();
    }
};

template <int N>
struct Exercise<KZMBasSrmAllocator<N>> {
    static bool Run() {
        using Policy = KZMBasSrmAllocator<N>;
        KZMBasCamPool pool;
        Policy::SetPool(&pool);
        Policy::Initialize();  // nobody manages the pools: it stays
        Policy::deallocate(Policy::allocate(8));
        const bool good = pool.Requests() == 1 && Policy::GetPool() == &pool;
        Policy::Finalize();
        Policy().DebugPrint();
        return good && !Policy::GetPool();
    }
};

template <class T>
struct Exercise<omi_SingletonBase<T>> {
    static bool Run() {
        omi_SingletonBase<T>::Finalize();
        return true;
    }
};

template <class T>
struct Exercise<omi_Singleton<T>> {
    static bool Run() {
        const bool good = &omi_Singleton<T>::Instance() == &omi_Singleton<T>::Instance();
        omi_Singleton<T>::Finalize();
        return good;
    }
};

template <class T>
struct Exercise<KZMBasAtiGlobalSingleton<T>> {
    static bool Run() {
        volatile auto& instance = KZMBasAtiGlobalSingleton<T>::Instance();
        static_cast<volatile KZMBasAtiGlobalSingleton<T>&>(instance).Lock();
        static_cast<volatile KZMBasAtiGlobalSingleton<T>&>(instance).Unlock();
        KZMBasAtiGlobalSingleton<T>::Finalize();
        return true;
    }
};

const struct {
    const char* name;
    bool (*run)();
} kInstances[] = {
#define ENTRY(...) {#__VA_ARGS__, &Exercise<__VA_ARGS__>::Run},
    KZM_INSTANCES(ENTRY) ENTRY(KZMBasSrmAllocator<63>) ENTRY(KZMBasSrmAllocator<64>)
#undef ENTRY
};

TEST(Instances, EachCanBeUsedByAClientBuiltWithoutOptimisation) {
    for (const auto& [name, run] : kInstances) EXPECT_TRUE(run()) << name;
}

}  // namespace
