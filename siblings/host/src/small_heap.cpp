#include <host/host_take.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <new>
#include <utility>

#include "small_system.h"

namespace small_heap {

namespace {

constexpr std::size_t kRecords = kRegion >> kChunkShift << kRecordShift;
constexpr std::size_t kFirstChunk = (kRecords + kChunk - 1) >> kChunkShift;
constexpr std::size_t kMostIdle = (sizeof(void*) == 8 ? 64U << 20 : 8U << 20) / kChunk;

// Everything here is under the lock, and so are the central cache's chunks.
constinit ThreadCache g_central{};
constinit std::atomic<char*> g_region{nullptr};
constinit std::size_t g_chunks = kFirstChunk;  // begun so far
constinit std::size_t g_chunksInUse = 0;
constinit std::size_t g_chunksIdle = 0;
constinit Chunk* g_idle = nullptr;      // with memory, of no size
constinit Chunk* g_returned = nullptr;  // without
constinit ThreadCache* g_caches = nullptr;
constinit bool g_refused = false;           // the region could not be had; not asked again
constinit bool g_watching = false;          // from Start to a Stop that leaves no caches
constinit bool g_stopped = false;           // the last block or cache ends the region
constinit std::atomic<bool> g_open{false};  // false: threads need not ask for a cache

struct Guard {
    Guard() { small_system::Lock(); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { small_system::Unlock(); }
};

char* Region() { return g_region.load(std::memory_order_relaxed); }

bool IsOfCells(const Chunk& chunk) { return chunk.m_classOfParts == 0; }

char* MemoryOf(const Chunk& chunk) {
    return Region() + (OffsetOf(&chunk, Region()) >> kRecordShift << kChunkShift);
}

bool HasBlocks(const Chunk& chunk) { return chunk.m_free || chunk.m_begun < chunk.m_capacity; }

Chunk*& ListOf(ThreadCache& owner, const Chunk& chunk) {
    return chunk.m_available ? owner.m_available[chunk.m_class] : owner.m_others;
}

void Link(ThreadCache& owner, Chunk& chunk, bool available) {
    chunk.m_available = available;
    Chunk*& head = ListOf(owner, chunk);
    chunk.m_previous = nullptr;
    chunk.m_next = head;
    if (head) head->m_previous = &chunk;
    head = &chunk;
}

void Unlink(ThreadCache& owner, Chunk& chunk) {
    (chunk.m_previous ? chunk.m_previous->m_next : ListOf(owner, chunk)) = chunk.m_next;
    if (chunk.m_next) chunk.m_next->m_previous = chunk.m_previous;
}

void BelongTo(ThreadCache& owner, Chunk& chunk) {
    chunk.m_owner.store(&owner, std::memory_order_relaxed);
    Link(owner, chunk, HasBlocks(chunk));
}

bool HaveRegion() {
    if (Region()) return true;
    char* const region = g_refused ? nullptr : small_system::Reserve(kRegion, kChunk);
    if (region && small_system::Commit(region, kRecords)) {
        g_region.store(region, std::memory_order_release);
        return true;
    }
    if (region) small_system::Release(region, kRegion);
    g_refused = true;
    g_open.store(false, std::memory_order_relaxed);
    return false;
}

void ReleaseRegionIfIdle() {
    if (!g_stopped || g_caches || g_chunksInUse > 0) return;
    g_stopped = false;
    g_refused = false;
    if (Region()) small_system::Release(Region(), kRegion);
    g_region.store(nullptr);
    g_chunks = kFirstChunk;
    g_chunksIdle = 0;
    g_idle = g_returned = nullptr;
}

// For any size, of which it becomes.
Chunk* BeginChunk(unsigned sizeClass) {
    Chunk* chunk = g_idle;
    if (chunk) {
        g_idle = chunk->m_next;
        --g_chunksIdle;
    } else {
        if (!HaveRegion()) return nullptr;
        chunk = g_returned;
        if (!chunk && g_chunks == kRegion >> kChunkShift) return nullptr;
        if (!chunk) chunk = ::new (&ChunkOf(Region(), g_chunks << kChunkShift)) Chunk{};
        if (!small_system::Commit(MemoryOf(*chunk), kChunk)) return nullptr;
        if (chunk == g_returned)
            g_returned = chunk->m_next;
        else
            ++g_chunks;
    }
    ++g_chunksInUse;
    const bool ofCells = sizeClass >= kFirstCellClass;
    chunk->m_free = 0;
    chunk->m_class = static_cast<std::uint8_t>(sizeClass);
    chunk->m_classOfParts = ofCells ? std::uint8_t{0} : chunk->m_class;
    chunk->m_first = ofCells ? kChunk / kCell / kCell : 0;
    chunk->m_out = chunk->m_begun = chunk->m_first;
    chunk->m_capacity = static_cast<std::uint16_t>(kChunk / SizeOf(sizeClass));
    if (ofCells) std::memset(MemoryOf(*chunk), 0, kChunk / kCell);
    return chunk;
}

void EndChunk(Chunk& chunk) {
    chunk.m_owner.store(nullptr, std::memory_order_relaxed);
    --g_chunksInUse;
    const bool keep = g_chunksIdle < kMostIdle;
    if (keep)
        ++g_chunksIdle;
    else
        small_system::Decommit(MemoryOf(chunk), kChunk);
    Chunk*& list = keep ? g_idle : g_returned;
    chunk.m_next = list;
    list = &chunk;
}

// A chunk that has blocks, now the owner's; null if there is no memory.
Chunk* Acquire(ThreadCache& owner, unsigned sizeClass) {
    Chunk* chunk = g_central.m_available[sizeClass];
    if (chunk)
        Unlink(g_central, *chunk);
    else
        chunk = BeginChunk(sizeClass);
    if (chunk) BelongTo(owner, *chunk);
    return chunk;
}

bool IsEmpty(const ThreadCache::Stock& stock) {
    return stock.m_list == 0 && stock.m_fresh == stock.m_end;
}

// The chunk's blocks that are in nobody's stock go to this one.
void BeginBlocks(ThreadCache::Stock& stock, Chunk& chunk) {
    const unsigned count = chunk.m_capacity - chunk.m_begun;
    const Place first = PlaceOf(OffsetOf(MemoryOf(chunk), Region()));
    stock.m_step = SizeOf(chunk.m_class) / kUnit;
    stock.m_fresh = first + chunk.m_begun * stock.m_step;
    stock.m_end = first + chunk.m_capacity * stock.m_step;
    chunk.m_begun = chunk.m_capacity;
    chunk.m_out = static_cast<std::uint16_t>(chunk.m_out + count);
}

// The reverse.
void ReturnFresh(ThreadCache::Stock& stock) {
    if (stock.m_fresh == stock.m_end) return;
    const unsigned count = (stock.m_end - stock.m_fresh) / stock.m_step;
    Chunk& chunk = *stock.m_current;
    chunk.m_begun = static_cast<std::uint16_t>(chunk.m_begun - count);
    chunk.m_out = static_cast<std::uint16_t>(chunk.m_out - count);
    stock.m_fresh = stock.m_end;
}

// A stock that has run empty; outside the lock.
bool Refill(ThreadCache& cache, unsigned sizeClass) {
    ThreadCache::Stock& stock = cache.m_stocks[sizeClass];
    Chunk* chunk = stock.m_current;
    if (!chunk || !HasBlocks(*chunk)) {
        chunk = cache.m_available[sizeClass];
        if (!chunk) {
            const Guard guard;
            chunk = Acquire(cache, sizeClass);
        }
        if (!chunk) return false;
        Unlink(cache, *chunk);
        Link(cache, *chunk, false);
        stock.m_current = chunk;
    }
    if (chunk->m_free) {
        stock.m_list = std::exchange(chunk->m_free, 0);
        chunk->m_out = chunk->m_begun;
    } else {
        BeginBlocks(stock, *chunk);
    }
    return true;
}

// Of the cell that the block, of a chunk of cells, is a part of.
std::uint8_t& PartsGivenBack(const Chunk& chunk, const void* block) {
    const std::size_t offset = OffsetOf(block, MemoryOf(chunk));
    return reinterpret_cast<std::uint8_t*>(MemoryOf(chunk))[offset / kCell];
}

std::uint8_t AllParts(const Chunk& chunk) { return kCellParts[chunk.m_class - kFirstCellClass]; }

// By the owner. Null while other parts of the cell are alive, else the cell.
void* CellWithout(const Chunk& chunk, void* part) {
    const std::size_t at = OffsetOf(part, Region()) % kCell;
    std::uint8_t& given = PartsGivenBack(chunk, part);
    given = static_cast<std::uint8_t>(given | 1U << at / 8);
    if (given != AllParts(chunk)) return nullptr;
    given = 0;
    return static_cast<char*>(part) - at;
}

// A block or part of a cell that comes from a user.
void PutOwnOrPart(ThreadCache& owner, Chunk& chunk, void* block) {
    if (IsOfCells(chunk)) block = CellWithout(chunk, block);
    if (block) PutOwn(owner, chunk, block, OffsetOf(block, Region()));
}

// The same by the thread of a cache, null if it has none, or on its behalf.
void Return(void* block, const ThreadCache* by) {
    const std::size_t offset = OffsetOf(block, Region());
    Chunk& chunk = ChunkOf(Region(), offset);
    ThreadCache& owner = *chunk.m_owner.load(std::memory_order_relaxed);
    if (&owner == by || &owner == &g_central) return PutOwnOrPart(owner, chunk, block);
    SetNext(block, owner.m_away.load(std::memory_order_relaxed));
    owner.m_away.store(PlaceOf(offset), std::memory_order_relaxed);
}

// A cell becomes what it is when only its first part is still to be given back.
void KeepFirstPart(void* block) {
    const Chunk& chunk = ChunkOf(Region(), OffsetOf(block, Region()));
    if (IsOfCells(chunk))
        PartsGivenBack(chunk, block) = static_cast<std::uint8_t>(AllParts(chunk) & ~1U);
}

void PutAway(ThreadCache& owner, Place place) {
    while (place) {
        char* const block = At(Region(), place);
        place = NextOf(block);
        PutOwnOrPart(owner, ChunkOf(Region(), OffsetOf(block, Region())), block);
    }
}

void PutAll(ThreadCache& owner, Place place) {
    while (place) {
        char* const block = At(Region(), place);
        const std::size_t offset = OffsetOf(block, Region());
        place = NextOf(block);
        PutOwn(owner, ChunkOf(Region(), offset), block, offset);
    }
}

Place TakeAway(ThreadCache& cache) {
    const Guard guard;
    return cache.m_away.exchange(0, std::memory_order_relaxed);
}

void HandOver(ThreadCache& from, Chunk*& list) {
    while (Chunk* const chunk = list) {
        Unlink(from, *chunk);
        if (chunk->m_out == chunk->m_first)
            EndChunk(*chunk);
        else
            BelongTo(g_central, *chunk);
    }
}

void Drain(ThreadCache& cache) {
    PutAway(cache, TakeAway(cache));
    Hand& hand = *cache.m_hand;
    for (unsigned i = 1; i < kClasses; ++i) {
        if (void* const block = std::exchange(hand.m_blocks[i], nullptr)) {
            KeepFirstPart(block);
            Return(block, &cache);
        }
        ThreadCache::Stock& stock = cache.m_stocks[i];
        PutAll(cache, std::exchange(stock.m_list, 0));
        ReturnFresh(stock);
        stock.m_current = nullptr;
    }
    for (Chunk*& each : cache.m_available) HandOver(cache, each);
    HandOver(cache, cache.m_others);
    hand.m_cache = nullptr;
    hand.m_region = nullptr;
    hand.m_reach = 0;
}

void End(ThreadCache& cache) {
    Drain(cache);
    *cache.m_link = cache.m_next;
    if (cache.m_next) cache.m_next->m_link = cache.m_link;
    std::free(&cache);
}

// Gives the calling thread a cache; null while stopped or if it cannot have one.
Hand* Attach() {
    if (!g_open.load(std::memory_order_relaxed) || !HaveRegion()) return nullptr;
    void* const memory = std::malloc(sizeof(ThreadCache));
    Hand* const hand = memory ? small_system::AttachHand() : nullptr;
    if (!hand) {
        std::free(memory);
        return nullptr;
    }
    auto* const cache = ::new (memory) ThreadCache{};
    cache->m_hand = hand;
    cache->m_next = g_caches;
    cache->m_link = &g_caches;
    if (g_caches) g_caches->m_link = &cache->m_next;
    g_caches = cache;
    hand->m_cache = cache;
    hand->m_region = Region();
    hand->m_blocks[0] = hand;
    return hand;
}

}  // namespace

void* TakeSlowly(unsigned sizeClass) {
    Hand* hand = &CurrentHand();
    if (!hand->m_cache) {
        if (!g_open.load(std::memory_order_relaxed)) return nullptr;
        const Guard guard;
        hand = Attach();
        if (!hand) return nullptr;
    }
    if (!host_heap::Watched()) OpenHand();
    ThreadCache& cache = *hand->m_cache;
    if (cache.m_away.load(std::memory_order_relaxed) != 0) PutAway(cache, TakeAway(cache));
    ThreadCache::Stock& stock = cache.m_stocks[sizeClass];
    if (IsEmpty(stock) && !Refill(cache, sizeClass)) return nullptr;
    return stock.m_list ? PopList(stock, hand->m_region) : PopFresh(stock, hand->m_region);
}

bool GiveBackSlowly(void* block) {
    if (SizeOfBlock(block) == 0) return false;
    ThreadCache* const cache = CurrentHand().m_cache;
    if (!cache || IsOfCells(ChunkOf(Region(), OffsetOf(block, Region()))))
        SendAway(block);
    else
        Put(*cache, block);
    return true;
}

void GiveBackPart(Hand& hand, void* part) {
    const Chunk& chunk = ChunkOf(hand.m_region, OffsetOf(part, hand.m_region));
    if (chunk.m_owner.load(std::memory_order_relaxed) != hand.m_cache) [[unlikely]]
        return SendAway(part);
    if (void* const cell = CellWithout(chunk, part)) PutInHand(hand, cell, chunk.m_class);
}

void SendAway(void* block) {
    const Guard guard;
    Return(block, CurrentHand().m_cache);
    ReleaseRegionIfIdle();
}

void SendWholeAway(void* block) {
    KeepFirstPart(block);
    SendAway(block);
}

std::size_t SizeOfBlock(const void* block) {
    char* const region = g_region.load(std::memory_order_acquire);
    const std::size_t offset = OffsetOf(block, region);
    if (!region || offset >= kRegion) return 0;
    const Chunk& chunk = ChunkOf(region, offset);
    if (!IsOfCells(chunk)) return SizeOf(chunk.m_class);
    const std::size_t at = offset % kCell;  // a part reaches to the next one
    const unsigned behind = unsigned{AllParts(chunk)} >> (at / 8 + 1);
    return behind ? 8 * (static_cast<std::size_t>(std::countr_zero(behind)) + 1) : kCell - at;
}

void Settle(ThreadCache& owner, Chunk& chunk) {
    const bool current = owner.m_stocks[chunk.m_class].m_current == &chunk;
    if (chunk.m_out == chunk.m_first && current) {  // begins anew
        chunk.m_free = 0;
        chunk.m_begun = chunk.m_first;
    } else if (chunk.m_out == chunk.m_first) {
        Unlink(owner, chunk);
        const Guard guard;
        EndChunk(chunk);
    } else if (!current && !chunk.m_available) {
        Unlink(owner, chunk);
        Link(owner, chunk, true);
    }
}

void Start() {
    const Guard guard;
    g_stopped = false;
    g_watching = g_watching || small_system::WatchThreads();
    g_open.store(g_watching, std::memory_order_relaxed);
}

void Stop() {
    {
        const Guard guard;
        if (!g_watching) return;
        g_open.store(false, std::memory_order_relaxed);
        if (ThreadCache* const own = CurrentHand().m_cache) End(*own);
        while (g_caches && !small_system::ProcessMayEnd()) End(*g_caches);
        g_stopped = true;
        ReleaseRegionIfIdle();
        if (g_caches) return;  // threads that go on have what is theirs until they end
        g_watching = false;
    }
    small_system::UnwatchThreads();
}

void ThreadEnds(Hand& hand) {
    const Guard guard;
    if (hand.m_cache) End(*hand.m_cache);
    ReleaseRegionIfIdle();
}

void CloseHand() {
    Hand& hand = CurrentHand();
    if (std::exchange(hand.m_reach, 0) == 0) return;
    for (unsigned i = 1; i < kClasses; ++i)
        if (void* const block = std::exchange(hand.m_blocks[i], nullptr)) {
            KeepFirstPart(block);
            GiveBackSlowly(block);
        }
}

void OpenHand() {
    Hand& hand = CurrentHand();
    if (hand.m_cache) hand.m_reach = kRegion;
}

}  // namespace small_heap

namespace host_heap {

void Start() { small_heap::Start(); }
void Stop() { small_heap::Stop(); }

SmallFigures SmallState() {
    using namespace small_heap;
    const Guard guard;
    std::uint64_t out = 0;
    for (std::size_t i = kFirstChunk; i < g_chunks; ++i) {
        const Chunk& chunk = ChunkOf(Region(), i << kChunkShift);
        if (chunk.m_owner.load(std::memory_order_relaxed)) out += chunk.m_out - chunk.m_first;
    }
    return {kInUse, Region() != nullptr, (g_chunksInUse + g_chunksIdle) << kChunkShift, out};
}

void RefuseRegion(bool refuse) {
    const small_heap::Guard guard;
    small_heap::g_refused = refuse;
}

}  // namespace host_heap
