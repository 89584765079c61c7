#pragma once
#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.h>

#include <cstddef>
#include <iterator>
#include <span>
#include <type_traits>

// The elements of value arrays and lists as std::span, for code that takes one or a pointer with a
// length. Nothing is copied, but that the forms for writing (Writable) make the value private
// first, as its Get does: do not copy the value while such a span is in use, or the copy changes
// with it. A span keeps nothing alive: it ends where references into its container end.

// The elements of an array; of a 2D array row by row, or one row. Indices are not checked.
template <class T>
std::span<const T> cow_ConstSpan(const cow_FixedArray<T>& array) {
    return {array.begin(), array.end()};
}
template <class T>
std::span<T> cow_WritableSpan(cow_FixedArray<T>& array) {
    if (array.Size() == 0) return {};
    return {&array.Get(0), static_cast<std::size_t>(array.Size())};
}
template <class T>
std::span<const T> cow_ConstSpan(const cow_2DArray<T>& array) {
    return {array.begin(), array.end()};
}
template <class T>
std::span<T> cow_WritableSpan(cow_2DArray<T>& array) {
    const auto size = static_cast<std::size_t>(array.end() - array.begin());
    if (size == 0) return {};
    return {&array.Get(0, 0), size};
}
template <class T>
std::span<const T> cow_ConstRow(const cow_2DArray<T>& array, int i) {
    const auto cols = static_cast<std::size_t>(array.Cols());
    return cow_ConstSpan(array).subspan(static_cast<std::size_t>(i) * cols, cols);
}
template <class T>
std::span<T> cow_WritableRow(cow_2DArray<T>& array, int i) {
    const auto cols = static_cast<std::size_t>(array.Cols());
    return cow_WritableSpan(array).subspan(static_cast<std::size_t>(i) * cols, cols);
}

// The elements of a list as a range of spans, one for each of its blocks; see cow_ConstRuns.
template <class List, class Item>
class cow_ListRuns {
public:
    // Stands on a run; those for writing have made it private.
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::span<Item>;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = const value_type&;

        iterator() = default;                                       // the end of every list
        explicit iterator(List& list) : m_list(&list) { Enter(); }  // at its first run

        reference operator*() const { return m_run; }
        pointer operator->() const { return &m_run; }
        iterator& operator++() {
            m_first += static_cast<int>(m_run.size());
            Enter();
            return *this;
        }
        iterator operator++(int) {
            const iterator before = *this;
            ++*this;
            return before;
        }

        // Of one list.
        bool operator==(const iterator& other) const { return m_run.data() == other.m_run.data(); }

    private:
        void Enter() {
            m_run = {};
            const int left = m_list->Length() - m_first;
            if (left == 0) return;
            if constexpr (!std::is_const_v<Item>) m_list->UncheckedGet(m_first);
            int length;
            Item* const run = m_list->Run(m_first, left, length);
            m_run = {run, static_cast<std::size_t>(length)};
        }

        List* m_list = nullptr;
        int m_first = 0;  // index of the run's first element
        std::span<Item> m_run;
    };

    explicit cow_ListRuns(List& list) : m_list(&list) {}  // which must live as long

    // All runs of the list.
    iterator begin() const { return iterator(*m_list); }
    iterator end() const { return iterator(); }

private:
    List* m_list;
};

// The elements in runs that lie side by side, in order: for kernels that want pointers.
//
//     for (std::span<const double> run : cow_ConstRuns(list)) sum = Sum(run.data(), run.size(),
//     sum);
//
// A list starts with blocks of 16 elements, one pre-sized for n has between 8 and 17 runs. The form
// for writing makes a block private when its run is reached; std::bad_alloc may leave then, and the
// list is as it was but for what has been written.
template <class T>
cow_ListRuns<const cow_List<T>, const T> cow_ConstRuns(const cow_List<T>& list) {
    return cow_ListRuns<const cow_List<T>, const T>(list);
}
template <class T>
cow_ListRuns<cow_List<T>, T> cow_WritableRuns(cow_List<T>& list) {
    return cow_ListRuns<cow_List<T>, T>(list);
}

// A span of a temporary would end at once.
template <class T>
void cow_ConstSpan(const cow_FixedArray<T>&&) = delete;
template <class T>
void cow_ConstSpan(const cow_2DArray<T>&&) = delete;
template <class T>
void cow_ConstRow(const cow_2DArray<T>&&, int) = delete;
template <class T>
void cow_ConstRuns(const cow_List<T>&&) = delete;
