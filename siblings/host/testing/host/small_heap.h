#pragma once
#include <kzm_export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Blocks of up to 512 bytes without a header each. They lie in one reserved stretch of addresses,
// so that a subtraction tells them from all other blocks. A chunk of 64 KiB holds blocks of one
// size and belongs to the thread that takes blocks from it; its record lies at the start of the
// stretch. A chunk all of whose blocks are free begins anew in the order of addresses, for any
// size, or goes back to the system. Free blocks are chained through their first four bytes.
//
// Without the lock a thread touches only its own cache and the chunks that it owns. What belongs to
// nobody, between threads and while the heap is stopped, is owned by a central cache under the
// lock.
namespace small_heap {

// The address sanitizer and valgrind shall see every block.
#if defined(__SANITIZE_ADDRESS__) || defined(KZM_PLAIN_HEAP)
inline constexpr bool kInUse = false;
#else
inline constexpr bool kInUse = true;
#endif

inline constexpr std::size_t kLargest = 512;
inline constexpr unsigned kUnit = 4;      // places count in these
inline constexpr unsigned kClasses = 33;  // from number 1 on
inline constexpr unsigned kChunkShift = 16;
inline constexpr unsigned kRecordShift = 6;
inline constexpr std::size_t kRecord = std::size_t{1} << kRecordShift;
inline constexpr std::size_t kChunk = std::size_t{1} << kChunkShift;
inline constexpr auto kRegion =
    static_cast<std::size_t>(std::uint64_t{sizeof(void*) == 8 ? 16384 : 128} << 20);

// Steps of 4 bytes up to 32, of 8 up to 128, of 32 beyond.
constexpr unsigned ClassOf(std::size_t size) {
    return static_cast<unsigned>(size <= 32    ? (size + 3) / 4
                                 : size <= 128 ? (size + 39) / 8
                                               : (size + 543) / 32);
}
constexpr unsigned SizeOf(unsigned sizeClass) {
    return sizeClass <= 8    ? sizeClass * 4
           : sizeClass <= 20 ? sizeClass * 8 - 32
                             : sizeClass * 32 - 512;
}
static_assert(ClassOf(128) == 20 && SizeOf(20) == 128 && ClassOf(129) == 21 && SizeOf(21) == 160);
static_assert(ClassOf(kLargest) == kClasses - 1 && SizeOf(kClasses - 1) == kLargest);

// Units from the start of the region, where the records lie; so 0 stands for none.
using Place = std::uint32_t;

struct ThreadCache;

struct alignas(kRecord) Chunk {
    std::atomic<ThreadCache*> m_owner;  // null: the chunk is not in use. Changes under the lock
    Place m_free;                       // blocks given back
    std::uint16_t m_out;                // blocks with users, or on the owner's list
    std::uint16_t m_begun;              // the others, at the end, have not been used yet
    std::uint16_t m_capacity;
    std::uint8_t m_class;
    bool m_available;  // on the owner's list of such, which has blocks; else on that of the others
    Chunk* m_next;
    Chunk* m_previous;
};
static_assert(sizeof(Chunk) == kRecord);

struct OwnChunks {
    Chunk* m_current[kClasses];  // those that the lists are from; among the others
    Chunk* m_available[kClasses];
    Chunk* m_others;
};

// In the thread's own storage, which is scarce.
struct ThreadCache {
    char* m_region = nullptr;  // with m_reach 0 the thread takes no part
    std::size_t m_reach = 0;   // size of the region
    // What is given back and taken by turns costs least, and stays in the cache of the processor:
    void* m_last = nullptr;         // the last block given back, from whichever chunk
    unsigned m_lastClass = 0;       // its size; 0: there is none
    void* m_inHand[kClasses] = {};  // the last but one that was of the size, or null
    Place m_list[kClasses] = {};    // free blocks of the current chunk
    OwnChunks* m_own = nullptr;     // null while it takes no part, as m_region
    std::atomic<Place> m_away{0};   // blocks that other threads gave back. Changes under the lock
    bool m_ended = false;
    ThreadCache* m_next = nullptr;
    ThreadCache** m_link = nullptr;  // what points to this one
};

void Start();
void Stop();
void ThreadEnds(ThreadCache& cache);

// Null if the region cannot be had or is used up, or the thread takes no part.
KZM_API void* TakeSlowly(unsigned sizeClass);

// False if the block is none of these.
KZM_API bool GiveBackSlowly(void* block);

KZM_API void SendAway(void* block);  // to its owner, another cache

// 0 if the block is none of these.
std::size_t SizeOfBlock(const void* block);

// To be called when a block of an owned chunk has gone onto m_free, which was empty before or holds
// all blocks now.
KZM_API void Settle(ThreadCache& owner, Chunk& chunk);

inline std::size_t OffsetOf(const void* block, const char* region) {
    return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(region);
}
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

// Null if that takes more; then TakeSlowly.
inline void* Take(unsigned sizeClass) {
    ThreadCache& cache = CurrentCache();
    if (cache.m_lastClass == sizeClass) {
        cache.m_lastClass = 0;
        return cache.m_last;
    }
    if (void* const block = cache.m_inHand[sizeClass]) {
        cache.m_inHand[sizeClass] = nullptr;
        return block;
    }
    const Place place = cache.m_list[sizeClass];
    if (place == 0) [[unlikely]]
        return nullptr;
    char* const block = At(cache.m_region, place);
    cache.m_list[sizeClass] = NextOf(block);
    return block;
}

inline void Put(ThreadCache& owner, Chunk& chunk, void* block, std::size_t offset) {
    const Place before = chunk.m_free;
    SetNext(block, before);
    chunk.m_free = PlaceOf(offset);
    if (--chunk.m_out == 0 || before == 0) [[unlikely]]
        Settle(owner, chunk);
}

// False if that takes more; then GiveBackSlowly.
inline bool GiveBack(void* block) {
    ThreadCache& cache = CurrentCache();
    const std::size_t offset = OffsetOf(block, cache.m_region);
    if (offset >= cache.m_reach) [[unlikely]]
        return false;
    const unsigned lastClass = cache.m_lastClass;
    void* const last = cache.m_last;
    cache.m_last = block;
    cache.m_lastClass = ChunkOf(cache.m_region, offset).m_class;
    if (lastClass == 0) return true;
    void*& inHand = cache.m_inHand[lastClass];
    if (!inHand) {
        inHand = last;
        return true;
    }
    const std::size_t lastOffset = OffsetOf(last, cache.m_region);
    Chunk& chunk = ChunkOf(cache.m_region, lastOffset);
    if (chunk.m_owner.load(std::memory_order_relaxed) == &cache) [[likely]]
        Put(cache, chunk, last, lastOffset);
    else
        SendAway(last);
    return true;
}

}  // namespace small_heap
