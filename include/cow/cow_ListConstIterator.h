#pragma once
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>

template <class T>
class cow_List;

// Standard random access iterator over a constant cow_List: for range-for and the algorithms of the
// standard library. Walks block by block and never copies one. Ends with the next write to the
// list, or with the list; to read on while the list changes use cow_ListIter.
template <class T>
class cow_ListConstIterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    // Belongs to no list: to be assigned before anything else.
    cow_ListConstIterator() = default;

    reference operator*() const { return *m_item; }
    pointer operator->() const { return m_item; }
    // The element n places from here, which must exist. O(1).
    reference operator[](difference_type n) const { return *(*this + n); }

    cow_ListConstIterator& operator++() {
        if (++m_item == m_blockEnd) EnterNextBlock();
        return *this;
    }
    cow_ListConstIterator& operator--() {
        if (m_item == m_blockEnd - (std::ptrdiff_t{1} << m_list->m_blockShift))
            MoveTo(Index() - 1);
        else
            --m_item;
        return *this;
    }
    cow_ListConstIterator operator++(int) {
        const cow_ListConstIterator before = *this;
        ++*this;
        return before;
    }
    cow_ListConstIterator operator--(int) {
        const cow_ListConstIterator before = *this;
        --*this;
        return before;
    }
    // Any place from begin() to end(). O(1): one look at the block table.
    cow_ListConstIterator& operator+=(difference_type n) {
        MoveTo(Index() + n);
        return *this;
    }
    cow_ListConstIterator& operator-=(difference_type n) { return *this += -n; }

    // Places and distances within one list.
    friend cow_ListConstIterator operator+(cow_ListConstIterator it, difference_type n) {
        return it += n;
    }
    friend cow_ListConstIterator operator+(difference_type n, cow_ListConstIterator it) {
        return it += n;
    }
    friend cow_ListConstIterator operator-(cow_ListConstIterator it, difference_type n) {
        return it -= n;
    }
    friend difference_type operator-(const cow_ListConstIterator& a,
                                     const cow_ListConstIterator& b) {
        return a.Index() - b.Index();
    }
    // Iterators of one list, by place.
    friend bool operator==(const cow_ListConstIterator& a, const cow_ListConstIterator& b) {
        return a.m_item == b.m_item;
    }
    friend std::strong_ordering operator<=>(const cow_ListConstIterator& a,
                                            const cow_ListConstIterator& b) {
        return a.Index() <=> b.Index();
    }

private:
    friend class cow_List<T>;

    cow_ListConstIterator(const cow_List<T>& list, int index) : m_list(&list) { MoveTo(index); }

    difference_type Index() const {
        if (!m_item) return 0;
        const std::int64_t end = (std::int64_t{m_slot} + 1) << m_list->m_blockShift;
        return static_cast<difference_type>(end - (m_blockEnd - m_item) - m_list->m_offset);
    }

    // The end lies behind the last element, in the block of that element.
    void MoveTo(difference_type index) {
        const int length = m_list->m_length;
        if (length == 0) return;
        const int behind = index == length ? 1 : 0;
        const int position = m_list->m_offset + static_cast<int>(index) - behind;
        const int shift = m_list->m_blockShift;
        m_slot = position >> shift;
        const T* const block = m_list->m_table[m_slot]->Elements();
        m_item = block + (position - (m_slot << shift)) + behind;
        m_blockEnd = block + (std::ptrdiff_t{1} << shift);
    }

    void EnterNextBlock() {
        const int last = m_list->m_offset + (m_list->m_length - 1);
        const int shift = m_list->m_blockShift;
        if (m_slot == last >> shift) return;
        m_item = m_list->m_table[++m_slot]->Elements();
        m_blockEnd = m_item + (std::ptrdiff_t{1} << shift);
    }

    const cow_List<T>* m_list = nullptr;
    const T* m_item = nullptr;  // null while the list is empty
    const T* m_blockEnd = nullptr;
    int m_slot = 0;
};
