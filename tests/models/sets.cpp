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
    bool operator==(const Bits& other) const {
        const omi_BlkBitVect& base = *this;
        const bool same = Contains(other) && other.Contains(*this);
        Require(base == *this && (same || !(base == other)), "equality of shape");
        return same;
    }
    std::pair<unsigned, unsigned> Around(unsigned bit) const {
        unsigned up = bit, down = bit;
        omi_BlkBitVectTrav walk(this);
        if (!walk.SetCurrent(up, true)) up = ~0u;
        if (!walk.SetCurrent(down, false)) down = ~0u;
        return {up, down};
    }
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

struct SetTwin : std::set<int, ByMagnitude> {
    using set::set;
    SetTwin(const int* values, int n) : set(values, values + n) {}
    void Insert(int v) { insert(v); }
    void Remove(int v) { erase(v); }
    bool IsMember(int v) const { return contains(v); }
    void Clear() { clear(); }
    void operator+=(const SetTwin& other) { insert(other.begin(), other.end()); }
    void operator-=(const SetTwin& other) {
        std::erase_if(*this, [&](int v) { return other.contains(v); });
    }
    void operator&=(const SetTwin& other) {
        std::erase_if(*this, [&](int v) { return !other.contains(v); });
    }
    void operator^=(const SetTwin& other) {
        for (const int v : other)
            if (!insert(v).second) erase(v);
    }
    bool Contains(const SetTwin& other) const {
        return std::includes(begin(), end(), other.begin(), other.end(), ByMagnitude());
    }
    bool HasOverlap(const SetTwin& other) const {
        return std::any_of(begin(), end(), [&](int v) { return other.contains(v); });
    }
    // With ends in the wrong order, and in two words, the bits of the last word are set.
    void SetFromTo(unsigned from, unsigned to) {
        if (from > to && from / 32 != to / 32) from = to & ~31u;
        for (unsigned bit = from; bit <= to; ++bit) Insert(static_cast<int>(bit));
    }
    std::pair<unsigned, unsigned> Around(unsigned bit) const {
        const auto above = lower_bound(int(bit)), below = upper_bound(int(bit));
        return {above == end() ? ~0u : *above, below == begin() ? ~0u : *std::prev(below)};
    }
};

template <class Set>
struct SetModel {
    using Value = Set;
    using Twin = SetTwin;
    static constexpr bool kBits = std::is_same_v<Set, Bits>;

    static bool Same(const Set& set, const Twin& twin) {
        if constexpr (!kBits) {
            KZMBasVector<int> out(3, 77);
            set.Members(out);
            if (!Equal(out, twin)) return false;
        }
        return set.IsEmpty() == twin.empty() &&
               static_cast<std::size_t>(set.Size()) == twin.size() && Equal(Listed(set), twin);
    }

    static void Step(Run<SetModel>& run) {
        Program& p = run.p;
        // Walks over a bit vector that reaches to its end take long.
        const auto draw = [&] {
            const int any = static_cast<int>(p.Key() & 0xfffff);
            return kBits || p.OneIn(2) ? any : -any;
        };
        int v = draw(), numbers[8];
        if (!kBits && p.Below(1000) == 999) v = p.OneIn(2) ? 2147483647 : -2147483647 - 1;
        const auto near = run.ToEdit().lower_bound(v);
        if (near != run.ToEdit().end() && p.OneIn(3)) v = *near;
        for (int& each : numbers) each = draw();
        const auto insert = [&](auto& s) { s.Insert(v); };
        if constexpr (kBits) {
            const unsigned from = v, to = from + p.Below(300) - std::min(from, 40u);
            const auto range = [&](auto& s) { s.SetFromTo(from, to); };
            const auto seek = [&](auto& s) { return s.Around(from); };
            const auto relate = [&](auto& s) {
                return std::pair(s.Contains(run.Other(s)), s.HasOverlap(run.Other(s)));
            };
            if (p.OneIn(2)) return run.OneOf(range, relate, seek);
        } else {
            if (p.OneIn(4)) return run.Both([&]<class S>(S& s) { s += S(numbers, 8); });
        }
        if (p.OneIn(3))
            return run.OneOf([&](auto& s) { s += run.Other(s); },
                             [&](auto& s) { s -= run.Other(s); },
                             [&](auto& s) { s &= run.Other(s); },
                             [&](auto& s) { s ^= run.Other(s); }, [](auto& s) { s.Clear(); });
        run.OneOf(
            insert, insert, insert, [&](auto& s) { s.Remove(v); },
            [&](auto& s) { return s.IsMember(v); });
    }
};

struct GeneratedModel {
    using Value = omi_GeneratedSet;
    struct Twin : std::vector<int> {  // the members, in 64 bits, in which nothing wraps
        int count = 0;
        void Insert(std::int64_t start, std::int64_t end, std::int64_t step) {
            ++count;
            if (step == 0 || (start == 1 && end == 0)) return;
            const std::int64_t n = (start < end ? end - start : start - end) / std::abs(step);
            for (std::int64_t i = 0, by = start < end ? std::abs(step) : -std::abs(step); i <= n;
                 ++i)
                push_back(static_cast<int>(start + i * by));
        }
        void operator+=(const Twin& other) {
            count += other.count;
            insert(end(), other.begin(), other.end());
        }
        void Clear() { *this = Twin(); }
    };

    static bool Same(const Value& set, const Twin& twin) {
        const std::set<int> sorted(twin.begin(), twin.end());
        for (const int v : {-40, -7, -1, 0, 1, 2, 5, 30, 2147483647, -2147483647 - 1})
            if (set.IsMember(v) != sorted.contains(v)) return false;
        return set.Count() == twin.count && Equal(set, twin);
    }

    static void Step(Run<GeneratedModel>& run) {
        Program& p = run.p;
        int start = p.Int(-40, 40), end = p.Int(-40, 40), step = p.Int(-7, 7);
        if (p.OneIn(8)) {
            start = static_cast<int>(p.Key());
            end = static_cast<int>(p.Key());
            step = p.OneIn(2) ? 2147483647 : -2147483647 - 1;
        }
        const auto insert = [&](auto& s) { s.Insert(start, end, step); };
        if (run.ToEdit().count > 20) return run.Both([](auto& s) { s.Clear(); });
        run.OneOf(insert, insert, [&](auto& s) { s += run.Other(s); });
    }
};

}  // namespace

std::vector<Model> Sets() {
    return {{"Set", 15041978245915909347u, Run<SetModel<omi_Set>>::Of},
            {"SparseSet", 15041978245915909347u, Run<SetModel<omi_SparseSet>>::Of},
            {"BitVector", 5080931090622675744u, Run<SetModel<Bits>>::Of},
            {"GeneratedSet", 4413232788417285856u, Run<GeneratedModel>::Of}};
}

}  // namespace models
