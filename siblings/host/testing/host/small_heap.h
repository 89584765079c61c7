#pragma once
#include <host/host_hand.h>
#include <kzm_export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

// Blocks of up to 512 bytes, and of a few larger sizes, without a header each. They lie in one
// reserved stretch of addresses, so that a subtraction tells them from all other blocks. A chunk of
// 64 KiB holds blocks of one size and belongs to the thread that takes blocks from it; its record
// lies at the start of the stretch. A chunk all of whose blocks are free begins anew in the order
// of addresses, for any size, or goes back to the system. Free blocks are chained through their
// first four bytes.
//
// A chunk of cells begins with a byte for each of them: the parts that have been given back while
// others are alive. A cell is on its way as a block once all have been.
//
// Without the lock a thread touches only its own hand and cache and the chunks that it owns. What
// belongs to nobody, between threads and while the heap is stopped, is owned by a central cache
// under the lock.
namespace small_heap {

// The address sanitizer and valgrind shall see every block.
#if defined(__SANITIZE_ADDRESS__) || defined(KZM_PLAIN_HEAP)
inline constexpr bool kInUse = false;
#else
inline constexpr bool kInUse = true;
#endif

using host_heap::ClassAt;
using host_heap::ClassOf;
using host_heap::Hand;
inline constexpr std::size_t kLargest = host_heap::kLargestSmall;
inline constexpr unsigned kLargestClass = ClassOf(kLargest);
inline constexpr unsigned kClasses = host_heap::kSmallClasses;
using host_heap::kCell;
using host_heap::kCellParts;
using host_heap::kFirstCellClass;
using host_heap::OffsetOf;
inline constexpr unsigned kUnit = 4;  // places count in these
inline constexpr unsigned kChunkShift = 16;
inline constexpr unsigned kRecordShift = 6;
inline constexpr std::size_t kRecord = std::size_t{1} << kRecordShift;
inline constexpr std::size_t kChunk = std::size_t{1} << kChunkShift;
inline constexpr auto kRegion =
    static_cast<std::size_t>(std::uint64_t{sizeof(void*) == 8 ? 16384 : 128} << 20);

constexpr unsigned SizeOf(unsigned sizeClass) {
    return sizeClass >= kFirstCellClass ? kCell
           : sizeClass <= 8             ? sizeClass * 4
           : sizeClass <= 20            ? sizeClass * 8 - 32
           : sizeClass <= kLargestClass
               ? sizeClass * 32 - 512
               : static_cast<unsigned>(kLargest) << (sizeClass - kLargestClass);
}
static_assert(ClassOf(128) == 20 && SizeOf(20) == 128 && ClassOf(129) == 21 && SizeOf(21) == 160);
static_assert(SizeOf(kLargestClass) == kLargest && SizeOf(kLargestClass + 1) == 2 * kLargest);

// 0 if there are no blocks of just that size.
constexpr unsigned ClassOfLarger(std::size_t size) {
    for (unsigned i = kLargestClass + 1; i < kFirstCellClass; ++i)
        if (SizeOf(i) == size) return i;
    return 0;
}

// Units from the start of the region, where the records lie; so 0 stands for none.
using Place = std::uint32_t;

struct alignas(kRecord) Chunk {
    std::uint8_t m_classOfParts;  // first: see ClassAt. 0 for cells, else the class
    std::uint8_t m_class;
    std::uint8_t m_first;   // blocks before it are not used: those of the bytes for cells
    bool m_available;       // on the owner's list of such, which has blocks; else among the others
    std::uint16_t m_out;    // blocks with users, or on the owner's list; the first ones too
    std::uint16_t m_begun;  // the others, at the end, are in nobody's stock
    std::uint16_t m_capacity;
    std::atomic<ThreadCache*> m_owner;  // null: the chunk is not in use. Changes under the lock
    Chunk* m_next;
    Chunk* m_previous;
    Place m_free;  // blocks given back
};
static_assert(sizeof(Chunk) == kRecord);

// What a thread has besides the hand.
struct ThreadCache {
    struct Stock {
        Chunk* m_current;  // null or among the others
        Place m_list;      // free blocks of the current chunk
        Place m_fresh;     // its blocks that have not been used yet, all of them out: from here on
        Place m_end;
        Place m_step;   // from one to the next
        bool m_giving;  // rather than taking, when it last came here from the hand
    };
    Hand* m_hand;  // null: the central cache
    Stock m_stocks[kClasses];
    Chunk* m_available[kClasses];
    Chunk* m_others;
    std::atomic<Place> m_away;  // blocks that other threads gave back. Changes under the lock
    ThreadCache* m_next;
    ThreadCache** m_link;  // what points to this one
};

void Start();
void Stop();
void ThreadEnds(Hand& hand);

// Of the calling thread. A closed hand is empty, and all requests come to TakeSlowly and
// GiveBackSlowly.
void CloseHand();
void OpenHand();

// Null if the region cannot be had or is used up, or the thread takes no part.
void* TakeSlowly(unsigned sizeClass);

// False if the block is none of these.
bool GiveBackSlowly(void* block);

// To its owner, another cache: what a user gives back, and what is a cell as a whole if of one.
void SendAway(void* block);
void SendWholeAway(void* block);

// 0 if the block is none of these.
std::size_t SizeOfBlock(const void* block);

// To be called when a block of an owned chunk has gone onto m_free, which was empty before or holds
// all blocks now.
void Settle(ThreadCache& owner, Chunk& chunk);

// A part of a cell that the thread of an open hand gives back.
void GiveBackPart(Hand& hand, void* part);

inline char* At(char* region, Place place) { return region + std::size_t{place} * kUnit; }
inline Place PlaceOf(std::size_t offset) { return static_cast<Place>(offset / kUnit); }
inline Chunk& ChunkOf(char* region, std::size_t offset) {
    return *reinterpret_cast<Chunk*>(region + (offset >> kChunkShift << kRecordShift));
}
inline Place NextOf(const void* block) {
    Place next;
    std::memcpy(&next, block, sizeof next);
    return next;
}
inline void SetNext(void* block, Place next) { std::memcpy(block, &next, sizeof next); }

}  // namespace small_heap

#include <small_current.h>

namespace small_heap {

inline char* PopList(ThreadCache::Stock& stock, char* region) {
    char* const block = At(region, stock.m_list);
    stock.m_list = NextOf(block);
    return block;
}
inline char* PopFresh(ThreadCache::Stock& stock, char* region) {
    char* const block = At(region, stock.m_fresh);
    stock.m_fresh += stock.m_step;
    return block;
}

// Null if that takes more; then TakeSlowly. Who takes one block after the other finds every second
// one in hand; who gives them back finds the hand empty for every second one.
inline void* Take(unsigned sizeClass) {
    Hand& hand = CurrentHand();
    void*& inHand = hand.m_blocks[sizeClass];
    if (void* const block = inHand) {
        inHand = nullptr;
        return block;
    }
    if (hand.m_reach == 0) [[unlikely]]
        return nullptr;
    ThreadCache::Stock& stock = hand.m_cache->m_stocks[sizeClass];
    const bool one = std::exchange(stock.m_giving, false);
    if (stock.m_list != 0) {
        char* const block = PopList(stock, hand.m_region);
        if (!one && stock.m_list != 0) inHand = PopList(stock, hand.m_region);
        return block;
    }
    if (stock.m_fresh == stock.m_end) [[unlikely]]
        return nullptr;
    char* const block = PopFresh(stock, hand.m_region);
    if (!one && stock.m_fresh != stock.m_end) inHand = PopFresh(stock, hand.m_region);
    return block;
}

inline void PutOwn(ThreadCache& owner, Chunk& chunk, void* block, std::size_t offset) {
    const Place before = chunk.m_free;
    SetNext(block, before);
    chunk.m_free = PlaceOf(offset);
    if (--chunk.m_out == chunk.m_first || before == 0) [[unlikely]]
        Settle(owner, chunk);
}

// Two blocks of that stock's size. False if they are not of one chunk that the cache uses.
inline bool PutTwo(ThreadCache& cache, ThreadCache::Stock& stock, char* region, void* first,
                   void* second) {
    const std::size_t offset = OffsetOf(second, region);
    const std::size_t offsetOfFirst = OffsetOf(first, region);
    if ((offset ^ offsetOfFirst) >> kChunkShift != 0) return false;
    Chunk& chunk = ChunkOf(region, offset);
    const bool current = &chunk == stock.m_current;
    if (!current && chunk.m_owner.load(std::memory_order_relaxed) != &cache) return false;
    Place& list = current ? stock.m_list : chunk.m_free;
    const Place before = list;
    SetNext(first, before);
    SetNext(second, PlaceOf(offsetOfFirst));
    list = PlaceOf(offset);
    if (current) return true;
    chunk.m_out = static_cast<std::uint16_t>(chunk.m_out - 2);
    if (chunk.m_out == chunk.m_first || before == 0) [[unlikely]]
        Settle(cache, chunk);
    return true;
}

// By the cache's thread.
inline void Put(ThreadCache& cache, void* block) {
    const std::size_t offset = OffsetOf(block, cache.m_hand->m_region);
    Chunk& chunk = ChunkOf(cache.m_hand->m_region, offset);
    ThreadCache::Stock& stock = cache.m_stocks[chunk.m_class];
    if (&chunk == stock.m_current) {
        SetNext(block, stock.m_list);
        stock.m_list = PlaceOf(offset);
    } else if (chunk.m_owner.load(std::memory_order_relaxed) == &cache) [[likely]] {
        PutOwn(cache, chunk, block, offset);
    } else {
        SendWholeAway(block);
    }
}

// Into the open hand, or to where that has to make room.
inline void PutInHand(Hand& hand, void* block, unsigned sizeClass) {
    void*& inHand = hand.m_blocks[sizeClass];
    void* const before = inHand;
    if (!before) {
        inHand = block;
        return;
    }
    ThreadCache& cache = *hand.m_cache;
    ThreadCache::Stock& stock = cache.m_stocks[sizeClass];
    if (stock.m_giving) {
        inHand = nullptr;
        if (PutTwo(cache, stock, hand.m_region, before, block)) return;
        Put(cache, before);
        Put(cache, block);
    } else {
        stock.m_giving = true;
        inHand = block;
        Put(cache, before);
    }
}

// False if that takes more; then GiveBackSlowly.
inline bool GiveBack(void* block) {
    Hand& hand = CurrentHand();
    const std::size_t offset = OffsetOf(block, hand.m_region);
    if (offset >= hand.m_reach) [[unlikely]]
        return false;
    const unsigned sizeClass = ClassAt(hand.m_region, offset);
    if (sizeClass)
        PutInHand(hand, block, sizeClass);
    else
        GiveBackPart(hand, block);
    return true;
}

}  // namespace small_heap
