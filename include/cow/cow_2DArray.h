#pragma once
#include <cow/cow_ArrayStorage.h>
#include <cow/cow_COW.h>
#include <cow/cow_String.h>
#include <kzm_export.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

// What copies of a cow_2DArray share: the elements row by row.
template <class T>
class cow_2DArrayRep {
    using Storage = cow_ArrayStorage<T>;

public:
    // Without a value the elements are T(), numbers among them left uninitialised. Negative sizes
    // read as 0.
    cow_2DArrayRep(int rows, int cols)
        : m_rows(std::max(rows, 0)), m_cols(std::max(cols, 0)), m_data(Storage::Blank(Count())) {}
    cow_2DArrayRep(int rows, int cols, const T& v)
        : m_rows(std::max(rows, 0)),
          m_cols(std::max(cols, 0)),
          m_data(Storage::Filled(Count(), v)) {}
    // Copy every element; an assignment that runs out of memory changes nothing.
    cow_2DArrayRep(const cow_2DArrayRep& other)
        : m_rows(other.m_rows),
          m_cols(other.m_cols),
          m_data(Storage::Copy(other.m_data, other.Count())) {}
    cow_2DArrayRep& operator=(const cow_2DArrayRep& other) {
        if (this == &other) return *this;
        T* const data = Storage::Copy(other.m_data, other.Count());
        Storage::Delete(m_data, Count());
        m_rows = other.m_rows;
        m_cols = other.m_cols;
        m_data = data;
        return *this;
    }
    ~cow_2DArrayRep() { Storage::Delete(m_data, Count()); }

    // The shape, the elements row by row (null where there are none) and how many they are. Count
    // throws std::bad_alloc where size_t cannot hold the number.
    int Rows() const { return m_rows; }
    int Cols() const { return m_cols; }
    T* Data() { return m_data; }
    const T* Data() const { return m_data; }
    std::size_t Count() const {
        const std::uint64_t count =
            std::uint64_t{static_cast<std::uint32_t>(m_rows)} * static_cast<std::uint32_t>(m_cols);
        if (count > std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
        return static_cast<std::size_t>(count);
    }

    // Rows and columns first, then the elements with their own ==.
    bool operator==(const cow_2DArrayRep& other) const {
        return m_rows == other.m_rows && m_cols == other.m_cols &&
               std::equal(m_data, m_data + Count(), other.m_data);
    }
    bool operator!=(const cow_2DArrayRep& other) const { return !(*this == other); }

private:
    friend struct kzm_Layout;

    std::int32_t m_rows;
    std::int32_t m_cols;
    T* m_data;  // owned; element (i, j) at i * m_cols + j, null where there are no elements
};

// Rectangular array whose shape is fixed when it is made and that is passed by value, such as a
// small matrix or a table of values: copies share the elements until one of them is written. Cost,
// failure, threads and how long references last are those of cow_FixedArray.
template <class T>
class cow_2DArray {
    using Rep = cow_2DArrayRep<T>;

public:
    using value_type = T;
    using const_iterator = const T*;
    using iterator = const T*;

    cow_2DArray() : m_rep(NewRep(0, 0, T())) {}
    cow_2DArray(int rows, int cols, const T& v) : m_rep(NewRep(rows, cols, v)) {}  // < 0 as 0
    // Copies share all elements: two pointers and an increment.
    cow_2DArray(const cow_2DArray& other) noexcept : m_rep(other.m_rep) {}
    cow_2DArray(cow_2DArray&& other) noexcept
        : m_rep(other.m_rep) {}  // shares: other stays a value
    cow_2DArray& operator=(const cow_2DArray& other) noexcept {
        m_rep = other.m_rep;
        return *this;
    }

    // The shape, never negative. O(1).
    int Rows() const { return m_rep.ConstGet().Rows(); }
    int Cols() const { return m_rep.ConstGet().Cols(); }

    // Row i, column j. Indices are not checked. ConstGet and the iterators never copy; Get makes
    // the array private first, also if the element is then only read.
    const T& ConstGet(int i, int j) const {
        const Rep& rep = m_rep.ConstGet();
        return rep.Data()[std::ptrdiff_t{i} * rep.Cols() + j];
    }
    T& Get(int i, int j) {
        Rep& rep = m_rep.Get();
        return rep.Data()[std::ptrdiff_t{i} * rep.Cols() + j];
    }
    const T* begin() const { return m_rep.ConstGet().Data(); }  // row by row
    const T* end() const { return begin() + m_rep.ConstGet().Count(); }

    // Equal shape and equal elements, compared as those of cow_FixedArray.
    bool operator==(const cow_2DArray& other) const {
        return m_rep.ConstGet() == other.m_rep.ConstGet();
    }
    bool operator!=(const cow_2DArray& other) const { return !(*this == other); }

private:
    friend struct kzm_Layout;

    static Rep* NewRep(int rows, int cols, const T& v) {
        void* const block = mem_OperatorNewThrow(sizeof(Rep));
        try {
            return ::new (block) Rep(rows, cols, v);
        } catch (...) {
            mem_Free(block);
            throw;
        }
    }

    cow_COW<Rep, cow_Direct<Rep>> m_rep;
};

#define COW_2D_ARRAY(X, T)                                       \
    X(cow_2DArrayRep<T>)                                         \
    X(cow_CountedHld<cow_2DArrayRep<T>>)                         \
    X(cow_COW<cow_2DArrayRep<T>, cow_Direct<cow_2DArrayRep<T>>>) \
    X(cow_2DArray<T>)
#define COW_2D_ARRAYS(X)    \
    COW_2D_ARRAY(X, int)    \
    COW_2D_ARRAY(X, float)  \
    COW_2D_ARRAY(X, double) \
    COW_2D_ARRAY(X, cow_String)
COW_2D_ARRAYS(KZM_DECLARE)
