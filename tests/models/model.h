#pragma once
#include <cow/cow_NullValue.h>
#include <host/host_heap.h>
#include <models/program.h>

#include <array>
#include <bit>
#include <concepts>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

// A model tests one family of values: a few of them copy and change one another, each beside a twin
// of the standard library that must always equal it. A model M has
//
//     using Value = ...; using Twin = ...;
//     static bool Same(const Value&, const Twin&);  // everything that can be seen of the value
//     static void Step(Edit<M>&);                   // draws one edit and calls it
//     static std::pair<Value, Twin> New(unsigned i);     // optional: the i-th pair at the start
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
    if constexpr (std::is_pointer_v<T>) {
        Mix(sum, reinterpret_cast<std::uintptr_t>(part));
    } else if constexpr (std::is_floating_point_v<T>) {
        Mix(sum, std::bit_cast<std::uint64_t>(static_cast<double>(part)));
    } else if constexpr (std::integral<T>) {
        sum = (std::rotl(sum, 23) ^ static_cast<std::uint64_t>(part)) * 0x9E3779B97F4A7C15u;
    } else if constexpr (requires { std::string_view(part); }) {
        for (const char c : std::string_view(part)) Mix(sum, c);
    } else if constexpr (requires { part.begin(); }) {
        for (const auto& each : part) Mix(sum, each);
    } else if constexpr (requires { part.Code(); }) {
        Mix(sum, part.Code());
    } else {
        const auto& [first, second] = part;
        Mix(sum, first);
        Mix(sum, second);
    }
}

// What is done to a value, and to its twin.
template <class OnValue, class OnTwin>
struct Do {
    OnValue onValue;
    OnTwin onTwin;
};
template <class OnValue, class OnTwin>
Do(OnValue, OnTwin) -> Do<OnValue, OnTwin>;

// One edit of a value and its twin, with operands from the program or from another pair, which may
// be the same one.
template <class M>
class Edit {
public:
    using Value = typename M::Value;
    using Twin = typename M::Twin;

    Program& p;
    const Twin& twin;
    const Value& other;
    const Twin& otherTwin;

    // Does one of the edits to both and compares what it returns; a model may call this several
    // times. While memory is refused, the value's part is repeated with the 1st, 2nd, ...
    // allocation failing until it succeeds; each time the value must be as before or as after it.
    template <class... Edits>
    void OneOf(const Edits&... edits) {
        unsigned left = p.Below(sizeof...(edits));
        ((left-- == 0 ? Both(edits) : void()), ...);
    }

    template <class OnValue, class OnTwin>
    void Both(const Do<OnValue, OnTwin>& edit) {
        Twin after = m_twin;
        if constexpr (std::is_void_v<std::invoke_result_t<OnTwin, Twin&>>) {
            edit.onTwin(after);
            Repeat(
                after, [&] { return edit.onValue(m_value), 0; }, 0);
        } else {
            const auto expected = edit.onTwin(after);
            Repeat(
                after, [&] { return edit.onValue(m_value); }, expected);
        }
        m_twin = std::move(after);
    }

private:
    template <class>
    friend class Run;
    Edit(Program& program, Value& v, Twin& t, const Value& o, const Twin& ot, std::uint64_t& s,
         bool r)
        : p(program),
          twin(t),
          other(o),
          otherTwin(ot),
          m_value(v),
          m_twin(t),
          m_sum(s),
          m_refuse(r) {}

    template <class Operation, class Result>
    void Repeat(Twin& after, Operation operation, const Result& expected) {
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
            if (M::Same(m_value, m_twin)) continue;
            if constexpr (requires { M::ReadBack(m_value); }) after = M::ReadBack(m_value);
            return Require(M::Same(m_value, after), "a refusal left neither before nor after");
        }
    }

    Value& m_value;
    Twin& m_twin;
    std::uint64_t& m_sum;
    bool m_refuse;
};

template <class M>
class Run {
public:
    // The checksum of all results and of the final values.
    static std::uint64_t Of(Program program, bool refuse) {
        struct Watched {
            Watched() { host_heap::Watch(); }
            ~Watched() { host_heap::Unwatch(); }
        } watched;
        std::uint64_t sum = 0x243F6A8885A308D3u;
        {
            Run run;
            while (!program.AtEnd()) run.Step(program, sum, refuse);
            run.CheckAll();
            for (const Pair& each : run.m_all) MixValue(sum, each);
        }
        cow_ReleaseNullValues();
        Require(host_heap::g_probe.live == 0, "blocks leaked");
        return sum;
    }

private:
    using Pair = std::pair<typename M::Value, typename M::Twin>;

    static Pair New(unsigned i) {
        if constexpr (requires { M::New(i); })
            return M::New(i);
        else
            return Pair();
    }
    static void MixValue(std::uint64_t& sum, const Pair& pair) {
        if constexpr (requires { M::MixInto(sum, pair.first, pair.second); })
            M::MixInto(sum, pair.first, pair.second);
        else
            Mix(sum, pair.first);
    }

    void Step(Program& program, std::uint64_t& sum, bool refuse) {
        Pair& pair = m_all[program.Below(3)];
        const Pair& other = m_all[program.Below(3)];
        Edit<M> edit(program, pair.first, pair.second, other.first, other.second, sum, refuse);
        if (program.OneIn(8))
            edit.Both(Do{[&](auto& value) { value = other.first; },
                         [&](auto& twin) { twin = typename M::Twin(other.second); }});
        else
            M::Step(edit);
        Require(M::Same(pair.first, pair.second), "the edited value differs");
        if constexpr (requires { pair.first == other.first, pair.second == other.second; })
            Require((pair.first == other.first) == (pair.second == other.second), "== differs");
        if (++m_steps % 16 == 0) CheckAll();
    }
    void CheckAll() const {
        for (const Pair& each : m_all) Require(M::Same(each.first, each.second), "a value differs");
    }

    std::array<Pair, 3> m_all{New(0), New(1), New(2)};
    unsigned m_steps = 0;
};

// A value that only Copy() copies.
template <class T>
class Owned {
public:
    template <class... Args>
    explicit Owned(Args... args) : m_object(new T(args...)) {}
    Owned(const Owned& other) : m_object(other->Copy()) {}
    Owned(Owned&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Owned& operator=(Owned other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Owned() { delete m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    auto begin() const { return std::as_const(*m_object).begin(); }
    auto end() const { return std::as_const(*m_object).end(); }
    bool operator==(const Owned& other) const { return *m_object == *other.m_object; }

private:
    T* m_object;
};

struct Model {
    const char* name;
    std::uint64_t sum;  // of two programs; the same on every platform
    std::uint64_t (*run)(Program program, bool refuse);
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
