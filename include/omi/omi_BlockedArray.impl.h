#pragma once
#include <alloc/mem_alloc.h>
#include <omi/omi_BlockedArray.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

// count * size; more bytes than can be named are exhaustion.
inline std::size_t omi_BytesFor(std::size_t count, std::size_t size) {
    if (count > std::numeric_limits<std::size_t>::max() / size) throw std::bad_alloc();
    return count * size;
}

template <class T>
omi_BlockedArray<T>::omi_BlockedArray(unsigned nSlots, unsigned shift)
    : m_growthStep(nSlots ? nSlots : 128),
      m_slotCount(nSlots),
      m_blockSize(1u << (shift & 31)),
      m_blockShift(shift),
      m_blockMask(m_blockSize - 1),
      m_table(NewTable(nSlots)) {}

template <class T>
omi_BlockedArray<T>::omi_BlockedArray(const omi_BlockedArray& other)
    : m_growthStep(other.m_growthStep),
      m_slotCount(other.m_slotCount),
      m_blockSize(other.m_blockSize),
      m_blockShift(other.m_blockShift),
      m_blockMask(other.m_blockMask),
      m_table(CopyOfTable(other, nullptr)) {}

template <class T>
omi_BlockedArray<T>::~omi_BlockedArray() {
    FreeTable(m_table, m_slotCount);
}

template <class T>
omi_BlockedArray<T>& omi_BlockedArray<T>::operator=(const omi_BlockedArray& other) {
    if (this == &other) return *this;
    if (m_slotCount != other.m_slotCount || m_blockSize != other.m_blockSize) {
        T** const table = CopyOfTable(other, nullptr);
        FreeTable(m_table, m_slotCount);
        m_table = table;
        m_slotCount = other.m_slotCount;
        m_blockSize = other.m_blockSize;
        m_blockShift = other.m_blockShift;
        m_blockMask = other.m_blockMask;
    } else if (m_table) {
        bool lacksBlocks = false;
        for (unsigned slot = 0; slot < m_slotCount; ++slot)
            lacksBlocks |= other.m_table[slot] && !m_table[slot];
        T** const missing = lacksBlocks ? CopyOfTable(other, m_table) : nullptr;
        for (unsigned slot = 0; slot < m_slotCount; ++slot) {
            T*& block = m_table[slot];
            if (!other.m_table[slot]) {
                FreeBlock(block);
                block = nullptr;
            } else if (block) {
                BlockCopy(block, other.m_table[slot]);
            } else {
                block = missing[slot];
            }
        }
        mem_Free(missing);
    }
    m_growthStep = other.m_growthStep;
    return *this;
}

template <class T>
void omi_BlockedArray<T>::DumpArray() {
    for (unsigned slot = 0; slot < m_slotCount; ++slot) {
        if (!m_table[slot]) continue;
        const unsigned first = slot << (m_blockShift & 31);
        std::printf("Block indices= %d - %d\n", static_cast<int>(first),
                    static_cast<int>(first + m_blockSize - 1));
        for (unsigned cell = 0; cell < m_blockSize; ++cell) {
            const auto* const bytes = reinterpret_cast<const signed char*>(m_table[slot] + cell);
            for (std::size_t i = 0; i < sizeof(T); ++i)
                std::printf("%02x", static_cast<unsigned>(static_cast<int>(bytes[i])));
            std::fputs((cell & 7) < 7 ? "|" : "\n", stdout);
        }
        std::fputs("\n", stdout);
    }
}

template <class T>
void omi_BlockedArray<T>::Clear() {
    for (unsigned slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot)
        FreeBlock(std::exchange(m_table[slot], nullptr));
}

template <class T>
void omi_BlockedArray<T>::Swap(omi_BlockedArray& other) noexcept {
    std::swap(m_growthStep, other.m_growthStep);
    std::swap(m_slotCount, other.m_slotCount);
    std::swap(m_blockSize, other.m_blockSize);
    std::swap(m_blockShift, other.m_blockShift);
    std::swap(m_blockMask, other.m_blockMask);
    std::swap(m_table, other.m_table);
}

template <class T>
void omi_BlockedArray<T>::Realloc(unsigned n) {
    if (n <= m_slotCount) return;
    T** const table = NewTable(n);
    std::copy_n(m_table, m_slotCount, table);
    mem_Free(m_table);
    m_table = table;
    m_slotCount = n;
}

template <class T>
void omi_BlockedArray<T>::MakeBlock(unsigned slot) {
    if (!m_table[slot]) m_table[slot] = NewBlock();
}

template <class T>
std::size_t omi_BlockedArray<T>::HeapBytes() const {
    std::size_t bytes = m_slotCount * sizeof(T*);
    for (unsigned slot = 0;
         (slot = omi_detail::NextPresent(m_table, slot, m_slotCount)) < m_slotCount; ++slot)
        bytes += m_blockSize * sizeof(T);
    return bytes;
}

template <class T>
unsigned omi_BlockedArray<T>::ToFootprint(std::size_t bytes) {
    return static_cast<unsigned>(std::min<std::size_t>(bytes, UINT_MAX));
}

template <class T>
T** omi_BlockedArray<T>::NewTable(unsigned slots) {
    if (slots == 0) return nullptr;
    const std::size_t bytes = omi_BytesFor(slots, sizeof(T*));
    return static_cast<T**>(std::memset(mem_OperatorNewThrowBuiltin(bytes), 0, bytes));
}

template <class T>
T** omi_BlockedArray<T>::CopyOfTable(const omi_BlockedArray& other, T* const* have) {
    T** const table = NewTable(other.m_slotCount);
    unsigned slot = 0;
    try {
        for (; (slot = omi_detail::NextPresent(other.m_table, slot, other.m_slotCount)) <
               other.m_slotCount;
             ++slot) {
            if (have && have[slot]) continue;
            table[slot] = other.NewRawBlock();
            other.BlockCopy(table[slot], other.m_table[slot]);
        }
    } catch (...) {
        FreeTable(table, other.m_slotCount);
        throw;
    }
    return table;
}

template <class T>
void omi_BlockedArray<T>::FreeTable(T** table, unsigned slots) {
    for (unsigned slot = 0; (slot = omi_detail::NextPresent(table, slot, slots)) < slots; ++slot)
        FreeBlock(table[slot]);
    mem_Free(table);
}

template <class T>
void omi_BlockedArray<T>::FreeBlock(T* block) {
    if constexpr (std::is_scalar_v<T>)
        mem_Free(block);
    else
        delete[] block;
}

template <class T>
T* omi_BlockedArray<T>::NewBlock() const {
    T* const block = NewRawBlock();
    if constexpr (std::is_scalar_v<T>) BlockInitialize(block);
    return block;
}

// Cells that still have to be written, unless they construct themselves.
template <class T>
T* omi_BlockedArray<T>::NewRawBlock() const {
    if constexpr (std::is_scalar_v<T>)
        return static_cast<T*>(mem_OperatorNewThrowBuiltin(omi_BytesFor(m_blockSize, sizeof(T))));
    else
        return new T[m_blockSize];
}

template <class T>
void omi_BlockedArray<T>::BlockCopy(T* to, const T* from) const {
    std::copy_n(from, m_blockSize, to);
}

template <class T>
void omi_BlockedArray<T>::BlockInitialize(T* block) const {
    std::fill_n(block, m_blockSize, T());
}

template <class T>
T* omi_BlockedArray<T>::NewCell(unsigned index) {
    const unsigned slot = index >> (m_blockShift & 31);
    if (slot >= m_slotCount) {
        const std::uint64_t slots = (std::uint64_t{slot} / m_growthStep + 1) * m_growthStep;
        if (slots > UINT_MAX) throw std::bad_alloc();
        Realloc(static_cast<unsigned>(slots));
    }
    MakeBlock(slot);
    return m_table[slot] + (index & m_blockMask);
}
