#pragma once
#include <runtime/KZMBasDCAllocator.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

// A named work array of T that ends with this object, in a KZMBasDCAllocator that must outlive it:
//
//     KZMBasWorkArray<double> residual(arrays, "residual", n);
//     for (double& value : residual) value = 1;
//
// For plain data such as numbers. The allocator's reports list it under its name; other modules
// find it there by name or by Number().
template <class T>
class KZMBasWorkArray {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);
    static_assert(alignof(T) <= 2 * sizeof(void*), "the heap aligns to two pointers");

public:
    using value_type = T;

    KZMBasWorkArray() = default;  // of no elements, in no allocator

    // `size` elements of T(). std::bad_alloc if there is no memory, or for more than a variable can
    // hold: 4 gigabytes.
    KZMBasWorkArray(KZMBasDCAllocator& arrays, const char* name, std::size_t size)
        : m_arrays(&arrays) {
        if (size > UINT_MAX / sizeof(T)) throw std::bad_alloc();
        m_number = arrays.registerVariable(static_cast<unsigned>(size), int{sizeof(T)}, name);
        if (m_number < 0) throw std::bad_alloc();
        m_data = static_cast<T*>(arrays.getVariable(m_number));
        m_size = size;
        std::fill_n(m_data, size, T());
    }

    // The array goes over to this object; other is left without one.
    KZMBasWorkArray(KZMBasWorkArray&& other) noexcept { Swap(other); }
    // Gives back the array that this object has.
    KZMBasWorkArray& operator=(KZMBasWorkArray other) noexcept {
        Swap(other);
        return *this;
    }
    ~KZMBasWorkArray() {
        if (m_number >= 0) m_arrays->freeVariable(m_number);
    }

    std::size_t Size() const { return m_size; }  // elements
    int Number() const { return m_number; }      // the allocator's, -1 for none

    // The elements, which stay in place until this object ends. Indices are not checked.
    T* Data() { return m_data; }
    const T* Data() const { return m_data; }
    T& operator[](std::size_t i) { return m_data[i]; }
    const T& operator[](std::size_t i) const { return m_data[i]; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }

private:
    void Swap(KZMBasWorkArray& other) noexcept {
        std::swap(m_arrays, other.m_arrays);
        std::swap(m_number, other.m_number);
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
    }

    KZMBasDCAllocator* m_arrays = nullptr;
    int m_number = -1;
    T* m_data = nullptr;
    std::size_t m_size = 0;
};
