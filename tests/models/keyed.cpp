#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_BtreeUtils.impl.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <cow/cow_MapUtils.impl.h>
#include <generics/KZMBasTree.h>
#include <models/model.h>
#include <omi/HashTable.impl.h>
#include <omi/omi_BlockedArray.impl.h>
#include <omi/omi_IntMultiMap.impl.h>
#include <omi/omi_IntTableIterator.impl.h>

#include <algorithm>
#include <map>
#include <memory>
#include <tuple>

namespace models {
namespace {

using Policy = KZMBasOmiDefaultAllocator;

// A value that only Copy() copies.
template <class T>
class Owned {
public:
    template <class... Args>
    explicit Owned(Args... args) : m_object(new T(args...)) {}
    Owned(const Owned& other) : m_object(other.m_object->Copy()) {}
    Owned(Owned&& other) noexcept = default;
    Owned& operator=(Owned other) noexcept { return m_object.swap(other.m_object), *this; }
    bool operator==(const Owned& other) const { return *m_object == *other.m_object; }
    T& operator*() const { return *m_object; }
    auto begin() const { return m_object->begin(); }
    auto end() const { return m_object->end(); }

private:
    std::unique_ptr<T> m_object;
};

// The container itself, whatever holds it.
auto& Of(auto& c) {
    if constexpr (requires { *c; })
        return *c;
    else
        return c;
}

// A hash table that can be copied.
template <class K, class V>
struct Hashed : HashTable<K, V> {
    using HashTable<K, V>::HashTable;
    Hashed* Copy() const {
        auto copy = std::make_unique<Hashed>(7u);
        for (const auto& [key, value] : *this) copy->Insert(key, value);
        return copy.release();
    }
};

// Maps of one value a key, each in its own words.
template <class Held, class K, class V>
struct MapModel {
    using Value = Held;
    using C = std::remove_reference_t<decltype(Of(std::declval<Held&>()))>;
    using Twin = std::map<K, V>;
    static constexpr bool kTree = requires(C c) { c.Root()->Depth(); };
    static constexpr bool kLinks = requires(C c) { c.LowerBound(K()); };
    static constexpr bool kHash = requires(C c, V v) { c.LookUp(K(), v); };
    static constexpr bool kTable = requires(C c) { c.FindCell(K()); };
    static constexpr bool kKeeps = kTree || kLinks;  // the value of a key that is there
    static constexpr bool kAdds = kHash || kLinks;   // when it is written

    using TableIterator =
        std::conditional_t<std::is_same_v<K, unsigned>, omi_UintTableIterator<V, Policy>,
                           omi_IntTableIterator<V, Policy>>;

    static std::pair<Value, Twin> New(unsigned i) {
        if constexpr (kTable)
            return {i ? Value(8u + 4 * i, 12u - 2 * i, i % 2) : Value(), Twin()};
        else if constexpr (kHash)
            return {Value(i * 40), Twin()};
        else
            return {};
    }

    static void Put(C& c, const K& key, const V& value) {
        if constexpr (kTree)
            c.InsertUnlessMember(key, value);
        else if constexpr (kLinks)
            c.Add(key, value);
        else
            c.Insert(key, value);
    }
    static void Put(Twin& t, const K& key, const V& value) {
        if (!kKeeps || !t.contains(key)) t[key] = value;
    }
    static void Write(C& c, const K& key, const V& value) {
        if constexpr (kAdds)
            c[key] = value;
        else if constexpr (kTree)
            c.Find(key) = value;
        else if (c.IsMember(key))
            c.Get(key) = value;
    }
    static void Write(Twin& t, const K& key, const V& value) {
        if (kAdds || t.contains(key)) t[key] = value;
    }
    static bool Remove(C& c, const K& key) {
        if constexpr (requires { c.Root(); })
            for (const auto& each : c)
                if (each.key == key) return c.Remove(each.key);  // which lies in the container
        if constexpr (kHash)
            return c.Delete(key), true;
        else
            return c.Remove(key);
    }
    static bool Remove(Twin& t, const K& key) { return t.erase(key) || kHash; }

    // Whether the key is there, its value or a default, and the first key that is not less.
    using Found = std::tuple<bool, V, K>;
    static Found Read(const C& c, const K& key) {
        V value = V();
        if constexpr (kHash)
            return {c.LookUp(key, value), value, K()};
        else if constexpr (kTree)
            return {c.IsMember(key), c.FindValue(key) ? *c.FindValue(key) : c.ConstFind(key), K()};
        else if constexpr (requires { c.ConstGetValue(key, value); })
            return {c.ConstGetValue(key, value), value, K()};
        else if constexpr (!kLinks)
            return {c.FindValue(key), c.IsMember(key) ? c.ConstGet(key) : V(), K()};
        if constexpr (kLinks) {
            const auto it = c.Find(key), near = c.LowerBound(key);
            return {bool(it), it ? it.Value() : V(), near ? near.Key() : K()};
        }
    }
    static Found Read(const Twin& t, const K& key) {
        const auto it = t.find(key), near = t.lower_bound(key);
        return {it != t.end(), it != t.end() ? it->second : V(),
                kLinks && near != t.end() ? near->first : K()};
    }

    using Entries = std::vector<std::pair<K, const V*>>;
    static Entries Listed(const auto& c) {
        Entries entries;
        if constexpr (requires { c.begin(); })
            for (const auto& [key, value] : c) entries.emplace_back(key, &value);
        else
            for (auto it = c.First(); it; it = it.Next())
                entries.emplace_back(it.Key(), &it.Value());
        if constexpr (!kTree && !kLinks && !kTable) std::sort(entries.begin(), entries.end());
        return entries;
    }
    static Entries Backwards(auto&& it) {
        Entries entries;
        for (it.Last(); !it.IsDone(); it.Previous()) {
            if (!entries.empty()) it.Next(), it.Previous();  // turns on the way
            entries.emplace_back(it.CurrentKey(), &it.CurrentValue());
        }
        it.Previous();
        Require(it.IsDone(), "a walk stays at its end");
        return Entries(entries.rbegin(), entries.rend());
    }
    // For walks over a table in the order of a comparison.
    static int Descending(const void* a, const void* b) {
        using Record = omi_TableRecord<K, V>;
        const K x = (*static_cast<const Record* const*>(a))->key;
        const K y = (*static_cast<const Record* const*>(b))->key;
        return (x < y) - (x > y);
    }

    static Entries Forwards(auto&& it) {
        Entries entries;
        for (it.First(); !it.IsDone(); it.Next())
            entries.emplace_back(it.CurrentKey(), &it.CurrentValue());
        it.Next();
        Require(it.IsDone(), "a walk stays at its end");
        return entries;
    }

    // Whether other ways through the container and lists made of it agree with it.
    static bool Agrees(const C& c) {
        const Entries up = Listed(c), down(up.rbegin(), up.rend());
        const auto listed = [](const auto& entries, const auto& keys, const auto& values) {
            auto key = keys.begin();
            auto value = values.begin();
            for (const auto& each : entries)
                if (!(*key++ == each.key && *value++ == each.value)) return false;
            return key == keys.end() && value == values.end();
        };
        if constexpr (kTable) {
            TableIterator it(c, Descending);
            return Backwards(it) == down && Forwards(it) == down;
        } else if constexpr (kTree) {
            using Utils = cow_BtreeUtils<K, V>;
            return listed(c, Utils::cow_Keys(c), Utils::cow_Values(c));
        } else if constexpr (kHash) {
            auto it = c.find(up.empty() ? K() : c.begin()->first);
            std::size_t n = 0;
            for (; !it.IsDone(); it.Next()) ++n;
            it.Next();
            return it.IsDone() && n == up.size();
        } else if constexpr (std::is_same_v<C, cow_Map<K, V>>) {
            using Utils = cow_MapUtils<K, V>;
            using Sorted = cow_ConstMapSortedIt<K, V>;
            Entries unsorted = Forwards(cow_ConstMapIterator<K, V>(c));
            std::sort(unsorted.begin(), unsorted.end());
            return unsorted == up && Forwards(Sorted(c)) == up &&
                   Forwards(Sorted(c, Sorted::DescSortCmp)) == down &&
                   listed(c, Utils::cow_Keys(c), Utils::cow_Values(c));
        }
        return true;
    }
    static bool Agrees(const Twin&) { return true; }

    static int Depth(const auto* node) {
        if (!node) return -1;
        const int depth = 1 + std::max(Depth(node->Left()), Depth(node->Right()));
        Require(node->Depth() == depth, "a node's depth");
        return depth;
    }
    static bool Same(const Value& value, const Twin& twin) {
        const C& c = Of(value);
        const Entries entries = Listed(c);
        if constexpr (kTree) {
            Depth(c.Root());
            Require(Backwards(cow_BtreeIterator<K, V>(c)) == entries, "the walk back");
        } else if constexpr (kTable) {
            Require(Backwards(TableIterator(c)) == entries, "the walk back");
        }
        if constexpr (requires { c.Size(); })
            if (c.Size() != static_cast<int>(twin.size())) return false;
        const auto same = [](const auto& a, const auto& b) {
            return a.first == b.first && *a.second == b.second;
        };
        return std::equal(entries.begin(), entries.end(), twin.begin(), twin.end(), same);
    }

    static void Step(Run<MapModel>& run) {
        Program& p = run.p;
        const Twin& twin = run.ToEdit();
        const auto draw = [&] {
            return As<K>(static_cast<int>(p.Key() & (std::is_integral_v<K> ? ~0u : 0xfff)));
        };
        K key = draw();
        const auto near = twin.lower_bound(key);
        if (near != twin.end() && p.OneIn(2)) key = near->first;
        const auto own = twin.lower_bound(draw());
        const bool isOwn = own != twin.end() && p.OneIn(4);  // a value of the container
        const V made = As<V>(p.Int(0, 9999));
        const auto v = [&](const auto& c) -> const V& {
            if (isOwn)
                for (const auto& [k, value] : Listed(c))
                    if (k == own->first) return *value;
            return made;
        };
        const auto put = [&](auto& h) { Put(Of(h), key, v(Of(h))); };
        const auto remove = [&](auto& h) { return Remove(Of(h), key); };
        const auto write = [&](auto& h) { Write(Of(h), key, made); };
        const auto read = [&](auto& h) { return Read(Of(h), key); };
        const auto clear = [&]<class H>(H& h) {
            if constexpr (requires { Of(h).Clear(); })
                Of(h).Clear();
            else
                h = H();
        };
        const auto agree = [](auto& h) { return Agrees(Of(h)); };
        p.OneIn(24) ? run.OneOf(agree, clear) : run.OneOf(put, put, remove, write, read);
    }
};

// Pairs by key, those of a key newest first.
struct MultiTwin : std::vector<std::pair<int, int>> {
    auto First(int key) const {
        return std::partition_point(begin(), end(), [=](auto& e) { return e.first < key; });
    }
    bool IsMember(int key) const { return First(key) != First(key + 1); }
    bool IsMember(int key, int v) const { return std::count(begin(), end(), std::pair(key, v)); }
    bool ConstGetValues(int key, cow_List<int>& values) const {
        values = cow_List<int>();
        for (auto it = First(key); it != First(key + 1); ++it) values.Append(it->second);
        return IsMember(key);
    }
    int ConstGet(int key) const { return First(key)->second; }
    int& Get(int key) { return begin()[First(key) - begin()].second; }
    bool Insert(int key, int v) { return insert(First(key), {key, v}), true; }
    bool InsertUnique(int key, int v) { return !IsMember(key, v) && Insert(key, v); }
    bool Remove(int key) {
        return std::erase_if(*this, [=](auto& e) { return e.first == key; }) > 0;
    }
    bool Remove(int key, int v) {
        const bool found = IsMember(key);
        return std::erase(*this, std::pair(key, v)), found;
    }
    void Clear() { clear(); }
    void SortValues(int (*compare)(const int&, const int&)) {
        std::stable_sort(begin(), end(), [=](auto& a, auto& b) {
            return a.first != b.first ? a.first < b.first : compare(a.second, b.second) < 0;
        });
    }
};

template <class Held>
struct MultiMapModel {
    using Value = Held;
    using Twin = MultiTwin;

    static bool Same(const Value& value, const Twin& twin) {
        const auto& m = Of(value);
        const auto same = [](const auto& a, const auto& b) {
            return a.first == b.first && a.second == b.second;
        };
        return m.Size() == static_cast<int>(twin.size()) && m.IsEmpty() == twin.empty() &&
               std::equal(m.begin(), m.end(), twin.begin(), twin.end(), same);
    }
    static int Quarters(const int& a, const int& b) { return a / 4 - b / 4; }

    static void Step(Run<MultiMapModel>& run) {
        Program& p = run.p;
        int key = static_cast<int>(p.Key() & ~7u);
        const auto near = run.ToEdit().First(key);
        if (near != run.ToEdit().end() && p.OneIn(2)) key = near->first;
        const int value = p.Int(0, 11);
        const auto insert = [&](auto& h) { return Of(h).Insert(key, value); };
        const auto clear = [](auto& h) { Of(h).Clear(); };
        const auto sort = [&](auto& h) {
            if constexpr (requires(Held held) { Of(held).SortValues(nullptr); })
                Of(h).SortValues(Quarters);
        };
        if (p.OneIn(128))
            for (int times = p.Int(100, 200); times > 0; --times) run.Both(insert);
        if (p.OneIn(64)) return run.OneOf(clear, sort);
        run.OneOf(
            insert, insert, insert, [&](auto& h) { return Of(h).InsertUnique(key, value); },
            [&](auto& h) { return Of(h).Remove(key, value); },
            [&](auto& h) { return value > 3 || Of(h).Remove(key); },
            [&](auto& h) {
                cow_List<int> values(9);
                const bool found = Of(h).ConstGetValues(key, values);
                return std::tuple(std::vector<int>(values.begin(), values.end()), found,
                                  Of(h).IsMember(key), Of(h).IsMember(key, value));
            },
            [&](auto& h) {
                if (Of(h).IsMember(key)) Of(h).Get(key) = Of(h).ConstGet(key) + 1;
            });
    }
};

// Cells of which those that were never written are null or, in the block of one that was, empty.
template <class T>
struct BlockedModel {
    using Value = omi_BlockedArray<T>;
    struct Twin : std::map<unsigned, T> {
        unsigned shift;
        Twin(unsigned, unsigned s) : shift(s) {}
        const T* GetCell(unsigned i) const {
            static const T empty = T();
            if (this->contains(i)) return &this->at(i);
            const auto block = this->lower_bound(i >> shift << shift);
            return block != this->end() && block->first >> shift == i >> shift ? &empty : nullptr;
        }
        void SetCell(unsigned i, T v) { (*this)[i] = v; }
    };
    static std::pair<Value, Twin> New(unsigned i) { return {Value(4 * i, 8), Twin(0, 8)}; }

    static bool Same(const Value& a, const Twin& twin) {
        const auto same = [&](unsigned i) {
            const T *const cell = a.GetCell(i), *const expected = twin.GetCell(i);
            return cell && expected ? *cell == *expected : cell == expected;
        };
        for (const auto& [i, value] : twin)
            if (!same(i)) return false;
        for (unsigned i = 0; i < 1 << 16; i += (4u << twin.shift) + 1)
            if (!same(i)) return false;
        return true;
    }

    static void Step(Run<BlockedModel>& run) {
        Program& p = run.p;
        const unsigned at = p.Key() & 0xffff, own = p.Key() & 0xffff, slots = p.Below(9),
                       shift = 7 + p.Below(3);
        const T made = As<T>(p.Int(0, 9999));
        const auto set = [&](auto& a) { a.SetCell(at, a.GetCell(own) ? *a.GetCell(own) : made); };
        const auto reshape = [&]<class A>(A& a) { a = A(slots, shift); };
        p.OneIn(64) ? run.Both(reshape) : run.Both(set);
    }
};

template <class V>
using OwnedUint = MapModel<Owned<omi_UintTable<V, Policy>>, unsigned, V>;
template <class V>
using OwnedInt = MapModel<Owned<omi_IntTable<V, Policy>>, int, V>;
template <class K, class V>
using OwnedHash = MapModel<Owned<Hashed<K, V>>, K, V>;
template <template <class, class> class C, class K, class V>
using MapOf = MapModel<C<K, V>, K, V>;

}  // namespace

std::vector<Model> Keyed() {
    return {{"Tree", 288269603514135819u, Run<MapOf<cow_Btree, int, int>>::Of},
            {"TreeOfTexts", 15960394338835946256u, Run<MapOf<cow_Btree, cow_String, Boxed>>::Of},
            {"Map", 10134493997753757010u, Run<MapOf<cow_Map, int, int>>::Of},
            {"MapOfTexts", 11457157205857256933u, Run<MapOf<cow_Map, cow_String, Boxed>>::Of},
            {"TableByValue", 10134493997753757010u, Run<MapModel<cow_IntTableInt, int, int>>::Of},
            {"UintTableOfInt", 17624481151702487228u, Run<OwnedUint<int>>::Of},
            {"IntTableOfDouble", 13123741351040530546u, Run<OwnedInt<double>>::Of},
            {"IntTableOfString", 12581188548291831489u, Run<OwnedInt<cow_String>>::Of},
            {"HashTable", 16132027406923455947u, Run<OwnedHash<void*, unsigned>>::Of},
            {"HashTableOfAddresses", 11217393004759107276u, Run<OwnedHash<unsigned, void*>>::Of},
            {"GenericTree", 12385294008844210556u,
             Run<MapModel<KZMBasTree<int, cow_String>, int, cow_String>>::Of},
            {"MultiMap", 1941904649585693377u,
             Run<MultiMapModel<Owned<omi_IntMultiMap<int, Policy>>>>::Of},
            {"MultiMapByValue", 11405653805690953433u, Run<MultiMapModel<cow_IntMultiMapInt>>::Of},
            {"BlockedArrayOfInt", 14730362344482620108u, Run<BlockedModel<int>>::Of},
            {"BlockedArrayOfString", 5445673876332632038u, Run<BlockedModel<cow_String>>::Of}};
}
}  // namespace models
