#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <generics/KZMBasTree.h>
#include <models/model.h>
#include <omi/HashTable.h>
#include <omi/omi_IntTableIterator.h>
#include <omi/omi_UintTableIterator.h>

#include <algorithm>
#include <map>
#include <memory>

namespace models {
namespace {

using Policy = KZMBasOmiDefaultAllocator;

// The container itself, whatever holds it.
template <class C>
C& Of(C& c) {
    return c;
}
template <class C>
C& Of(Owned<C>& c) {
    return *c;
}
template <class C>
C& Of(const Owned<C>& c) {
    return *c;
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

template <class C>
concept IsTree = requires {
    &C::InsertUnlessMember;
};
template <class C>
concept IsLinks = requires {
    &C::Add;
};
template <class C>
concept IsHash = requires {
    &C::LookUp;
};
template <class C>
concept IsTable = requires {
    &C::FindCell;
};

// Maps of one value a key, each in its own words.
template <class Held, class K, class V>
struct MapModel {
    using Value = Held;
    using C = std::remove_reference_t<decltype(Of(std::declval<Held&>()))>;
    using Code = std::conditional_t<std::is_same_v<K, unsigned>, unsigned, int>;
    using Twin = std::map<Code, int>;
    static constexpr bool kKeeps = IsTree<C> || IsLinks<C>;  // the value of a key that is there
    static constexpr bool kAdds = IsHash<C> || IsLinks<C>;   // when it is written

    using TableIterator =
        std::conditional_t<std::is_same_v<K, unsigned>, omi_UintTableIterator<V, Policy>,
                           omi_IntTableIterator<V, Policy>>;

    static std::pair<Value, Twin> New(unsigned i) requires IsTable<C> {
        return {i == 0 ? Value() : i == 1 ? Value(12u, 10u, 1u) : Value(16u, 8u, 0u), Twin()};
    }
    static std::pair<Value, Twin> New(unsigned i) requires IsHash<C> {
        return {Value(i * 40), Twin()};
    }

    // Null for an absent key.
    static const V* Cell(const C& c, const K& key) {
        if constexpr (IsHash<C>) {
            const auto it = c.find(key);
            return it.IsDone() ? nullptr : &it.CurrentValue();
        } else if constexpr (IsLinks<C>) {
            const auto it = c.Find(key);
            return it ? &it.Value() : nullptr;
        } else if constexpr (IsTable<C>) {
            return c.FindCell(key);
        } else if constexpr (IsTree<C>) {
            return c.IsMember(key) ? &c.ConstFind(key) : nullptr;
        } else {
            return c.IsMember(key) ? &c.ConstGet(key) : nullptr;
        }
    }
    static bool Put(C& c, const K& key, const V& value) {
        const bool isNew = !Cell(c, key);
        if constexpr (IsTree<C>)
            return c.InsertUnlessMember(key, value);
        else if constexpr (IsLinks<C>)
            return c.Add(key, value);
        else if constexpr (IsHash<C>)
            c.Insert(key, value);
        else if (!c.Insert(key, value))
            return false;
        return isNew;
    }
    static void Write(C& c, const K& key, const V& value) {
        if constexpr (kAdds)
            c[key] = value;
        else if constexpr (IsTree<C>)
            c.Find(key) = value;
        else if (c.IsMember(key))
            c.Get(key) = value;
    }
    static bool Remove(C& c, const K& key) {
        if constexpr (IsHash<C>) {
            const bool found = Cell(c, key);
            return c.Delete(key), found;
        } else {
            if constexpr (requires { c.Root(); })
                for (const auto& each : c)
                    if (each.key == key) return c.Remove(each.key);  // which lies in the container
            return c.Remove(key);
        }
    }

    static bool Reads(const C& c, const K& key) {
        const V* const cell = Cell(c, key);
        V value = As<V>(77);
        if constexpr (requires { c.ConstGetValue(key, value); })
            Require(c.ConstGetValue(key, value) == c.IsMember(key), "found or not");
        else if constexpr (IsHash<C>)
            Require(c.LookUp(key, value) == (cell != nullptr), "found or not");
        else if (cell)
            value = *cell;
        Require(value == (cell ? *cell : As<V>(77)), "the value read");
        if constexpr (IsLinks<C>) {
            const auto at = c.LowerBound(key);
            Require(at ? at.Key() >= key && !(at.Previous() && at.Previous().Key() >= key)
                       : !c.Last() || c.Last().Key() < key,
                    "the lower bound");
        }
        return cell != nullptr;
    }

    using Entries = std::vector<std::pair<K, const V*>>;
    static Entries Listed(const C& c) {
        Entries entries;
        if constexpr (IsLinks<C>)
            for (auto it = c.First(); it; it = it.Next())
                entries.emplace_back(it.Key(), &it.Value());
        else if constexpr (IsHash<C>)
            for (iterState s = c.First(); s.position; s = c.Next(s))
                entries.emplace_back(c.CurrentKey(s), &c.CurrentEntry(s).value);
        else
            for (const auto& [key, value] : c) entries.emplace_back(key, &value);
        if constexpr (!IsTree<C> && !IsLinks<C> && !IsTable<C>)
            std::sort(entries.begin(), entries.end());
        return entries;
    }
    // Also in the order of a comparison, then from its end on.
    template <class It>
    static Entries Backwards(It&& it) {
        Entries entries;
        for (it.Last(); !it.IsDone(); it.Previous())
            entries.emplace_back(it.CurrentKey(), &it.CurrentValue());
        return Entries(entries.rbegin(), entries.rend());
    }
    static int Descending(const void* a, const void* b) {
        using Record = omi_TableRecord<K, V>;
        const Record* const x = *static_cast<const Record* const*>(a);
        const Record* const y = *static_cast<const Record* const*>(b);
        return (x->key < y->key) - (x->key > y->key);
    }
    static bool Descends(const C& c) {
        Entries entries = Listed(c), sorted = entries;
        if constexpr (IsTable<C>)
            sorted = Backwards(TableIterator(c, Descending)),
            std::reverse(sorted.begin(), sorted.end());
        if constexpr (requires { cow_ConstMapSortedIt<K, V>(c); }) {
            cow_ConstMapSortedIt<K, V> it(c, cow_ConstMapSortedIt<K, V>::DescSortCmp);
            sorted.clear();
            for (const auto& [key, value] : it) sorted.emplace(sorted.begin(), key, &value);
        }
        return sorted == entries;
    }

    static int Depth(const auto* node) {
        if (!node) return -1;
        const int depth = 1 + std::max(Depth(node->Left()), Depth(node->Right()));
        Require(node->Depth() == depth, "a node's depth");
        return depth;
    }
    static bool Same(const Value& value, const Twin& twin) {
        const C& c = Of(value);
        const Entries entries = Listed(c);
        Entries back = entries;
        if constexpr (IsTree<C>) Depth(c.Root()), back = Backwards(cow_BtreeIterator<K, V>(c));
        if constexpr (IsTable<C>) back = Backwards(TableIterator(c));
        if constexpr (requires { c.Size(); })
            if (c.Size() != static_cast<int>(entries.size())) return false;
        return back == entries &&
               std::equal(entries.begin(), entries.end(), twin.begin(), twin.end(),
                          [](const auto& entry, const auto& pair) {
                              return entry.first == As<K>(static_cast<int>(pair.first)) &&
                                     *entry.second == As<V>(pair.second);
                          });
    }
    static void MixInto(std::uint64_t& sum, const Value& value, const Twin& twin) {
        for (const auto& [key, each] : Listed(Of(value))) Mix(sum, *each);
        Mix(sum, twin);
    }

    static void Step(Edit<MapModel>& edit) {
        using H = Held;
        using T = Twin;
        Program& p = edit.p;
        Code code = static_cast<Code>(p.Key());
        if constexpr (!std::is_integral_v<K>) code = code & 0xfff;
        const auto near = edit.twin.lower_bound(code);
        if (near != edit.twin.end() && p.OneIn(2)) code = near->first;
        const auto own = edit.twin.lower_bound(static_cast<Code>(p.Key()));
        const bool isOwn = own != edit.twin.end() && p.OneIn(4);  // a value of the container
        const int number = isOwn ? own->second : p.Int(0, 9999);
        const K key = As<K>(static_cast<int>(code));
        const K ownKey = As<K>(isOwn ? static_cast<int>(own->first) : 0);
        const V made = As<V>(number);
        const auto v = [&](const C& c) -> const V& { return isOwn ? *Cell(c, ownKey) : made; };
        const auto put = Do{[&](H& h) { return Put(Of(h), key, v(Of(h))); },
                            [&](T& t) {
                                const bool isNew = !t.contains(code);
                                if (isNew || !kKeeps) t[code] = number;
                                return isNew;
                            }};
        const auto remove =
            Do{[&](H& h) { return Remove(Of(h), key); }, [&](T& t) { return t.erase(code) != 0; }};
        const auto write = Do{[&](H& h) { Write(Of(h), key, made); },
                              [&](T& t) {
                                  if (kAdds || t.contains(code)) t[code] = number;
                              }};
        const auto read =
            Do{[&](H& h) { return Reads(Of(h), key); }, [&](T& t) { return t.contains(code); }};
        const auto sort = Do{[](H& h) { return Descends(Of(h)); }, [](T&) { return true; }};
        std::vector<std::pair<K, V>> pairs;
        for (const auto& [k, each] : edit.otherTwin)
            pairs.emplace_back(As<K>(static_cast<int>(k)), As<V>(each));
        const auto rebuild = Do{[&](H& h) {
                                    if constexpr (IsHash<C> || IsLinks<C>)
                                        h = H(edit.other);
                                    else
                                        h = H(pairs.begin(), pairs.end());
                                },
                                [&](T& t) { t = T(edit.otherTwin); }};
        const auto clear = Do{[](H& h) {
                                  if constexpr (requires { Of(h).Clear(); })
                                      Of(h).Clear();
                                  else
                                      h = H();
                              },
                              [](T& t) { t.clear(); }};
        p.OneIn(16) ? edit.OneOf(sort, rebuild, clear) : edit.OneOf(put, put, remove, write, read);
    }
};

// As a table with several values a key, newest first.
template <class Held>
struct MultiMapModel {
    using Value = Held;
    using Twin = std::map<int, std::vector<int>>;

    static bool Same(const Value& value, const Twin& twin) {
        std::vector<std::pair<int, int>> pairs;
        for (const auto& [key, values] : twin)
            for (const int each : values) pairs.emplace_back(key, each);
        const auto& m = Of(value);
        return m.Size() == static_cast<int>(pairs.size()) && m.IsEmpty() == pairs.empty() &&
               std::equal(m.begin(), m.end(), pairs.begin(), pairs.end(),
                          [](const auto& a, const auto& b) {
                              return a.first == b.first && a.second == b.second;
                          });
    }

    static void Step(Edit<MultiMapModel>& edit) {
        using H = Held;
        using T = Twin;
        Program& p = edit.p;
        int key = static_cast<int>(p.Key() & ~7u);
        const auto near = edit.twin.lower_bound(key);
        if (near != edit.twin.end() && p.OneIn(2)) key = near->first;
        const int value = p.Int(0, 11), times = p.OneIn(128) ? p.Int(100, 200) : 1;
        const bool member = edit.twin.contains(key);
        const auto found = edit.twin.find(key);
        const std::vector<int> chain = member ? found->second : std::vector<int>();
        const bool isPair = std::count(chain.begin(), chain.end(), value) > 0;
        const auto add = [&](T& t) { t[key].insert(t[key].begin(), value); };
        const auto insert =
            Do{[&](H& h) { return Of(h).Insert(key, value); }, [&](T& t) { return add(t), true; }};
        std::vector<std::pair<int, int>> pairs;
        for (const auto& [k, each] : edit.otherTwin)
            for (const int v : each) pairs.emplace_back(k, v);
        for (int time = 1; time < times; ++time) edit.Both(insert);
        if (p.OneIn(64))
            return edit.OneOf(Do{[](H& h) { Of(h).Clear(); }, [](T& t) { t.clear(); }},
                              Do{[&](H& h) {
                                     if constexpr (requires { Of(h).SortValues(nullptr); })
                                         Of(h).SortValues(value % 2 ? Quarters : nullptr);
                                 },
                                 [&](T& t) {
                                     if constexpr (requires(H h) { Of(h).SortValues(nullptr); })
                                         if (value % 2)
                                             for (auto& [k, each] : t)
                                                 std::stable_sort(
                                                     each.begin(), each.end(),
                                                     [](int a, int b) { return a / 4 < b / 4; });
                                 }},
                              Do{[&](H& h) { h = H(pairs.begin(), pairs.end()); },
                                 [&](T& t) {
                                     t.clear();
                                     for (const auto& [k, v] : pairs) t[k].insert(t[k].begin(), v);
                                 }});
        if (times > 1) return;
        edit.OneOf(insert, insert, insert,
                   Do{[&](H& h) { return Of(h).InsertUnique(key, value); },
                      [&](T& t) { return !isPair && (add(t), true); }},
                   Do{[&](H& h) { return Of(h).Remove(key, value); },
                      [&](T& t) {
                          if (member && std::erase(t[key], value) && t[key].empty()) t.erase(key);
                          return member;
                      }},
                   Do{[&](H& h) { return value > 3 || Of(h).Remove(key); },
                      [&](T& t) { return value > 3 || t.erase(key) > 0; }},
                   Do{[&](H& h) {
                          cow_List<int> values(9);
                          const bool was = Of(h).ConstGetValues(key, values);
                          Require(was == member && std::equal(values.begin(), values.end(),
                                                              chain.begin(), chain.end()),
                                  "values");
                          return Of(h).IsMember(key) && Of(h).IsMember(key, value);
                      },
                      [&](T&) { return isPair; }},
                   Do{[&](H& h) {
                          if (member) Of(h).Get(key) = Of(h).ConstGet(key) + 1;
                      },
                      [&](T& t) {
                          if (member) ++t[key].front();
                      }});
    }
    static int Quarters(const int& a, const int& b) { return a / 4 - b / 4; }
};

template <class T>
struct BlockedModel {
    using Value = omi_BlockedArray<T>;
    struct Twin {
        unsigned shift;
        std::map<unsigned, int> cells;
    };
    static std::pair<Value, Twin> New(unsigned i) {
        return {Value(4 * i, 8 + i / 2), {8 + i / 2, {}}};
    }

    // A cell that was never written is a null or, beside one that was, empty.
    static bool Same(const Value& a, const Twin& twin) {
        for (const auto& [at, code] : twin.cells)
            if (!a.GetCell(at) || !(*a.GetCell(at) == As<T>(code))) return false;
        for (unsigned at = 0; at < 1 << 18; at += 1u << twin.shift) {
            const auto block = twin.cells.lower_bound(at);
            const bool present =
                block != twin.cells.end() && block->first >> twin.shift == at >> twin.shift;
            if (present != (a.GetCell(at) != nullptr)) return false;
            if (present && !twin.cells.contains(at + 1) && !(*a.GetCell(at + 1) == T()))
                return false;
        }
        return true;
    }
    static void MixInto(std::uint64_t& sum, const Value& a, const Twin& twin) {
        for (const auto& [at, code] : twin.cells) Mix(sum, at), Mix(sum, *a.GetCell(at));
    }

    static void Step(Edit<BlockedModel>& edit) {
        Program& p = edit.p;
        const unsigned at = p.Key() & 0x3ffff;
        const int number = p.Int(0, 9999);
        const auto own = edit.twin.cells.lower_bound(p.Key() & 0x3ffff);
        const bool isOwn = own != edit.twin.cells.end() && p.OneIn(4);
        const unsigned slots = p.Below(9), shift = p.Int(7, 9);
        const T made = As<T>(number);
        if (p.OneIn(64))
            return edit.Both(Do{[&](Value& a) { a = Value(slots, shift); },
                                [&](Twin& t) {
                                    t = {shift, {}};
                                }});
        edit.Both(Do{[&](Value& a) { a.SetCell(at, isOwn ? *a.GetCell(own->first) : made); },
                     [&](Twin& t) { t.cells[at] = isOwn ? own->second : number; }});
    }
};

template <class V>
using OwnedUint = MapModel<Owned<omi_UintTable<V, Policy>>, unsigned, V>;
template <class V>
using OwnedInt = MapModel<Owned<omi_IntTable<V, Policy>>, int, V>;

}  // namespace

std::vector<Model> Keyed() {
    return {{"Tree", 15482674880943742270u, Run<MapModel<cow_Btree<int, int>, int, int>>::Of},
            {"TreeOfTexts", 6984424370539892423u,
             Run<MapModel<cow_Btree<cow_String, Boxed>, cow_String, Boxed>>::Of},
            {"Map", 14811794033855417486u, Run<MapModel<cow_Map<int, int>, int, int>>::Of},
            {"MapOfTexts", 1187494545005453349u,
             Run<MapModel<cow_Map<cow_String, Boxed>, cow_String, Boxed>>::Of},
            {"TableByValue", 14811794033855417486u, Run<MapModel<cow_IntTableInt, int, int>>::Of},
            {"UintTableOfInt", 1026413928735776849u, Run<OwnedUint<int>>::Of},
            {"IntTableOfDouble", 3745928115159225585u, Run<OwnedInt<double>>::Of},
            {"IntTableOfString", 3252119817607275448u, Run<OwnedInt<cow_String>>::Of},
            {"HashTable", 12887639722156542396u,
             Run<MapModel<Owned<Hashed<void*, unsigned>>, void*, unsigned>>::Of},
            {"HashTableOfAddresses", 15248287101077399u,
             Run<MapModel<Owned<Hashed<unsigned, void*>>, unsigned, void*>>::Of},
            {"GenericTree", 4914982590156318922u,
             Run<MapModel<KZMBasTree<int, cow_String>, int, cow_String>>::Of},
            {"MultiMap", 15266243106163387362u,
             Run<MultiMapModel<Owned<omi_IntMultiMap<int, Policy>>>>::Of},
            {"MultiMapByValue", 12649475324575153472u, Run<MultiMapModel<cow_IntMultiMapInt>>::Of},
            {"BlockedArrayOfInt", 3990505528180271234u, Run<BlockedModel<int>>::Of},
            {"BlockedArrayOfString", 9102830721726777398u, Run<BlockedModel<cow_String>>::Of}};
}
}  // namespace models
