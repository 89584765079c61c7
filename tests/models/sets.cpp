#include <models/model.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <set>

namespace models {
namespace {

// The order in which sets list their members: negative ones first, by increasing magnitude.
struct ByMagnitude {
    bool operator()(int a, int b) const {
        return (a < 0) != (b < 0) ? a < 0 : a < 0 ? a > b : a < b;
    }
};

// The bit vector with the interface of the sets.
struct Bits : omi_BlkBitVect {
    void Insert(int v) { SetBit(static_cast<unsigned>(v)); }
    void Remove(int v) { UnsetBit(static_cast<unsigned>(v)); }
    bool IsMember(int v) const { return IsSet(static_cast<unsigned>(v)); }
    bool IsEmpty() const { return Size() == 0; }
    void operator+=(const Bits& other) { *this |= other; }
    bool operator==(const Bits& other) const { return Contains(other) && other.Contains(*this); }
};

std::vector<int> Listed(const omi_BlkBitVect& set) {
    std::vector<int> up, down;
    omi_BlkBitVectTrav walk(&set);
    unsigned i;
    for (bool more = walk.Last(i); more; more = walk.Prev(i)) down.push_back(static_cast<int>(i));
    for (bool more = walk.First(i); more; more = walk.Next(i)) up.push_back(static_cast<int>(i));
    Require(std::equal(up.begin(), up.end(), down.rbegin(), down.rend()), "the walk back");
    return up;
}
template <class Set>
requires requires(const Set& set) { set.begin(); }
std::vector<int> Listed(const Set& set) { return std::vector<int>(set.begin(), set.end()); }

template <class Set>
struct SetModel {
    using Value = Set;
    using Twin = std::set<int, ByMagnitude>;
    static constexpr bool kBits = std::is_same_v<Set, Bits>;

    static bool Same(const Set& set, const Twin& twin) {
        const std::vector<int> members(twin.begin(), twin.end());
        if constexpr (!kBits) {
            KZMBasVector<int> out(3, 77);
            set.Members(out);
            if (!std::equal(out.begin(), out.end(), members.begin(), members.end())) return false;
        }
        return set.IsEmpty() == members.empty() &&
               static_cast<std::size_t>(set.Size()) == members.size() && Listed(set) == members;
    }
    static void MixInto(std::uint64_t& sum, const Set& set, const Twin&) { Mix(sum, Listed(set)); }

    // Members of this set alone, of both, of the other alone.
    static void Combine(Twin& twin, const Twin& other, bool mine, bool both, bool others) {
        Twin all = twin;
        all.insert(other.begin(), other.end());
        std::erase_if(all, [&](int v) {
            return !(!twin.contains(v) ? others : other.contains(v) ? both : mine);
        });
        twin = all;
    }

    static void Step(Edit<SetModel>& edit) {
        using S = Set;
        using T = Twin;
        Program& p = edit.p;
        // Walks over a bit vector that reaches to its end take long.
        const auto draw = [&] {
            const int any = static_cast<int>(p.Key() & 0xfffff);
            return kBits || p.OneIn(2) ? any : -any;
        };
        int v = draw();
        if (!kBits && p.Below(1000) == 999) v = p.OneIn(2) ? 2147483647 : -2147483647 - 1;
        const auto near = edit.twin.lower_bound(v);
        if (near != edit.twin.end() && p.OneIn(3)) v = *near;
        int numbers[8];
        for (int& each : numbers) each = draw();
        const T others = edit.otherTwin;
        const unsigned low = static_cast<unsigned>(v),
                       high = low + p.Below(300) - std::min(low, 40u);
        const auto insert = Do{[&](S& s) { s.Insert(v); }, [&](T& t) { t.insert(v); }};
        const auto remove = Do{[&](S& s) { s.Remove(v); }, [&](T& t) { t.erase(v); }};
        const auto read =
            Do{[&](S& s) { return s.IsMember(v); }, [&](T& t) { return t.contains(v); }};
        const auto clear = Do{[](S& s) { s.Clear(); }, [](T& t) { t.clear(); }};
        const auto add =
            Do{[&](S& s) { s += edit.other; }, [&](T& t) { Combine(t, others, 1, 1, 1); }};
        const auto subtract =
            Do{[&](S& s) { s -= edit.other; }, [&](T& t) { Combine(t, others, 1, 0, 0); }};
        const auto intersect =
            Do{[&](S& s) { s &= edit.other; }, [&](T& t) { Combine(t, others, 0, 1, 0); }};
        const auto differ =
            Do{[&](S& s) { s ^= edit.other; }, [&](T& t) { Combine(t, others, 1, 0, 1); }};
        if constexpr (kBits) {
            const auto range = Do{[&](S& s) { s.SetFromTo(low, high); },
                                  [&](T& t) {
                                      for (unsigned bit = low; bit <= high; ++bit)
                                          t.insert(int(bit));
                                      if (low > high && low / 32 != high / 32)
                                          for (unsigned bit = high & ~31u; bit <= high; ++bit)
                                              t.insert(int(bit));
                                  }};
            const auto relate =
                Do{[&](S& s) {
                       return (s.Contains(edit.other) ? 1 : 0) + (s.HasOverlap(edit.other) ? 2 : 0);
                   },
                   [&](T& t) {
                       const auto in = [&](int m) { return t.contains(m); };
                       return (std::all_of(others.begin(), others.end(), in) ? 1 : 0) +
                              (std::any_of(others.begin(), others.end(), in) ? 2 : 0);
                   }};
            const auto seek =
                Do{[&](S& s) {
                       unsigned up = low, down = low;
                       omi_BlkBitVectTrav walk(&s);
                       if (!walk.SetCurrent(up, true)) up = ~0u;
                       if (!walk.SetCurrent(down, false)) down = ~0u;
                       return std::pair(up, down);
                   },
                   [&](T& t) {
                       const auto above = t.lower_bound(v), below = t.upper_bound(v);
                       return std::pair(above == t.end() ? ~0u : unsigned(*above),
                                        below == t.begin() ? ~0u : unsigned(*std::prev(below)));
                   }};
            if (p.OneIn(2)) return edit.OneOf(range, relate, seek);
        } else {
            const auto several = Do{[&](S& s) {
                                        if constexpr (requires { s.Insert(numbers, 8); })
                                            s.Insert(numbers, 8);
                                        else
                                            s += S(numbers, 8);
                                    },
                                    [&](T& t) { t.insert(numbers, numbers + 8); }};
            const auto rebuild = Do{[&](S& s) { s = S(edit.other.begin(), edit.other.end()); },
                                    [&](T& t) { t = others; }};
            if (p.OneIn(4)) return edit.OneOf(several, rebuild);
        }
        p.OneIn(3) ? edit.OneOf(add, subtract, intersect, differ, clear)
                   : edit.OneOf(insert, insert, insert, remove, read);
    }
};

struct GeneratedModel {
    using Value = omi_GeneratedSet;
    struct Range {
        int start, end, step;
    };
    using Twin = std::vector<Range>;

    // In 64 bits, in which nothing wraps.
    static std::vector<int> Members(const Range& r) {
        std::vector<int> members;
        const std::int64_t step = r.step < 0 ? -std::int64_t{r.step} : r.step;
        if (step == 0 || (r.start == 1 && r.end == 0)) return members;
        if (r.start <= r.end)
            for (std::int64_t v = r.start; v <= r.end; v += step)
                members.push_back(static_cast<int>(v));
        else
            for (std::int64_t v = r.start; v >= r.end; v -= step)
                members.push_back(static_cast<int>(v));
        return members;
    }
    static bool Same(const Value& set, const Twin& twin) {
        std::vector<int> members;
        for (const Range& range : twin)
            for (const int each : Members(range)) members.push_back(each);
        const std::set<int> sorted(members.begin(), members.end());
        for (const int v : {-40, -7, -1, 0, 1, 2, 5, 30, 2147483647, -2147483647 - 1})
            if (set.IsMember(v) != sorted.contains(v)) return false;
        return set.Count() == static_cast<int>(twin.size()) && Listed(set) == members;
    }

    static void Step(Edit<GeneratedModel>& edit) {
        using S = Value;
        using T = Twin;
        Program& p = edit.p;
        Range r{p.Int(-40, 40), p.Int(-40, 40), p.Int(-7, 7)};
        if (p.OneIn(8))
            r = {static_cast<int>(p.Key()), static_cast<int>(p.Key()),
                 p.OneIn(2) ? 2147483647 : -2147483647 - 1};
        const auto clear = Do{[](S& s) { s.Clear(); }, [](T& t) { t.clear(); }};
        if (edit.twin.size() > 20) return edit.Both(clear);
        const auto insert =
            Do{[&](S& s) { s.Insert(r.start, r.end, r.step); }, [&](T& t) { t.push_back(r); }};
        const auto append = Do{[&](S& s) { s += edit.other; },
                               [&](T& t) {
                                   const T o = edit.otherTwin;
                                   t.insert(t.end(), o.begin(), o.end());
                               }};
        edit.OneOf(insert, insert, append);
    }
};

}  // namespace

std::vector<Model> Sets() {
    return {{"Set", 5596820317359096490u, Run<SetModel<omi_Set>>::Of},
            {"SparseSet", 5596820317359096490u, Run<SetModel<omi_SparseSet>>::Of},
            {"BitVector", 6184404238106183282u, Run<SetModel<Bits>>::Of},
            {"GeneratedSet", 4413232788417285856u, Run<GeneratedModel>::Of}};
}

}  // namespace models
