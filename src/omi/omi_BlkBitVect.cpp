#include <alloc/mem_alloc.h>
#include <host/KZMBasFatalError.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlkBitVectTrav.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr unsigned int kWords = 256;  // of a block

bool AllZero(const unsigned int* words, unsigned int n) {
    return std::all_of(words, words + n, [](unsigned int word) { return word == 0; });
}

// The bits from..to of a word, both included.
unsigned int BitRange(unsigned int from, unsigned int to) { return ~0u << from & ~0u >> (31 - to); }

template <class Op>
[[gnu::always_inline]] inline void CombineEach(unsigned int* mine, const unsigned int* theirs,
                                               Op op) {
#pragma GCC unroll 4
    for (unsigned int i = 0; i < kWords; ++i) mine[i] = op(mine[i], theirs[i]);
}

// By themselves, so that the compiler works on several words at once.
template <class Op>
[[gnu::noinline]] void CombineNarrow(unsigned int* mine, const unsigned int* theirs, Op op) {
    CombineEach(mine, theirs, op);
}
#if defined(__x86_64__) || defined(__i386__)
template <class Op>
[[gnu::noinline, gnu::target("avx2")]] void CombineWide(unsigned int* mine,
                                                        const unsigned int* theirs, Op op) {
    CombineEach(mine, theirs, op);
}
bool HasWideVectors() { return __builtin_cpu_supports("avx2"); }
#else
template <class Op>
void CombineWide(unsigned int* mine, const unsigned int* theirs, Op op) {
    CombineNarrow(mine, theirs, op);
}
bool HasWideVectors() { return false; }
#endif

template <class Op>
void CombineBlocks(unsigned int* mine, const unsigned int* theirs, Op op) {
    if (HasWideVectors())
        CombineWide(mine, theirs, op);
    else
        CombineNarrow(mine, theirs, op);
}

// Blocks of words that nobody has written yet, linked through their first bytes.
class SpareBlocks {
public:
    SpareBlocks() = default;
    SpareBlocks(const SpareBlocks&) = delete;
    SpareBlocks& operator=(const SpareBlocks&) = delete;
    ~SpareBlocks() {
        while (m_first) mem_Free(Take());
    }

    void Add() { m_first = ::new (mem_Malloc(kWords * sizeof(unsigned int))) Link{m_first}; }
    unsigned int* Take() {
        void* const block = std::exchange(m_first, m_first->next);
        return static_cast<unsigned int*>(block);
    }

private:
    struct Link {
        Link* next;
    };
    Link* m_first = nullptr;
};

}  // namespace

omi_BlkBitVect::omi_BlkBitVect(const omi_BlkBitVect& other)
    : omi_BlockedArray(other), m_bitCount(other.m_bitCount), m_stale(other.m_stale) {}

omi_BlkBitVect& omi_BlkBitVect::operator=(const omi_BlkBitVect& other) {
    omi_BlockedArray::operator=(other);
    m_bitCount = other.m_bitCount;
    m_stale = other.m_stale;
    return *this;
}

omi_BlkBitVect::~omi_BlkBitVect() = default;

void omi_BlkBitVect::DumpList() const {
    if (Size() == 0) {
        std::fputs("Empty List\n", stderr);
        return;
    }
    std::fprintf(stderr, "ListCount=%d\n", static_cast<int>(m_bitCount));
    omi_BlkBitVectTrav trav(this);
    unsigned int count = 0;
    unsigned int i;
    for (bool more = trav.First(i); more; more = trav.Next(i)) {
        std::fprintf(stderr, "%8d", static_cast<int>(i));
        if (++count % 8 == 0) std::fputs("\n", stderr);
    }
    std::fputs("\n", stderr);
    if (count != m_bitCount)
        KZMBasFatalError("AssertionFailed:cnt == bitcnt", "", "", "", "omi_BlkBitVect", 80);
}

unsigned int omi_BlkBitVect::Footprint() const { return ToFootprint(sizeof *this + HeapBytes()); }

void omi_BlkBitVect::SetFromTo(unsigned int from, unsigned int to) {
    const unsigned int first = from >> 5;
    const unsigned int last = to >> 5;
    if (from <= to)
        MakeWordBlocks(first, last);
    else if (first != last)
        MakeWordBlocks(last, last);

    for (unsigned int word = first + 1; word < last;) {
        unsigned int* const block = m_table[word >> kBlockShift];
        const unsigned int begin = word & (kBlockWords - 1);
        const unsigned int end = std::min(kBlockWords, begin + (last - word));
        unsigned int old = 0;
        for (unsigned int i = begin; i < end; ++i) old += CountBits32(block[i]);
        std::fill(block + begin, block + end, ~0u);
        m_bitCount += 32 * (end - begin) - old;
        word += end - begin;
    }
    if (from <= to) OrWord(*Word(from), BitRange(from & 31, first == last ? to & 31 : 31));
    if (first != last) OrWord(*Word(to), BitRange(0, to & 31));
}

void omi_BlkBitVect::Clear() {
    omi_BlockedArray::Clear();
    m_bitCount = 0;
    m_stale = false;
}

bool omi_BlkBitVect::operator==(const omi_BlkBitVect& other) const {
    if (Size() != other.Size() || m_slotCount != other.m_slotCount) return false;
    for (unsigned int slot = 0; slot < m_slotCount; ++slot) {
        const unsigned int* const mine = m_table[slot];
        const unsigned int* const theirs = other.m_table[slot];
        if (!mine != !theirs) return false;
        if (mine && std::memcmp(mine, theirs, kBlockWords * sizeof *mine) != 0) return false;
    }
    return true;
}

int omi_BlkBitVect::Compare(const omi_BlkBitVect& other) const {
    const unsigned int count = Size();
    const unsigned int otherCount = other.Size();
    if (count != otherCount) return static_cast<int>(count - otherCount);
    for (unsigned int slot = 0; slot < other.m_slotCount; ++slot) {
        const int remaining = static_cast<int>(other.m_slotCount - slot);
        const unsigned int* const mine = Block(slot);
        const unsigned int* const theirs = other.m_table[slot];
        if (!mine && theirs) return -remaining;
        if (mine && !theirs) return remaining;
        if (!mine) continue;
        const auto [a, b] = std::mismatch(mine, mine + kBlockWords, theirs);
        if (a != mine + kBlockWords) return *a > *b ? 1 : -1;
    }
    return 0;
}

bool omi_BlkBitVect::Contains(const omi_BlkBitVect& other) const {
    if (!m_stale && !other.m_stale && m_bitCount < other.m_bitCount) return false;
    for (unsigned int slot = 0; slot < other.m_slotCount; ++slot) {
        const unsigned int* const theirs = other.m_table[slot];
        if (!theirs) continue;
        const unsigned int* const mine = Block(slot);
        if (!mine) {
            if (!AllZero(theirs, kBlockWords)) return false;
            continue;
        }
        unsigned int outside = 0;
        for (unsigned int i = 0; i < kBlockWords; ++i) outside |= theirs[i] & ~mine[i];
        if (outside) return false;
    }
    return true;
}

bool omi_BlkBitVect::HasOverlap(const omi_BlkBitVect& other) const {
    const unsigned int slots = std::min(m_slotCount, other.m_slotCount);
    for (unsigned int slot = 0; slot < slots; ++slot) {
        const unsigned int* const mine = m_table[slot];
        const unsigned int* const theirs = other.m_table[slot];
        if (!mine || !theirs) continue;
        unsigned int common = 0;
        for (unsigned int i = 0; i < kBlockWords; ++i) common |= mine[i] & theirs[i];
        if (common) return true;
    }
    return false;
}

omi_BlkBitVect& omi_BlkBitVect::operator-=(const omi_BlkBitVect& other) {
    const unsigned int slots = std::min(m_slotCount, other.m_slotCount);
    const auto mineOnly = [](unsigned int mine, unsigned int theirs) { return mine & ~theirs; };
    for (unsigned int slot = 0; (slot = omi_detail::NextPresent(m_table, slot, slots)) < slots;
         ++slot)
        if (other.m_table[slot]) CombineBlocks(m_table[slot], other.m_table[slot], mineOnly);
    m_stale = true;
    return *this;
}

omi_BlkBitVect& omi_BlkBitVect::operator&=(const omi_BlkBitVect& other) {
    const auto both = [](unsigned int mine, unsigned int theirs) { return mine & theirs; };
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot) {
        if (const unsigned int* const theirs = other.Block(slot))
            CombineBlocks(m_table[slot], theirs, both);
        else
            mem_Free(std::exchange(m_table[slot], nullptr));
    }
    m_stale = true;
    return *this;
}

omi_BlkBitVect& omi_BlkBitVect::operator|=(const omi_BlkBitVect& other) {
    CombineAllWords(other, [](unsigned int mine, unsigned int theirs) { return mine | theirs; });
    return *this;
}

omi_BlkBitVect& omi_BlkBitVect::operator^=(const omi_BlkBitVect& other) {
    CombineAllWords(other, [](unsigned int mine, unsigned int theirs) { return mine ^ theirs; });
    return *this;
}

// Blocks that only the other has are copied. They are taken before any bit changes. Of the
// other's table, which may be far larger than its blocks, all is read once if it has few of them.
template <class Op>
void omi_BlkBitVect::CombineAllWords(const omi_BlkBitVect& other, Op op) {
    static_assert(kWords == kBlockWords);
    const unsigned int slots = other.m_slotCount;
    Realloc(slots);
    SpareBlocks spare;
    std::array<unsigned int, 512> few;
    unsigned int found = 0;
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(other.m_table, slot, slots)) < slots; ++slot) {
        if (!m_table[slot]) spare.Add();
        if (found < few.size()) few[found++] = slot;
    }
    const auto combine = [&](unsigned int slot) {
        if (m_table[slot]) {
            CombineBlocks(m_table[slot], other.m_table[slot], op);
        } else {
            m_table[slot] = spare.Take();
            std::memcpy(m_table[slot], other.m_table[slot], kBlockWords * sizeof(unsigned int));
        }
    };
    std::for_each_n(few.begin(), found, combine);
    for (unsigned int slot = found < few.size() ? slots : few.back() + 1;
         (slot = omi_detail::NextPresent(other.m_table, slot, slots)) < slots; ++slot)
        combine(slot);
    m_stale = true;
}

void omi_BlkBitVect::Swap(omi_BlkBitVect& other) noexcept {
    omi_BlockedArray::Swap(other);
    std::swap(m_bitCount, other.m_bitCount);
    std::swap(m_stale, other.m_stale);
}

void omi_BlkBitVect::SetBitOfNewBlock(unsigned int i) {
    MakeWordBlocks(i >> 5, i >> 5);
    OrWord(*Word(i), 1u << (i & 31));
}

// Makes every block of the words first..last writable, before any bit changes.
void omi_BlkBitVect::MakeWordBlocks(unsigned int first, unsigned int last) {
    const unsigned int lastSlot = last >> kBlockShift;
    if (lastSlot >= m_slotCount) Realloc((lastSlot / m_growthStep + 1) * m_growthStep);
    for (unsigned int slot = first >> kBlockShift; slot <= lastSlot; ++slot) MakeBlock(slot);
}

// An empty block for each block that only the other has, before any bit changes.
void omi_BlkBitVect::MakeBlocksOf(const omi_BlkBitVect& other) {
    Realloc(other.m_slotCount);
    constexpr std::size_t kBytes = kBlockWords * sizeof(unsigned int);
    const unsigned int slots = other.m_slotCount;
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(other.m_table, slot, slots)) < slots; ++slot)
        if (!m_table[slot])
            m_table[slot] = static_cast<unsigned int*>(std::memset(mem_Malloc(kBytes), 0, kBytes));
}

void omi_BlkBitVect::Recount() const {
    m_bitCount = 0;
    for (unsigned int slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot) {
        unsigned int* const block = m_table[slot];
        unsigned int sum = 0;
        for (unsigned int i = 0; i < kBlockWords; ++i) sum += CountBits32(block[i]);
        if (sum == 0) {
            mem_Free(block);
            m_table[slot] = nullptr;
        }
        m_bitCount += sum;
    }
    m_stale = false;
}
