// The copy-on-write handle beside shared pointers, on a referent of 24 bytes.
#include <cow/cow_COW.h>

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
KZM_WORKLOAD(HandleMakeDrop, Once, Handle, Shared<true>, Shared<false>, Local);
KZM_WORKLOAD(HandleCopyWrite, Once, Handle, Shared<true>, Shared<false>, Local);

}  // namespace
