#pragma once
#include <cow/cow_NullValue.h>
#include <host/host_heap.h>
#include <models/program.h>

#include <array>
#include <bit>
#include <new>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

// A model tests one family of values: three of them copy and change one another, each beside a twin
// made of the standard library that must always equal it. The twin has the family's member names,
// so that an edit is one generic lambda that is called with both. A model M has
//
//     using Value = ...; using Twin = ...;
//     static bool Same(const Value&, const Twin&);  // everything that can be seen of the value
//     static void Step(Run<M>&);                    // draws one edit and does it
//     static std::pair<Value, Twin> New(unsigned i);  // optional: the i-th pair at the start
//     static Twin ReadBack(const Value&);  // optional: a refused edit may stop half way
namespace models {

struct Difference : std::logic_error {
    using std::logic_error::logic_error;
};
inline void Require(bool holds, const char* what) {
    if (!holds) throw Difference(what);
}

template <class T>
void Mix(std::uint64_t& sum, const T& part) {
    if constexpr (requires { part.begin(); })
        for (const auto& each : part) Mix(sum, each);
    else if constexpr (requires { part.CStr(); })
        Mix(sum, std::string(part.CStr()));
    else if constexpr (requires { part.Code(); })
        Mix(sum, part.Code());
    else if constexpr (requires { std::get<0>(part); })
        std::apply([&](const auto&... each) { (Mix(sum, each), ...); }, part);
    else if constexpr (std::is_pointer_v<T>)
        Mix(sum, reinterpret_cast<std::uintptr_t>(part));
    else if constexpr (std::is_floating_point_v<T>)
        Mix(sum, std::bit_cast<std::uint64_t>(static_cast<double>(part)));
    else
        sum = (std::rotl(sum, 23) ^ static_cast<std::uint64_t>(part)) * 0x9E3779B97F4A7C15u;
}

// The checksum of all results and of what the values are at the end, how many edits were drawn, and
// how many allocations were refused.
struct Outcome {
    std::uint64_t sum = 0;
    unsigned steps = 0;
    int refused = 0;
};

// The places of a walk equal themselves, and neither the one before nor the end.
void RequireWalk(const auto& c) {
    auto before = c.end();
    for (auto it = c.begin(); it != c.end(); before = it++) {
        const auto copy = it;
        Require(copy == it && it != before, "the places of a walk");
    }
}

template <class M>
class Run {
public:
    using Value = typename M::Value;
    using Twin = typename M::Twin;

    static Outcome Of(Program program, bool refuse) {
        struct Watched {
            Watched() { host_heap::Watch(); }
            ~Watched() { host_heap::Unwatch(); }
        } watched;
        const Outcome outcome = Run(program, refuse).Go();
        cow_ReleaseNullValues();
        Require(host_heap::g_probe.live == 0, "blocks leaked");
        return outcome;
    }

    Program p;
    const Twin& ToEdit() const { return m_edited->second; }

    // A whole operand of the same kind, which may be the edited one itself.
    const Value& Other(const Value&) const { return m_other->first; }
    const Twin& Other(const Twin&) const { return m_other->second; }

    // Does one of the edits to both and compares what it returns; a step may call this several
    // times. While memory is refused, the value's part is repeated with the 1st, 2nd, ...
    // allocation failing until it succeeds; each time the value must be as before or as after it.
    template <class... Edits>
    void OneOf(const Edits&... edits) {
        unsigned left = p.Below(sizeof...(edits));
        ((left-- == 0 ? Both(edits) : void()), ...);
    }
    void Both(const auto& edit) {
        if (!m_refuse && m_other != m_edited) return Both(edit, m_edited->second);
        Twin after = m_edited->second;
        Both(edit, after);
        m_edited->second = std::move(after);
    }

private:
    using Pair = std::pair<Value, Twin>;

    Run(Program program, bool refuse) : p(program), m_refuse(refuse) {}

    void Both(const auto& edit, Twin& after) {
        if constexpr (std::is_void_v<decltype(edit(after))>) {
            edit(after);
            Repeat(
                after, [&] { return edit(m_edited->first), 0; }, 0);
        } else {
            const auto expected = edit(after);
            Repeat(
                after, [&] { return edit(m_edited->first); }, expected);
        }
    }

    static Pair New([[maybe_unused]] unsigned i) {
        if constexpr (requires { M::New(i); })
            return M::New(i);
        else
            return Pair();
    }

    // Long programs would do little but compare: after a while they do so at each 16th step only.
    Outcome Go() {
        unsigned steps = 0;
        while (!p.AtEnd()) {
            m_edited = &m_all[p.Below(3)];
            m_other = &m_all[p.Below(3)];
            const Value& value = m_edited->first;
            const Twin& twin = m_edited->second;
            if (p.OneIn(8))
                Both([&](auto& copy) { copy = Other(copy); });
            else
                M::Step(*this);
            if (++steps % 16 == 0) CheckAll();
            if (steps > 1000 && steps % 16 != 0) continue;
            Require(M::Same(value, twin), "the edited value differs");
            if constexpr (requires { value == value, twin == twin; })
                Require((value == m_other->first) == (twin == m_other->second), "== differs");
        }
        CheckAll();
        for (const Pair& each : m_all) Mix(m_sum, each.second);
        return {m_sum, steps, m_refused};
    }
    void CheckAll() const {
        for (const Pair& each : m_all) {
            Require(M::Same(each.first, each.second), "a value differs");
            if constexpr (requires { each.first.begin(); }) RequireWalk(each.first);
        }
    }

    template <class Result>
    void Repeat(Twin& after, auto operation, const Result& expected) {
        const Value& value = m_edited->first;
        Mix(m_sum, expected);
        for (long nth = m_refuse;; ++nth) {
            host_heap::g_probe.untilFailure = nth;
            try {
                const auto result = operation();
                host_heap::g_probe.untilFailure = 0;
                return Require(result == expected, "another result");
            } catch (const std::bad_alloc&) {
                host_heap::g_probe.untilFailure = 0;
            }
            Require(m_refuse, "out of memory");
            ++m_refused;
            if (M::Same(value, m_edited->second)) continue;
            if constexpr (requires { M::ReadBack(value); }) after = M::ReadBack(value);
            return Require(M::Same(value, after), "a refusal left neither before nor after");
        }
    }

    const bool m_refuse;
    std::uint64_t m_sum = 0x243F6A8885A308D3u;
    int m_refused = 0;
    std::array<Pair, 3> m_all{New(0), New(1), New(2)};
    Pair* m_edited = nullptr;
    const Pair* m_other = nullptr;
};

bool Equal(const auto& a, const auto& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

struct Model {
    const char* name;
    std::uint64_t sum;  // of two programs; the same on every platform
    Outcome (*run)(Program program, bool refuse);
};
std::vector<Model> Sequences();
std::vector<Model> Keyed();
std::vector<Model> Sets();
std::vector<Model> Services();
inline std::vector<Model> All() {
    std::vector<Model> all;
    for (const auto& group : {Sequences(), Keyed(), Sets(), Services()})
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

}  // namespace models
