#include "tiny_heap.h"

#include <alloc/tiny_heap_hook.h>

#include <algorithm>

#include "tiny_system.h"

namespace tiny_heap {

constinit State g_state;
constinit std::uint8_t g_unitsOfChunk[kRegion >> kChunkShift] = {};

namespace {

constexpr std::size_t kChunk = std::size_t{1} << kChunkShift;
constexpr unsigned kBatch = 256;        // loose blocks that a thread gets at once
constexpr unsigned kFreshUnits = 1024;  // what it gets of fresh memory: a page

// Chains that full stocks handed over, to be passed on without walking through them.
struct Chains {
    static constexpr unsigned kMost = 4096;
    unsigned m_count;
    Chain m_chains[kMost];  // of kMostKept blocks each
};

// Everything here is under the lock.
constinit Stock g_central[kSizes] = {};  // loose blocks, and those never used
constinit Chains g_chains[kSizes] = {};
constinit std::uint64_t g_blocksOut = 0;  // not in the central stock: with users or threads
constinit std::size_t g_chunks = 1;       // begun, the first of which is never used
constinit std::uint32_t g_starts = 0;
constinit ThreadCache* g_caches = nullptr;
constinit bool g_refused = false;      // the region could not be had; not asked again
constinit bool g_releaseIdle = false;  // stopped with blocks alive: the last one ends the region

struct Guard {
    Guard() { tiny_system::Lock(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { tiny_system::Unlock(); }
};

bool HaveRegion() {
    if (g_state.m_regionSize.load(std::memory_order_relaxed) != 0) return true;
    if (g_refused) return false;
    char* const region = tiny_system::Reserve(kRegion, kChunk);
    g_refused = !region;
    if (!region) return false;
    g_state.m_region.store(region, std::memory_order_relaxed);
    g_state.m_regionSize.store(kRegion, std::memory_order_release);
    return true;
}

void ReleaseRegion() {
    g_releaseIdle = false;
    g_refused = false;
    const std::size_t size = g_state.m_regionSize.exchange(0);
    if (size == 0) return;
    tiny_system::Release(g_state.m_region.load(), size);
    std::fill(g_central, g_central + kSizes, Stock{});
    for (Chains& each : g_chains) each.m_count = 0;
    g_chunks = 1;
}

bool BeginChunk(Stock& central, unsigned units) {
    if (!HaveRegion() || g_chunks == kRegion >> kChunkShift) return false;
    if (!tiny_system::Commit(g_state.m_region.load() + g_chunks * kChunk, kChunk)) return false;
    g_unitsOfChunk[g_chunks] = static_cast<std::uint8_t>(units);
    central.m_fresh = static_cast<Place>(g_chunks * (kChunk / kUnit));
    central.m_freshEnd = central.m_fresh + static_cast<Place>(kChunk / kUnit / units) * units;
    ++g_chunks;
    return true;
}

// Moves freed blocks, or else fresh ones, into an empty stock; false if there is no memory.
bool Supply(Stock& to, unsigned units, unsigned mostFreed, unsigned mostFresh) {
    Stock& central = g_central[units];
    Chains& chains = g_chains[units];
    if (!central.m_head && chains.m_count > 0) {
        Stock& whole = mostFreed > 1 ? to : central;
        static_cast<Chain&>(whole) = chains.m_chains[--chains.m_count];
        whole.m_count = kMostKept;
        if (mostFreed > 1) {
            g_blocksOut += kMostKept;
            return true;
        }
    }
    if (central.m_head) {
        to.m_head = central.m_head;
        do {
            to.m_tail = central.m_head;
            central.m_head = NextOf(central.m_head);
            ++to.m_count;
        } while (to.m_count < mostFreed && central.m_head);
        SetNext(to.m_tail, 0);
        central.m_count -= to.m_count;
        g_blocksOut += to.m_count;
        return true;
    }
    if (central.m_fresh == central.m_freshEnd && !BeginChunk(central, units)) return false;
    const unsigned left = (central.m_freshEnd - central.m_fresh) / units;
    const unsigned n = std::min(left, mostFresh);
    to.m_fresh = central.m_fresh;
    to.m_freshEnd = central.m_fresh += n * units;
    g_blocksOut += n;
    return true;
}

void TakeBackChain(Stock& from, unsigned units) {
    if (!from.m_head) return;
    Stock& central = g_central[units];
    Chains& chains = g_chains[units];
    if (from.m_count == kMostKept && chains.m_count < Chains::kMost) {
        chains.m_chains[chains.m_count++] = from;
    } else {
        SetNext(from.m_tail, central.m_head);
        if (!central.m_head) central.m_tail = from.m_tail;
        central.m_head = from.m_head;
        central.m_count += from.m_count;
    }
    g_blocksOut -= from.m_count;
    from.m_head = 0;
    from.m_count = 0;
}

void TakeBackOne(Place place, unsigned units) {
    Push(g_central[units], place);
    --g_blocksOut;
}

// Of an empty chain.
bool UseSpare(Stock& stock) {
    if (!stock.m_spare.m_head) return false;
    static_cast<Chain&>(stock) = stock.m_spare;
    stock.m_count = kMostKept;
    stock.m_spare.m_head = 0;
    return true;
}

void MakeSpare(Stock& stock, unsigned units) {
    const Chain full = stock;
    stock.m_head = 0;
    stock.m_count = 0;
    if (UseSpare(stock)) TakeBackChain(stock, units);
    stock.m_spare = full;
}

void Drain(ThreadCache& cache) {
    if (cache.m_hotUnits) TakeBackOne(PlaceOf(cache.m_hot), cache.m_hotUnits);
    cache.m_hotUnits = 0;
    for (unsigned units = 1; units < kSizes; ++units) {
        Stock& stock = cache.m_stocks[units];
        TakeBackChain(stock, units);
        if (UseSpare(stock)) TakeBackChain(stock, units);
        for (; stock.m_fresh != stock.m_freshEnd; stock.m_fresh += units)
            TakeBackOne(stock.m_fresh, units);
    }
    cache.m_generation = 0;
}

// The calling thread's cache, made ready; null while stopped or if it cannot have one.
ThreadCache* Attached(ThreadCache& cache) {
    const std::uint32_t generation = g_state.m_generation.load();
    if (generation == kNoGeneration) return nullptr;
    if (cache.m_generation == generation) return &cache;
    ThreadCache* const fresh = tiny_system::AttachCache();
    if (!fresh) return nullptr;
    fresh->m_hotUnits = 0;
    std::fill(fresh->m_stocks, fresh->m_stocks + kSizes, Stock{});
    fresh->m_generation = generation;
    fresh->m_next = g_caches;
    fresh->m_link = &g_caches;
    if (g_caches) g_caches->m_link = &fresh->m_next;
    g_caches = fresh;
    return fresh;
}

}  // namespace

void* TakeSlowly(ThreadCache& cache, unsigned units) {
    const Guard guard;
    if (ThreadCache* const own = Attached(cache)) {
        Stock& stock = own->m_stocks[units];
        if (!UseSpare(stock) && !Supply(stock, units, kBatch, kFreshUnits / units)) return nullptr;
        return At(Pop(stock, units));
    }
    Stock one{};
    return Supply(one, units, 1, 1) ? At(Pop(one, units)) : nullptr;
}

void GiveBackSlowly(ThreadCache& cache, Place place, unsigned units) {
    const Guard guard;
    if (ThreadCache* const own = Attached(cache)) {
        Stock& full = own->m_stocks[own->m_hotUnits];
        if (full.m_count == kMostKept) MakeSpare(full, own->m_hotUnits);
        if (own->m_stocks[units].m_count == kMostKept) MakeSpare(own->m_stocks[units], units);
        return Push(own->m_stocks[units], place);
    }
    TakeBackOne(place, units);
    if (g_releaseIdle && g_blocksOut == 0) ReleaseRegion();
}

void Start() {
    const Guard guard;
    g_releaseIdle = false;
    if (tiny_system::WatchThreads()) g_state.m_generation.store(++g_starts);
}

void Stop() {
    {
        const Guard guard;
        if (g_state.m_generation.exchange(kNoGeneration) == kNoGeneration) return;
        for (ThreadCache* cache = g_caches; cache; cache = cache->m_next) Drain(*cache);
        g_caches = nullptr;
        g_releaseIdle = true;
        if (g_blocksOut == 0) ReleaseRegion();
    }
    tiny_system::UnwatchThreads();
}

void ThreadEnds(ThreadCache& cache) {
    const Guard guard;
    if (cache.m_generation != g_state.m_generation.load()) return;
    Drain(cache);
    *cache.m_link = cache.m_next;
    if (cache.m_next) cache.m_next->m_link = cache.m_link;
}

}  // namespace tiny_heap

mem_TinyFigures mem_TinyState() {
    const tiny_heap::Guard guard;
    using namespace tiny_heap;
    return {kInUse, g_state.m_regionSize.load() != 0, (g_chunks - 1) << kChunkShift, g_blocksOut};
}

void mem_RefuseTinyRegion(bool refuse) {
    const tiny_heap::Guard guard;
    tiny_heap::g_refused = refuse;
}
