#pragma once
#include <alloc/mem_alloc.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <new>

// Element storage of the arrays, in blocks of mem_Malloc; none for 0 elements. More bytes than can
// be named are exhaustion.
template <class T>
struct cow_ArrayStorage {
    static T* Allocate(std::size_t n) {
        if (n > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
        return n == 0 ? nullptr : static_cast<T*>(mem_Malloc(n * sizeof(T)));
    }
    // A block of n elements made by construct(T* raw), which cleans up after itself if it throws.
    template <class Construct>
    static T* New(std::size_t n, const Construct& construct) {
        T* const data = Allocate(n);
        try {
            construct(data);
        } catch (...) {
            mem_Free(data);
            throw;
        }
        return data;
    }
    static T* Blank(std::size_t n) {  // numbers are left as they are
        return New(n, [n](T* to) { std::uninitialized_default_construct_n(to, n); });
    }
    static T* Filled(std::size_t n, const T& v) {
        return New(n, [n, &v](T* to) { std::uninitialized_fill_n(to, n, v); });
    }
    static T* Copy(const T* from, std::size_t n) {
        return New(n, [n, from](T* to) { std::uninitialized_copy_n(from, n, to); });
    }
    static void Delete(T* data, std::size_t n) {
        std::destroy_n(data, n);
        mem_Free(data);
    }
};
