#pragma once
#include <cow/cow_List.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

// The table of a list and its blocks: how they are made, shared, grown and cut.

struct cow_FreeBlock {
    void operator()(void* block) const { mem_Free(block); }
};

namespace cow_list_detail {

// Unused slots before a long table are for Prefix, which else would move it at each of its steps.
inline int RoomBefore(int slots) { return slots / 8 / 16 * 16; }

// The slots grow by 16, their memory by an eighth: else a long list would copy its table at every
// sixteenth block.
inline int TableRoom(int slots) {
    const unsigned count = static_cast<unsigned>(slots);
    const unsigned step = std::max(16u, std::bit_ceil(count) / 8);
    return static_cast<int>((count + step - 1) & ~(step - 1));
}

// Whether removed elements are overwritten with T(): where they own something and it cannot fail.
template <class T>
inline constexpr bool kBlanksRemoved =
    !std::is_trivially_destructible_v<T> && std::is_nothrow_copy_assignable_v<T>;

}  // namespace cow_list_detail

// What shortening a list takes memory for, so that nothing can fail once elements go.
template <class T>
struct cow_ListCut {
    std::unique_ptr<void, cow_FreeBlock> m_memory;  // of a smaller table
    std::optional<T> m_blank;                       // for the places of removed elements
};

template <class T>
cow_ListBlock<T>* cow_ListBlock<T>::New(int shift, const T* from, int first, int last) {
    static_assert(alignof(T) <= alignof(std::max_align_t));
    const std::size_t size = std::size_t{1} << shift;
    if (size > (std::numeric_limits<std::size_t>::max() - Head()) / sizeof(T))
        throw std::bad_alloc();
    std::unique_ptr<void, cow_FreeBlock> memory(mem_Malloc(Head() + size * sizeof(T)));
    T* const data = reinterpret_cast<T*>(static_cast<char*>(memory.get()) + Head());
    if constexpr (std::is_trivially_copyable_v<T>) {
        if (first < last)
            std::memcpy(data + first, from + first,
                        static_cast<std::size_t>(last - first) * sizeof(T));
    } else {
        const T blank = T();
        std::size_t made = 0;
        try {
            for (; made < size; ++made) {
                const int i = static_cast<int>(made);
                ::new (data + made) T(first <= i && i < last ? from[made] : blank);
            }
        } catch (...) {
            std::destroy_n(data, made);
            throw;
        }
    }
    return ::new (memory.release()) cow_ListBlock();
}

template <class T>
void cow_ListBlock<T>::Delete(int shift) {
    std::destroy_n(m_data, std::size_t{1} << shift);
    mem_Free(this);
}

// The exponent and mantissa are those of n rounded to single precision: just below a power of two
// that is already the power.
template <class T>
void cow_List<T>::Initialize(int n) {
    m_length = 0;
    m_tableSlots = 0;
    m_blockShift = 4;
    m_offset = 0;
    m_table = nullptr;
    std::unique_ptr<void, cow_FreeBlock> count(mem_OperatorNewTinyThrow(sizeof(std::int32_t)));
    if (n > 0) {
        const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(n));
        const int shift = static_cast<int>(bits >> 23) - 127 - 3;
        int slots = 16;
        if (shift > 4) {
            m_blockShift = shift;
            slots += 8 + static_cast<int>(((bits & 0x7FFFFF) + 0xFFFFF) >> 20);
        }
        m_table = NewTable(slots);
        m_tableSlots = slots;
    }
    m_tableCount = ::new (count.release()) std::int32_t(1);
}

template <class T>
void cow_List<T>::CopyArray() {
    if (*m_tableCount < 2) return;
    std::unique_ptr<void, cow_FreeBlock> count(mem_OperatorNewTinyThrow(sizeof(std::int32_t)));
    Block** const table = NewTable(m_tableSlots);
    for (int slot = 0; slot < m_tableSlots; ++slot) {
        table[slot] = m_table[slot];
        if (table[slot]) ++table[slot]->m_count;
    }
    ForgetTail();
    --*m_tableCount;
    m_tableCount = ::new (count.release()) std::int32_t(1);
    m_table = table;
}

template <class T>
void cow_List<T>::IsolateRange(int a, int b) {
    const int last = (m_offset + b) >> m_blockShift;
    for (int slot = (m_offset + a) >> m_blockShift; slot <= last; ++slot) {
        Block*& block = m_table[slot];
        if (!block) {
            block = Block::New(m_blockShift);
        } else if (block->m_count > 1) {
            Block* const copy = CopyOfBlock(slot, m_length);
            --block->m_count;
            block = copy;
        }
    }
}

// Where the memory has room before the table, that begins earlier instead of moving its blocks.
template <class T>
void cow_List<T>::Prefix() {
    if (m_offset != 0) {
        CopyArray();
        return;
    }
    const std::int64_t blockSize = std::int64_t{1} << m_blockShift;
    const int used = static_cast<int>((m_length + blockSize - 1) >> m_blockShift);
    const int slots =
        used == m_tableSlots ? SlotsFor((std::int64_t{used} << m_blockShift) + 1) : m_tableSlots;
    const int added = slots - used;
    const std::int64_t offset = std::int64_t{added} << m_blockShift;
    if (offset + m_length > kLastPosition) throw std::bad_alloc();
    CopyArray();
    constexpr int kShort = 128;  // slots; moved without keeping room
    ForgetTail();
    const TableHead head = m_table ? *TableHead::Of(m_table) : TableHead{};
    const bool slides = head.m_before >= added;
    Block** fresh = nullptr;
    if (!slides && (slots > kShort || slots > head.m_room))
        fresh = NewTable(slots, slots > kShort ? cow_list_detail::RoomBefore(slots) : 0);
    for (int slot = used; slot < m_tableSlots; ++slot)
        if (m_table[slot]) m_table[slot]->Release(m_blockShift);
    if (fresh) {
        std::copy_n(m_table, used, fresh + added);
        FreeTable(m_table);
        m_table = fresh;
    } else if (slides) {
        m_table = TableHead::Start(TableHead::Of(m_table)->Memory(), head.m_before - added,
                                   head.m_room + added);
        std::fill_n(m_table, added, nullptr);
    } else {
        std::copy_backward(m_table, m_table + used, m_table + slots);
        std::fill_n(m_table, added, nullptr);
    }
    m_tableSlots = slots;
    m_offset = static_cast<int>(offset);
}

template <class T>
void cow_List<T>::DeleteTable() {
    for (int slot = 0; slot < m_tableSlots; ++slot)
        if (m_table[slot]) m_table[slot]->Release(m_blockShift);
    FreeTable(m_table);
    mem_Free(m_tableCount);
}

template <class T>
cow_ListBlock<T>** cow_List<T>::NewTable(int slots, int slotsBefore) {
    if (slots == 0) return nullptr;
    const int room = cow_list_detail::TableRoom(slots);
    Block** const table =
        TableHead::Start(mem_Malloc(TableHead::Bytes(slotsBefore + room)), slotsBefore, room);
    std::fill_n(table, slots, nullptr);
    return table;
}

template <class T>
void cow_List<T>::FreeTable(Block** table) {
    if (table) mem_Free(TableHead::Of(table)->Memory());
}

// Gives a private table, which there must be, memory for `slots`: what there is if it is not too
// large by far.
template <class T>
void cow_List<T>::FitTable(int slots) {
    TableHead* const head = TableHead::Of(m_table);
    const int room = cow_list_detail::TableRoom(slots);
    if (slots <= head->m_room && head->m_room / 2 <= room) return;
    const int before = head->m_before;
    void* const memory = mem_Realloc(head->Memory(), TableHead::Bytes(before + room));
    m_table = TableHead::Start(memory, before, room);
}

// The slots of a table that Resize(n) leaves.
template <class T>
int cow_List<T>::SlotsFor(std::int64_t n) const {
    const std::int64_t end = m_offset + n;
    if (end > kLastPosition) throw std::bad_alloc();
    const int groupShift = m_blockShift + 4;
    return static_cast<int>((end + (std::int64_t{1} << groupShift) - 1) >> groupShift) * 16;
}

// A private list without elements or table, with the block size and offset of this one.
template <class T>
cow_List<T> cow_List<T>::EmptyLikeThis() const {
    cow_List empty;
    empty.m_blockShift = m_blockShift;
    empty.m_offset = m_offset;
    return empty;
}

// Takes those of the first `length` elements of the list that lie in the block.
template <class T>
cow_ListBlock<T>* cow_List<T>::CopyOfBlock(int slot, int length) const {
    const std::int64_t size = std::int64_t{1} << m_blockShift;
    const std::int64_t first = m_offset - (std::int64_t{slot} << m_blockShift);
    return Block::New(m_blockShift, m_table[slot]->m_data,
                      static_cast<int>(std::clamp<std::int64_t>(first, 0, size)),
                      static_cast<int>(std::clamp<std::int64_t>(first + length, 0, size)));
}

template <class T>
T& cow_List<T>::MakeWritable(int i) {
    CopyArray();
    IsolateRange(i, i);
    return *Cell(i);
}

// Resize where no element goes: a private table with the slots for n elements.
template <class T>
void cow_List<T>::Grow(std::int64_t n) {
    const int slots = SlotsFor(n);
    CopyArray();
    if (slots == m_tableSlots) return;
    ForgetTail();
    for (int slot = slots; slot < m_tableSlots; ++slot) {
        if (m_table[slot]) m_table[slot]->Release(m_blockShift);
        m_table[slot] = nullptr;
    }
    if (slots == 0) {
        FreeTable(m_table);
        m_table = nullptr;
    } else if (!m_table) {
        m_table = NewTable(slots);
    } else {
        FitTable(slots);
        if (slots > m_tableSlots)
            std::fill_n(m_table + m_tableSlots, slots - m_tableSlots, nullptr);
    }
    m_tableSlots = slots;
}

// For Truncate(n) on a private table.
template <class T>
cow_ListCut<T> cow_List<T>::PrepareCut(int n) const {
    cow_ListCut<T> cut;
    if (const int slots = SlotsFor(n); slots != 0) {
        const int room = cow_list_detail::TableRoom(slots);
        if (!m_table || TableHead::Of(m_table)->m_room / 2 > room)
            cut.m_memory.reset(mem_Malloc(TableHead::Bytes(room)));
    }
    if constexpr (cow_list_detail::kBlanksRemoved<T>) {
        const int end = m_offset + n;
        if (n > 0 && (end & ((1 << m_blockShift) - 1)) != 0 &&
            m_table[end >> m_blockShift]->m_count == 1)
            cut.m_blank.emplace();
    }
    return cut;
}

// Resize where elements go, on a private table. Throws only if the new last block is shared and
// cut, and then nothing has changed.
template <class T>
void cow_List<T>::Truncate(int n, cow_ListCut<T>& cut) {
    const int slots = SlotsFor(n);
    const std::int64_t blockSize = std::int64_t{1} << m_blockShift;
    const std::int64_t end = std::int64_t{m_offset} + n;
    const int used = n == 0 ? 0 : static_cast<int>((end + blockSize - 1) >> m_blockShift);
    const std::int64_t left = (std::int64_t{used} << m_blockShift) - end;  // of the last block
    if (used > 0 && left > 0) {
        Block*& last = m_table[used - 1];
        if (last->m_count > 1) {
            Block* const copy = CopyOfBlock(used - 1, n);
            --last->m_count;
            last = copy;
        } else if constexpr (cow_list_detail::kBlanksRemoved<T>) {
            std::fill_n(last->m_data + (blockSize - left),
                        std::min<std::int64_t>(left, m_length - n), *cut.m_blank);
        }
    }
    for (int slot = used; slot < m_tableSlots; ++slot) {
        if (m_table[slot]) m_table[slot]->Release(m_blockShift);
        m_table[slot] = nullptr;
    }
    if (m_table) {
        const TableHead& head = *TableHead::Of(m_table);
        const bool dropped = head.m_tailFirst >> m_blockShift >= static_cast<unsigned>(used);
        if (dropped || slots != m_tableSlots) ForgetTail();
    }
    m_length = n;
    if (n == 0) {
        m_offset = 0;
        m_blockShift = 4;
    }
    if (slots == 0) {
        FreeTable(m_table);
        m_table = nullptr;
    } else if (cut.m_memory) {
        Block** const table =
            TableHead::Start(cut.m_memory.release(), 0, cow_list_detail::TableRoom(slots));
        std::copy_n(m_table, std::min(slots, m_tableSlots), table);
        FreeTable(m_table);
        m_table = table;
    }
    if (slots > m_tableSlots) std::fill_n(m_table + m_tableSlots, slots - m_tableSlots, nullptr);
    m_tableSlots = slots;
}
