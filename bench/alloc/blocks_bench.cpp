// Blocks of a few bytes beside the C library's heap; an argument is a size in bytes.
#include <alloc/mem_alloc.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "support/started.h"
#include "support/workload.h"

namespace {

const bench::Started g_started;

struct Tiny {
    static constexpr const char* kWho = "mem_Tiny";
    static void* Take(std::size_t size) { return mem_OperatorNewTinyThrow(size); }
    static void GiveBack(void* block) { mem_Free(block); }
};
struct General {
    static constexpr const char* kWho = "mem_Malloc";
    static void* Take(std::size_t size) { return mem_Malloc(size); }
    static void GiveBack(void* block) { mem_Free(block); }
};
struct CLibrary {
    static constexpr const char* kWho = "libc::malloc";
    static void* Take(std::size_t size) { return std::malloc(size); }
    static void GiveBack(void* block) { std::free(block); }
};

constexpr std::size_t kMany = 1000000;

// Blocks of four bytes side by side, linked through their memory when they are given back; begun
// anew when the last of kMany is back. Nothing is tested or found out.
struct Bare {
    static constexpr const char* kWho = "floor::links";
    static void* Take(std::size_t) { return s_next++; }
    static void GiveBack(void* block) {
        auto* const back = static_cast<std::uint32_t*>(block);
        *back = s_back;
        s_back = static_cast<std::uint32_t>(back - s_blocks.data());
        if (--s_out == 0) {
            s_out = kMany;
            s_next = s_blocks.data();
        }
    }

private:
    static inline std::vector<std::uint32_t> s_blocks = std::vector<std::uint32_t>(kMany);
    static inline std::uint32_t* s_next = s_blocks.data();
    static inline std::uint32_t s_back = 0;
    static inline std::size_t s_out = kMany;
};

// A block taken and given back at once, as the count of a handle that lives for a call.
template <class Heap>
void TinyPair(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void* const block = Heap::Take(size);
        benchmark::DoNotOptimize(block);
        Heap::GiveBack(block);
    }
    bench::Result(state, size);
}

// Memory that blocks occupy, in pages that they touch.
double BytesEach(std::vector<void*> blocks) {
    constexpr std::uintptr_t kPage = 4096;
    std::size_t pages = 0;
    std::uintptr_t last = 0;
    std::sort(blocks.begin(), blocks.end());
    for (void* const each : blocks) {
        const std::uintptr_t page = reinterpret_cast<std::uintptr_t>(each) / kPage;
        pages += page != last;
        last = page;
    }
    return static_cast<double>(pages * kPage) / static_cast<double>(blocks.size());
}

template <class Heap>
void TakeAndGiveBackMany(benchmark::State& state, const std::vector<std::size_t>& order) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<void*> blocks(kMany);
    for (auto _ : state) {
        for (void*& each : blocks) each = Heap::Take(size);
        for (const std::size_t each : order) Heap::GiveBack(blocks[each]);
    }
    for (void*& each : blocks) each = Heap::Take(size);
    bench::BytesEach(state, BytesEach(blocks));
    for (void* const each : blocks) Heap::GiveBack(each);
    bench::Result(state, order.size());
}

std::vector<std::size_t> InOrder() {
    std::vector<std::size_t> order(kMany);
    for (std::size_t i = 0; i < kMany; ++i) order[i] = i;
    return order;
}

// A million counts of a model that is read and dropped.
template <class Heap>
void TinyBulk(benchmark::State& state) {
    TakeAndGiveBackMany<Heap>(state, InOrder());
}

// The same, dropped in no order: do the blocks that are taken next lie scattered?
template <class Heap>
void TinyScattered(benchmark::State& state) {
    std::vector<std::size_t> order = InOrder();
    std::shuffle(order.begin(), order.end(), std::minstd_rand(1));
    TakeAndGiveBackMany<Heap>(state, order);
}

void Sizes(benchmark::internal::Benchmark* b) { b->ArgName("bytes")->Arg(4)->Arg(32); }
void ManySizes(benchmark::internal::Benchmark* b) {
    b->ArgName("bytes")->Arg(4)->Arg(32)->Unit(benchmark::kMillisecond);
}
void ManyOfFour(benchmark::internal::Benchmark* b) {
    b->ArgName("bytes")->Arg(4)->Unit(benchmark::kMillisecond);
}

KZM_WORKLOAD(TinyPair, Sizes, Tiny, General, CLibrary);
KZM_WORKLOAD(TinyBulk, ManySizes, Tiny, General, CLibrary);
KZM_WORKLOAD(TinyBulk, ManyOfFour, Bare);
KZM_WORKLOAD(TinyScattered, ManySizes, Tiny, General, CLibrary);

}  // namespace
