#include <host/host_take.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace host_heap {

constinit Probe g_probe;
constinit std::atomic<bool> g_watched{false};

bool Watched() { return g_watched.load(std::memory_order_relaxed); }

namespace {

// Of a request while somebody watches; false: refuse it.
bool CountRequest() {
    g_probe.requests.fetch_add(1, std::memory_order_relaxed);
    if (g_probe.untilFailure.load(std::memory_order_relaxed) == 0) return true;
    return g_probe.untilFailure.fetch_sub(1, std::memory_order_relaxed) != 1;
}

// What no heap can serve is refused here: allocators that check their callers end the process.
void Ask(std::size_t size) {
    if (size > PTRDIFF_MAX || (Watched() && !CountRequest())) throw std::bad_alloc();
}

void* Taken(void* block, std::size_t size) {
    if (!block && size != 0) throw std::bad_alloc();
    if (block && Watched()) g_probe.live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

// 0 if the size, of which this is the class where it is small, is the C library's.
unsigned ClassHere(std::size_t size, unsigned sizeClass) {
    if (IsSmall(size)) [[likely]]
        return sizeClass;
    return small_heap::kInUse ? small_heap::ClassOfLarger(size) : 0;
}

[[gnu::noinline]] void* TakeUnusually(std::size_t size, unsigned sizeClass) {
    Ask(size);
    void* block = sizeClass ? small_heap::TakeSlowly(sizeClass) : nullptr;
    if (!block) block = std::malloc(size);
    return Taken(block, size);
}

[[gnu::noinline]] void GiveBackUnusually(void* block) {
    if (!block) return;
    if (Watched()) g_probe.live.fetch_sub(1, std::memory_order_relaxed);
    if (!small_heap::GiveBackSlowly(block)) std::free(block);
}

void* TakeOfClass(std::size_t size, unsigned sizeClass) {
    sizeClass = ClassHere(size, sizeClass);
    if (sizeClass) [[likely]]
        if (void* const block = small_heap::Take(sizeClass)) [[likely]]
            return block;
    return TakeUnusually(size, sizeClass);
}

}  // namespace

void* TakeElsewhere(std::size_t size) { return TakeOfClass(size, AlignedClassOf(size)); }

void* TakePackedElsewhere(std::size_t size) {
    if (size == 0) size = 1;
    return TakeOfClass(size, ClassOf(size));
}

void GiveBackElsewhere(void* block) {
    if (!small_heap::GiveBack(block)) [[unlikely]]
        GiveBackUnusually(block);
}

void* TakeCellElsewhere(unsigned kind) {
    if (!small_heap::kInUse) return nullptr;
    void* const cell = small_heap::Take(kFirstCellClass + kind);
    return cell || Watched() ? cell : small_heap::TakeSlowly(kFirstCellClass + kind);
}

void GiveBackCellElsewhere(void* cell, unsigned kind) {
    Hand& hand = small_heap::CurrentHand();
    if (OffsetOf(cell, hand.m_region) < hand.m_reach) [[likely]]
        return small_heap::PutInHand(hand, cell, kFirstCellClass + kind);
    for (std::size_t i = 0; i < kCell / 8; ++i)
        if (kCellParts[kind] >> i & 1) GiveBackElsewhere(static_cast<char*>(cell) + 8 * i);
}

void* Resize(void* block, std::size_t size) {
    if (!block) return Take(size);
    if (size == 0) {
        GiveBack(block);
        return nullptr;
    }
    Ask(size);
    if (const std::size_t held = small_heap::SizeOfBlock(block)) {
        if (size <= held && (IsSmall(held) || size > held / 2)) return block;
        const unsigned sizeClass = ClassHere(size, AlignedClassOf(size));
        void* moved = sizeClass ? small_heap::TakeSlowly(sizeClass) : nullptr;
        if (!moved) moved = std::malloc(size);
        if (!moved) throw std::bad_alloc();
        std::memcpy(moved, block, std::min(held, size));
        small_heap::GiveBackSlowly(block);
        return moved;
    }
    void* const grown = std::realloc(block, size);
    if (!grown) throw std::bad_alloc();
    return grown;
}

void Watch(long failAt) {
    g_probe.untilFailure = failAt;
    g_probe.requests = 0;
    g_probe.live = 0;
    g_watched = true;
    small_heap::CloseHand();
}

void Unwatch() {
    g_watched = false;
    g_probe.untilFailure = 0;
    small_heap::OpenHand();
}

}  // namespace host_heap
