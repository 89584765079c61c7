#pragma once
#include <coreutils/atr_StringBase.h>
#include <cow/cow_List.h>
#include <cow/cow_ListTable.impl.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

// Whether qsort may exchange elements as bytes: true for what holds no pointer into itself.
template <class T>
inline constexpr bool cow_kMovesAsBytes =
    std::is_trivially_copyable_v<T> || std::is_base_of_v<atr_StringBase, T>;
template <class T>
inline constexpr bool cow_kMovesAsBytes<cow_List<T>> = true;
template <class T>
inline constexpr bool cow_kMovesAsBytes<cow_FixedArray<T>> = true;

// The elements of a list as one array, for the life of this object.
template <class T>
class cow_CArray {
public:
    explicit cow_CArray(const cow_List<T>& list) : m_elements(list.GetCArray(m_length)) {}
    cow_CArray(const cow_CArray&) = delete;
    cow_CArray& operator=(const cow_CArray&) = delete;
    ~cow_CArray() { cow_List<T>::ReleaseCArray(m_elements, m_length); }

    int m_length = 0;
    T* m_elements;
};

template <class T>
void cow_List<T>::RaiseOutOfRange() {
    std::abort();
}

template <class T>
int cow_List<T>::FindMember(const T& v) const {
    for (int i = 0, run; i < m_length; i += run) {
        const T* const items = Run(i, m_length - i, run);
        const T* const found = std::find(items, items + run, v);
        if (found != items + run) return i + static_cast<int>(found - items);
    }
    return -1;
}

template <class T>
bool cow_List<T>::IsEqual(const cow_List& other) const {
    if (m_length != other.m_length) return false;
    for (int i = 0, run; i < m_length; i += run) {
        const T* const theirs = other.Run(i, m_length - i, run);
        const T* const ours = Run(i, run, run);
        if (!std::equal(ours, ours + run, theirs)) return false;
    }
    return true;
}

template <class T>
cow_List<T> cow_List<T>::Difference(const cow_List& other) const {
    cow_List result;
    if constexpr (std::is_arithmetic_v<T> || std::is_base_of_v<atr_StringBase, T>) {
        if (m_length > 16 && other.m_length > 16) {
            // NaN equals nothing and would spoil the order of the others.
            const auto equalsItself = [](const T& v) { return v == v; };
            const cow_CArray<T> sorted(other);
            T* const first = sorted.m_elements;
            T* const last = std::partition(first, first + sorted.m_length, equalsItself);
            std::sort(first, last);
            for (const T& each : *this)
                if (!equalsItself(each) || !std::binary_search(first, last, each))
                    result.Append(each);
            return result;
        }
    }
    for (const T& each : *this)
        if (!other.IsMember(each)) result.Append(each);
    return result;
}

template <class T>
cow_List<T> cow_List<T>::Slice(int first, int n) const {
    if (n <= 0) return cow_List();
    CheckIndex(first);
    if (n > m_length - first) RaiseOutOfRange();
    if (n == m_length) return *this;
    if (n < 1 << m_blockShift)
        return cow_List(cow_ListConstruct(), n).AppendElements(*this, first, n);
    cow_List slice = EmptyLikeThis();
    const int firstSlot = (m_offset + first) >> m_blockShift;
    const int slots = ((m_offset + first + n - 1) >> m_blockShift) - firstSlot + 1;
    slice.m_offset = m_offset + first - (firstSlot << m_blockShift);
    slice.Grow(n);
    std::copy_n(m_table + firstSlot, slots, slice.m_table);
    for (int slot = 0; slot < slots; ++slot) ++slice.m_table[slot]->m_count;
    ForgetTail();
    slice.m_length = n;
    return slice;
}

template <class T>
T* cow_List<T>::GetCArray(int& n) const {
    n = m_length;
    if (n == 0) return nullptr;
    const std::size_t count = static_cast<std::size_t>(n);
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
    std::unique_ptr<void, cow_FreeBlock> memory(mem_Malloc(count * sizeof(T)));
    T* const elements = static_cast<T*>(memory.get());
    int i = 0;
    try {
        for (int run; i < n; i += run) {
            const T* const items = Run(i, n - i, run);
            std::uninitialized_copy_n(items, run, elements + i);
        }
    } catch (...) {
        std::destroy_n(elements, i);
        throw;
    }
    static_cast<void>(memory.release());
    return elements;
}

template <class T>
void cow_List<T>::ReleaseCArray(T* elements, int n) {
    std::destroy_n(elements, n);
    mem_Free(elements);
}

template <class T>
void cow_List<T>::MakeTail() {
    const unsigned position = static_cast<unsigned>(m_offset + m_length);
    const unsigned slot = position >> m_blockShift;
    const bool fits =
        (slot | 15) + 1 == static_cast<unsigned>(m_tableSlots);  // as Resize leaves it
    if (fits && *m_tableCount == 1 && !m_table[slot] && position != kLastPosition) [[likely]] {
        m_table[slot] = Block::New(m_blockShift);
    } else {
        Grow(std::int64_t{m_length} + 1);
        IsolateRange(m_length, m_length);
    }
    TableHead& head = *TableHead::Of(m_table);
    head.m_tail = m_table[slot]->Elements();
    head.m_tailFirst = slot << m_blockShift;
    head.m_tailSize = std::min(1u << m_blockShift, kLastPosition - head.m_tailFirst);
}

template <class T>
cow_List<T>& cow_List<T>::PrependToNewSlot(const T& v) {
    Prefix();
    IsolateRange(-1, -1);
    *Cell(-1) = v;
    --m_offset;
    ++m_length;
    return *this;
}

template <class T>
cow_List<T>& cow_List<T>::InsertIndex(int i, const T& v) {
    if (i == 0) return Prepend(v);
    if (i == m_length) return Append(v);
    CheckIndex(i);
    T value = v;  // it may be an element
    Grow(std::int64_t{m_length} + 1);
    IsolateRange(i, m_length);
    const int blockMask = (1 << m_blockShift) - 1;
    for (int gap = m_length; gap > i;) {
        T* const cell = Cell(gap);
        const int run = std::min(gap - i, (m_offset + gap) & blockMask);
        std::move_backward(cell - run, cell, cell + 1);
        gap -= run;
        if (gap > i) {
            *Cell(gap) = std::move(*Cell(gap - 1));
            --gap;
        }
    }
    *Cell(i) = std::move(value);
    ++m_length;
    return *this;
}

template <class T>
cow_List<T>& cow_List<T>::Concatenate(const cow_List& other) {
    return AppendElements(other, 0, other.m_length);
}

template <class T>
cow_List<T>& cow_List<T>::AppendElements(const cow_List& other, int first, int n) {
    if (n == 0) return Resize(m_length);
    Grow(std::int64_t{m_length} + n);
    IsolateRange(m_length, m_length + n - 1);
    for (int done = 0, run; done < n; done += run) {
        const T* const from = other.Run(first + done, n - done, run);
        T* const to = Run(m_length + done, run, run);
        std::copy_n(from, run, to);
    }
    m_length += n;
    return *this;
}

// Makes the list n elements, each run of them set by write(to, run, i). The old elements are there
// until the last run is written.
template <class T>
template <class Write>
cow_List<T>& cow_List<T>::Overwrite(int n, const Write& write) {
    if (n < 0) RaiseOutOfRange();
    if (n == 0) return Resize(0);
    Rewrite(n, SlotsFor(n), write);
    return *this;
}

// The same for n > 0, leaving a table of `slots`. Where something is shared, the blocks to write
// are gathered aside, fresh ones in place of those that are not this list's alone: all elements of
// a block are overwritten, so that none need be copied first. If assigning can fail, all blocks are
// fresh, and the list has its old elements or the new ones.
template <class T>
template <class Write>
void cow_List<T>::Rewrite(int n, int slots, const Write& write) {
    if (std::is_nothrow_copy_assignable_v<T> && *m_tableCount == 1 && !SharesBlocks(n)) {
        const bool shrinks = n < m_length;
        cow_ListCut<T> cut;
        if (shrinks)
            cut = PrepareCut(n);
        else if (slots != m_tableSlots)
            Grow(n);
        IsolateRange(0, n - 1);
        for (int i = 0, run; i < n; i += run) {
            T* const to = Run(i, n - i, run);
            write(to, run, i);
        }
        if (shrinks)
            Truncate(n, cut);
        else
            m_length = n;
        return;
    }
    cow_List fresh = EmptyLikeThis();
    fresh.m_table = NewTable(slots);
    fresh.m_tableSlots = slots;
    const int first = m_offset >> m_blockShift;
    const int last = (m_offset + n - 1) >> m_blockShift;
    const auto keeps = [&](int slot) {
        return std::is_nothrow_copy_assignable_v<T> && *m_tableCount == 1 && slot < m_tableSlots &&
               m_table[slot] && m_table[slot]->m_count == 1 && (slot < last || n >= m_length);
    };
    for (int slot = first; slot <= last; ++slot)
        if (!keeps(slot)) fresh.m_table[slot] = Block::New(m_blockShift);
    for (int slot = first; slot <= last; ++slot)
        if (!fresh.m_table[slot]) std::swap(fresh.m_table[slot], m_table[slot]);
    for (int i = 0, run; i < n; i += run) {
        T* const to = fresh.Run(i, n - i, run);
        write(to, run, i);
    }
    fresh.m_length = n;
    Swap(fresh);
}

template <class T>
bool cow_List<T>::SharesBlocks(int n) const {
    const int end = std::min(m_tableSlots, ((m_offset + n - 1) >> m_blockShift) + 1);
    return std::any_of(m_table + std::min(m_offset >> m_blockShift, end), m_table + end,
                       [](const Block* block) { return block && block->m_count > 1; });
}

template <class T>
cow_List<T>& cow_List<T>::Fill(int n, const T& v) {
    const T value = v;
    return Overwrite(n, [&](T* to, int run, int) { std::fill_n(to, run, value); });
}

// Where the elements come from this list, each is written at its own place or before it, so that
// going forward never reads what has been written.
template <class T>
cow_List<T>& cow_List<T>::SetFromArray(const T* a, int n) {
    return Overwrite(n, [a](T* to, int run, int i) { std::copy_n(a + i, run, to); });
}

template <class T>
cow_List<T>& cow_List<T>::Resize(int n) {
    if (n < 0) RaiseOutOfRange();
    if (n >= m_length && n != 0) {
        Grow(n);
    } else if (n == 0 && *m_tableCount > 1) {
        cow_List fresh = EmptyLikeThis();
        fresh.Resize(0);
        Swap(fresh);
    } else {
        CopyArray();
        cow_ListCut<T> cut = PrepareCut(n);
        Truncate(n, cut);
    }
    return *this;
}

template <class T>
cow_List<T>& cow_List<T>::RemoveIndex(int i) {
    CheckIndex(i);
    const int last = m_length - 1;
    if (i == last) return Resize(last);
    CopyArray();
    IsolateRange(i, last);
    cow_ListCut<T> cut = PrepareCut(last);
    const int blockMask = (1 << m_blockShift) - 1;
    for (int gap = i; gap < last;) {
        T* const cell = Cell(gap);
        const int run = std::min(last - gap, blockMask - ((m_offset + gap) & blockMask));
        std::move(cell + 1, cell + 1 + run, cell);
        gap += run;
        if (gap < last) {
            *Cell(gap) = std::move(*Cell(gap + 1));
            ++gap;
        }
    }
    Truncate(last, cut);
    return *this;
}

template <class T>
cow_List<T>& cow_List<T>::RemoveLast() {
    CheckIndex(m_length - 1);
    return Resize(m_length - 1);
}

template <class T>
cow_List<T>& cow_List<T>::RemoveMember(const T& v) {
    const int i = FindMember(v);
    return i < 0 ? *this : RemoveIndex(i);
}

template <class T>
T cow_List<T>::Pop() {
    T last = Last();
    RemoveLast();
    return last;
}

template <class T>
cow_List<T>& cow_List<T>::Sort() {
    if (m_length == 0) return *this;
    const cow_CArray<T> sorted(*this);
    T* const first = sorted.m_elements;
    if constexpr (cow_kMovesAsBytes<T>)
        std::qsort(first, static_cast<std::size_t>(sorted.m_length), sizeof(T), SortCmp);
    else
        std::sort(first, first + sorted.m_length,
                  [](const T& a, const T& b) { return SortCmp(&a, &b) < 0; });
    Rewrite(m_length, m_tableSlots,
            [first](T* to, int run, int i) { std::copy_n(first + i, run, to); });
    return *this;
}

template <class T>
int cow_List<T>::SortCmp(const void* a, const void* b) {
    const T& left = *static_cast<const T*>(a);
    const T& right = *static_cast<const T*>(b);
    if constexpr (std::three_way_comparable<T>) {
        const auto order = left <=> right;
        return order < 0 ? -1 : order > 0 ? 1 : 0;
    } else {
        return left < right ? -1 : right < left ? 1 : 0;
    }
}
