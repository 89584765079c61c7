// The copy-on-write handle beside shared pointers, on a referent of 24 bytes.
#include <cow/cow_COW.h>

#include <cstdlib>
#include <memory>
#include <utility>

#include "support/started.h"
#include "support/workload.h"
#ifdef KZM_BENCH_BOOST
#include <boost/smart_ptr/local_shared_ptr.hpp>
#include <boost/smart_ptr/make_local_shared.hpp>
#endif

namespace {

const bench::Started g_started;

struct Point {
    double m_at[3] = {1, 2, 3};
};

struct Handle : cow_COW<Point, cow_Direct<Point>> {
    static constexpr const char* kWho = "cow_COW";
    using cow_COW::cow_COW;
    static Handle Make() { return Point(); }
    Point& ForWriting() { return Get(); }
};

template <bool makeShared>
struct Shared {
    static constexpr const char* kWho = makeShared ? "std::shared_ptr" : "std::shared_ptr(new)";
    static std::shared_ptr<Point> New(const Point& from) {
        if constexpr (makeShared) return std::make_shared<Point>(from);
        return std::shared_ptr<Point>(new Point(from));
    }
    static Shared Make() { return {New(Point())}; }
    Point& ForWriting() {
        if (m_point.use_count() != 1) m_point = New(*m_point);
        return *m_point;
    }
    std::shared_ptr<Point> m_point;
};

#ifdef KZM_BENCH_BOOST
// Counts without atomic operations, as ours.
struct Local {
    static constexpr const char* kWho = "boost::local_shared_ptr";
    static Local Make() { return {boost::make_local_shared<Point>()}; }
    Point& ForWriting() {
        if (m_point.local_use_count() != 1) m_point = boost::make_local_shared<Point>(*m_point);
        return *m_point;
    }
    boost::local_shared_ptr<Point> m_point;
};
#else
using Local = bench::Missing;
#endif

// What a handle that lives for a call comes down to: two blocks, each out of a place that keeps one
// and back into it, what lies in them, and two pointers.
class Bare {
public:
    static constexpr const char* kWho = "floor::two blocks";
    static Bare Make() { return Bare(Point()); }
    Bare(const Bare& other) : m_count(other.m_count), m_point(other.m_point) { ++*m_count; }
    Bare& operator=(const Bare&) = delete;
    ~Bare() {
        if (*m_count != 1) {
            --*m_count;
        } else {
            GiveBack(s_point, m_point);
            GiveBack(s_count, m_count);
        }
    }
    Point& ForWriting() {
        if (*m_count != 1) {
            --*m_count;
            m_point = New(s_point, *m_point);
            m_count = New(s_count, 1);
        }
        return *m_point;
    }

private:
    explicit Bare(const Point& point) : m_count(New(s_count, 1)), m_point(New(s_point, point)) {}

    template <class T>
    static T* New(void*& place, const T& value) {
        void* block = place;
        if (block)
            place = nullptr;
        else
            block = std::malloc(sizeof(T));
        return ::new (block) T(value);
    }
    static void GiveBack(void*& place, void* block) {
        if (place)
            std::free(block);
        else
            place = block;
    }

    static inline constinit void* s_point = nullptr;
    static inline constinit void* s_count = nullptr;

    int* m_count;
    Point* m_point;
};

// A value passed on and dropped.
template <class Holder>
void HandleCopyDrop(benchmark::State& state) {
    Holder original = Holder::Make();
    for (auto _ : state) {
        Holder copy = original;
        benchmark::DoNotOptimize(&copy);
        benchmark::ClobberMemory();
    }
    bench::Result(state, static_cast<std::uint64_t>(original.ForWriting().m_at[2]));
}

template <class Holder>
void HandleMakeDrop(benchmark::State& state) {
    std::uint64_t last = 0;
    for (auto _ : state) {
        Holder made = Holder::Make();
        benchmark::DoNotOptimize(&made);
        benchmark::ClobberMemory();
        last = static_cast<std::uint64_t>(made.ForWriting().m_at[2]);
    }
    bench::Result(state, last);
}

// The first write to a copy makes it private.
template <class Holder>
void HandleCopyWrite(benchmark::State& state) {
    Holder original = Holder::Make();
    std::uint64_t last = 0;
    for (auto _ : state) {
        Holder copy = original;
        copy.ForWriting().m_at[0] = 7;
        benchmark::DoNotOptimize(&copy);
        benchmark::ClobberMemory();
        last = static_cast<std::uint64_t>(copy.ForWriting().m_at[0]);
    }
    bench::Result(state, last * 10 + static_cast<std::uint64_t>(original.ForWriting().m_at[0]));
}

void Once(benchmark::internal::Benchmark*) {}

KZM_WORKLOAD(HandleCopyDrop, Once, Handle, Shared<true>, Shared<false>, Local);
KZM_WORKLOAD(HandleMakeDrop, Once, Handle, Shared<true>, Shared<false>, Local, Bare);
KZM_WORKLOAD(HandleCopyWrite, Once, Handle, Shared<true>, Shared<false>, Local, Bare);

}  // namespace
