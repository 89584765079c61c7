#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Blocks of up to 32 bytes without a header each. They lie in one reserved stretch of addresses, so
// that a subtraction tells them from all other blocks. Its chunks of 64 KiB hold blocks of one size
// each; chunk number to size is a table. Between start and stop every thread keeps a bounded stock
// of each size and exchanges it in batches with the central one; outside, all go to the latter.
// Free blocks are chained through their first four bytes.
namespace tiny_heap {

// Sanitizers shall see every block.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kInUse = false;
#else
inline constexpr bool kInUse = true;
#endif

inline constexpr std::size_t kLargest = 32;
inline constexpr unsigned kUnit = 4;  // sizes and places count in these
inline constexpr unsigned kSizes = kLargest / kUnit + 1;
inline constexpr unsigned kChunkShift = 16;
inline constexpr auto kRegion =
    static_cast<std::size_t>(std::uint64_t{sizeof(void*) == 8 ? 16384 : 128} << 20);
inline constexpr unsigned kMostKept = 512;  // free blocks of a size in the stock of a thread
inline constexpr std::uint32_t kNoGeneration = UINT32_MAX;

// Units from the start of the region; nothing lies at 0, which stands for none.
using Place = std::uint32_t;

struct Chain {
    Place m_head;
    Place m_tail;  // open while the chain is empty
};

struct Stock : Chain {  // free blocks
    unsigned m_count;
    Chain m_spare;  // empty or kMostKept more; keeps small swings away from the central stock
    Place m_fresh;  // blocks that were never used, up to m_freshEnd
    Place m_freshEnd;
};

struct ThreadCache {
    std::uint32_t m_generation;  // of the start that it belongs to; 0: of none
    bool m_ended;
    unsigned m_hotUnits;  // size of the block freed last, which is in no chain; 0: there is none
    void* m_hot;          // so that what is freed and taken by turns costs one step
    ThreadCache* m_next;
    ThreadCache** m_link;  // what points to this one
    Stock m_stocks[kSizes];
};

struct State {
    std::atomic<char*> m_region{nullptr};
    std::atomic<std::size_t> m_regionSize{0};  // 0 while nothing is reserved
    std::atomic<std::uint32_t> m_generation{kNoGeneration};
};
extern constinit State g_state;
extern std::uint8_t g_unitsOfChunk[kRegion >> kChunkShift];

void* TakeSlowly(ThreadCache& cache, unsigned units);
void GiveBackSlowly(ThreadCache& cache, Place place, unsigned units);

void Start();
void Stop();
void ThreadEnds(ThreadCache& cache);

inline char* At(Place place) {
    return g_state.m_region.load(std::memory_order_relaxed) + std::size_t{place} * kUnit;
}
inline Place PlaceOf(const void* block) {
    return static_cast<Place>(
        static_cast<std::size_t>(static_cast<const char*>(block) -
                                 g_state.m_region.load(std::memory_order_relaxed)) /
        kUnit);
}
inline Place NextOf(Place place) {
    Place next;
    std::memcpy(&next, At(place), sizeof next);
    return next;
}
inline void SetNext(Place place, Place next) { std::memcpy(At(place), &next, sizeof next); }

inline void Push(Stock& stock, Place place) {
    SetNext(place, stock.m_head);
    if (!stock.m_head) stock.m_tail = place;
    stock.m_head = place;
    ++stock.m_count;
}

// 0 if the stock is empty.
inline Place Pop(Stock& stock, unsigned units) {
    Place place = stock.m_head;
    if (place) {
        stock.m_head = NextOf(place);
        --stock.m_count;
    } else if (stock.m_fresh != stock.m_freshEnd) {
        place = stock.m_fresh;
        stock.m_fresh += units;
    }
    return place;
}

// Whether a block is one of these; then `offset` is set. Any other block, or null, is not.
inline bool Owns(const void* block, std::size_t& offset) {
    if constexpr (!kInUse) return false;
    const std::size_t size = g_state.m_regionSize.load(std::memory_order_acquire);
    offset = reinterpret_cast<std::uintptr_t>(block) -
             reinterpret_cast<std::uintptr_t>(g_state.m_region.load(std::memory_order_relaxed));
    return offset < size;
}

inline unsigned UnitsAt(std::size_t offset) { return g_unitsOfChunk[offset >> kChunkShift]; }

}  // namespace tiny_heap

#include <tiny_current.h>

namespace tiny_heap {

// For sizes from 1 to kLargest. Null if the region cannot be had or is used up.
inline void* Take(std::size_t size) {
    const auto units = static_cast<unsigned>((size + kUnit - 1) / kUnit);
    ThreadCache& cache = CurrentCache();
    if (cache.m_generation == g_state.m_generation.load(std::memory_order_relaxed)) [[likely]] {
        if (cache.m_hotUnits == units) {
            cache.m_hotUnits = 0;
            return cache.m_hot;
        }
        if (const Place place = Pop(cache.m_stocks[units], units)) return At(place);
    }
    return TakeSlowly(cache, units);
}

inline void GiveBack(void* block, std::size_t offset) {
    const unsigned units = UnitsAt(offset);
    ThreadCache& cache = CurrentCache();
    if (cache.m_generation != g_state.m_generation.load(std::memory_order_relaxed)) [[unlikely]]
        return GiveBackSlowly(cache, PlaceOf(block), units);
    if (const unsigned before = cache.m_hotUnits) {
        Stock& stock = cache.m_stocks[before];
        if (stock.m_count == kMostKept) [[unlikely]]
            return GiveBackSlowly(cache, PlaceOf(block), units);
        Push(stock, PlaceOf(cache.m_hot));
    }
    cache.m_hot = block;
    cache.m_hotUnits = units;
}

}  // namespace tiny_heap
