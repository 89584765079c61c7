#pragma once
#include <cow/cow_ArrayStorage.h>
#include <cow/cow_COW.h>
#include <cow/cow_String.h>
#include <kzm_export.h>

#include <algorithm>
#include <climits>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>

// What copies of a cow_FixedArray share.
template <class T>
class cow_FixedArrayRep {
    using Storage = cow_ArrayStorage<T>;

public:
    // Without a value the elements are T(), numbers among them left uninitialised. Negative sizes
    // read as 0.
    explicit cow_FixedArrayRep(int n) : m_size(std::max(n, 0)), m_data(Storage::Blank(Count())) {}
    cow_FixedArrayRep(int n, const T& v)
        : m_size(std::max(n, 0)), m_data(Storage::Filled(Count(), v)) {}
    // Copy every element; an assignment that runs out of memory changes nothing.
    cow_FixedArrayRep(const cow_FixedArrayRep& other)
        : m_size(other.m_size), m_data(Storage::Copy(other.m_data, other.Count())) {}
    cow_FixedArrayRep& operator=(const cow_FixedArrayRep& other) {
        if (this == &other) return *this;
        T* const data = Storage::Copy(other.m_data, other.Count());
        Storage::Delete(m_data, Count());
        m_size = other.m_size;
        m_data = data;
        return *this;
    }
    ~cow_FixedArrayRep() { Storage::Delete(m_data, Count()); }

    // How many elements there are, and where; null where there are none.
    int Size() const { return m_size; }
    T* Data() { return m_data; }
    const T* Data() const { return m_data; }

    // Sizes first, then the elements with their own ==.
    bool operator==(const cow_FixedArrayRep& other) const {
        return m_size == other.m_size && std::equal(m_data, m_data + m_size, other.m_data);
    }
    bool operator!=(const cow_FixedArrayRep& other) const { return !(*this == other); }

private:
    friend struct kzm_Layout;

    std::size_t Count() const { return static_cast<std::size_t>(m_size); }

    std::int32_t m_size;
    T* m_data;  // owned; null for size 0
};

// Array whose size is fixed when it is made and that is passed by value: copies share the elements
// until one of them is written. Choose it for numbers of one length, such as the components of a
// result; for what grows, or where a copy is mostly the same as its original, use cow_List.
//
// A copy costs two pointers and an increment, the first write to a shared array copies all its
// elements. References and pointers end with the first write after a copy was made, and with the
// array. On exhaustion std::bad_alloc is thrown and the array stays as it was. One thread at a time
// for an array and all its copies.
template <class T>
class cow_FixedArray {
    using Rep = cow_FixedArrayRep<T>;

public:
    using value_type = T;
    using const_iterator = const T*;
    using iterator = const T*;

    // Without elements.
    cow_FixedArray() : m_rep(NewRep(0)) {}

    cow_FixedArray(int n, const T& v) : m_rep(NewRep(n, v)) {}  // negative n as 0
    // The elements of the range, converted to T.
    template <std::forward_iterator It>
    requires std::convertible_to<std::iter_reference_t<It>, T> cow_FixedArray(It first, It last)
        : m_rep(NewRep(CountOf(first, last))) {
        std::copy(first, last, m_rep.Get().Data());
    }
    // Share all elements: two pointers and an increment.
    cow_FixedArray(const cow_FixedArray& other) noexcept : m_rep(other.m_rep) {}
    // Shares: other stays a value.
    cow_FixedArray(cow_FixedArray&& other) noexcept : m_rep(other.m_rep) {}
    // Shares, and drops the share it had.
    cow_FixedArray& operator=(const cow_FixedArray& other) noexcept {
        m_rep = other.m_rep;
        return *this;
    }

    // The number of elements, never negative. O(1).
    int Size() const { return m_rep.ConstGet().Size(); }

    // Indices are not checked. ConstGet and the iterators never copy; Get makes the array private
    // first, also if the element is then only read. Keep a reference from Get for a loop over many.
    const T& ConstGet(int i) const { return m_rep.ConstGet().Data()[i]; }
    T& Get(int i) { return m_rep.Get().Data()[i]; }
    const T* begin() const { return m_rep.ConstGet().Data(); }
    const T* end() const { return begin() + Size(); }

    // Element by element, even between copies: a NaN makes an array unequal to itself.
    bool operator==(const cow_FixedArray& other) const {
        return m_rep.ConstGet() == other.m_rep.ConstGet();
    }
    bool operator!=(const cow_FixedArray& other) const { return !(*this == other); }

private:
    friend struct kzm_Layout;

    template <class It>
    static int CountOf(const It& first, const It& last) {
        const auto n = std::distance(first, last);
        if (n > INT_MAX) throw std::bad_alloc();
        return static_cast<int>(n);
    }
    template <class... Args>
    static Rep* NewRep(const Args&... args) {
        void* const block = mem_OperatorNewThrow(sizeof(Rep));
        try {
            return ::new (block) Rep(args...);
        } catch (...) {
            mem_Free(block);
            throw;
        }
    }

    cow_COW<Rep, cow_Direct<Rep>> m_rep;
};

// Lexicographic.
template <std::three_way_comparable T>
auto operator<=>(const cow_FixedArray<T>& a, const cow_FixedArray<T>& b) {
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end());
}

#define COW_FIXED_ARRAY(X, T)                                          \
    X(cow_FixedArrayRep<T>)                                            \
    X(cow_CountedHld<cow_FixedArrayRep<T>>)                            \
    X(cow_COW<cow_FixedArrayRep<T>, cow_Direct<cow_FixedArrayRep<T>>>) \
    X(cow_FixedArray<T>)
#define COW_FIXED_ARRAYS(X)    \
    COW_FIXED_ARRAY(X, int)    \
    COW_FIXED_ARRAY(X, float)  \
    COW_FIXED_ARRAY(X, double) \
    COW_FIXED_ARRAY(X, cow_String)
COW_FIXED_ARRAYS(KZM_DECLARE)
