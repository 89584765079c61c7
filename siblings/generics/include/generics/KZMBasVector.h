#pragma once
#include <kzm_export.h>

#include <concepts>
#include <cstddef>
#include <functional>
#include <new>
#include <utility>

// Storage of every KZMBasVector, whatever its elements: the code that grows it exists once.
class KZM_API KZMBasVectorStorage {
protected:
    // Moves n elements to an unused place and ends the old ones.
    using Relocate = void (*)(void* to, void* from, int n);

    KZMBasVectorStorage() = default;
    KZMBasVectorStorage(const KZMBasVectorStorage&) = delete;
    KZMBasVectorStorage& operator=(const KZMBasVectorStorage&) = delete;
    ~KZMBasVectorStorage();

    void Reallocate(int capacity, std::size_t elementSize, Relocate relocate);
    int GrownCapacity(int needed) const;  // by half at least

    void* m_data = nullptr;
    int m_size = 0;
    int m_capacity = 0;
};

// Growable array, 0-based. An index must be below Size(), which is not checked. Elements lie side
// by side; pointers to them end when the vector grows. T's copy constructor may throw, its move
// operations and destructor must not. On exhaustion std::bad_alloc leaves and the vector is as it
// was. For arrays that are passed by value take cow_List.
template <class T>
class KZMBasVector : private KZMBasVectorStorage {
public:
    // Empty, without memory.
    KZMBasVector() = default;
    // That many copies of the value.
    explicit KZMBasVector(int size, const T& value = T()) : KZMBasVector() { Resize(size, value); }
    // Copies of n values side by side.
    template <std::same_as<T> U>  // so that 0 is a size and never a null address
    KZMBasVector(const U* values, int n) : KZMBasVector() {
        Append(values, n);
    }
    // Copies every element, or takes them over and leaves the other empty.
    KZMBasVector(const KZMBasVector& other) : KZMBasVector() { Append(other.Data(), other.Size()); }
    KZMBasVector(KZMBasVector&& other) noexcept : KZMBasVector() { Swap(other); }
    KZMBasVector& operator=(KZMBasVector other) noexcept {
        Swap(other);
        return *this;
    }
    ~KZMBasVector() { Clear(); }

    // Elements, and how many fit without growing.
    int Size() const { return m_size; }
    int Capacity() const { return m_capacity; }
    bool IsEmpty() const { return m_size == 0; }
    // The elements side by side. Data may be null where there are none; Last needs one.
    const T* Data() const { return static_cast<const T*>(m_data); }
    T* Data() { return static_cast<T*>(m_data); }
    const T& operator[](int i) const { return Data()[i]; }
    T& operator[](int i) { return Data()[i]; }
    const T& Last() const { return Data()[m_size - 1]; }
    T& Last() { return Data()[m_size - 1]; }
    const T* begin() const { return Data(); }
    const T* end() const { return Data() + m_size; }
    T* begin() { return Data(); }
    T* end() { return Data() + m_size; }

    int Find(const T& value) const {  // the first index, -1 if absent; linear
        for (int i = 0; i < m_size; ++i)
            if (Data()[i] == value) return i;
        return -1;
    }

    // Makes room for so many in all; never shrinks.
    void Reserve(int capacity) {
        if (capacity > m_capacity) Reallocate(capacity, sizeof(T), &Move);
    }

    void Compact() {  // gives back the room that is not used
        if (m_capacity > m_size) Reallocate(m_size, sizeof(T), &Move);
    }

    // A negative size is 0. New elements are copies of `value`, which may be an element.
    void Resize(int size, const T& value = T());

    // The value may be an element.
    void Append(const T& value) {
        if (m_size < m_capacity) {
            ::new (static_cast<void*>(end())) T(value);
            ++m_size;
        } else {
            T copy(value);
            Reserve(GrownCapacity(1));
            ::new (static_cast<void*>(end())) T(std::move(copy));
            ++m_size;
        }
    }
    void Append(const T* values, int n);  // n below 1 appends nothing; own elements may be given

    // Before the element at i; i == Size() appends. The value may be an element.
    void Insert(int i, const T& value);
    // Closes the gap.
    void Remove(int i) { Remove(i, 1); }
    void Remove(int i, int n);  // n elements from i on, all of which exist; n below 1 removes none
    // The vector must not be empty.
    void RemoveLast() { Data()[--m_size].~T(); }

    void Clear() {  // keeps the room
        while (m_size > 0) RemoveLast();
    }
    // Exchanges the elements. O(1).
    void Swap(KZMBasVector& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    // Element by element with ==.
    friend bool operator==(const KZMBasVector& a, const KZMBasVector& b) {
        if (a.m_size != b.m_size) return false;
        for (int i = 0; i < a.m_size; ++i)
            if (!(a[i] == b[i])) return false;
        return true;
    }

private:
    static void Move(void* to, void* from, int n) {
        for (int i = 0; i < n; ++i) {
            T* const source = static_cast<T*>(from) + i;
            ::new (static_cast<void*>(static_cast<T*>(to) + i)) T(std::move(*source));
            source->~T();
        }
    }
};

template <class T>
void KZMBasVector<T>::Resize(int size, const T& value) {
    if (size > m_size) {
        const T copy(value);
        if (size > m_capacity) Reserve(GrownCapacity(size - m_size));
        const int before = m_size;
        try {
            for (; m_size < size; ++m_size) ::new (static_cast<void*>(end())) T(copy);
        } catch (...) {
            while (m_size > before) RemoveLast();
            throw;
        }
    }
    while (m_size > 0 && m_size > size) RemoveLast();
}

template <class T>
void KZMBasVector<T>::Append(const T* values, int n) {
    if (n < 1) return;
    if (n > m_capacity - m_size) {
        const bool own = !std::less<>()(values, Data()) && std::less<>()(values, Data() + m_size);
        const std::ptrdiff_t at = own ? values - Data() : 0;
        Reserve(GrownCapacity(n));
        if (own) values = Data() + at;
    }
    const int before = m_size;
    try {
        for (int i = 0; i < n; ++i, ++m_size) ::new (static_cast<void*>(end())) T(values[i]);
    } catch (...) {
        while (m_size > before) RemoveLast();
        throw;
    }
}

template <class T>
void KZMBasVector<T>::Insert(int i, const T& value) {
    Append(value);
    for (int k = m_size - 1; k > i; --k) std::swap(Data()[k], Data()[k - 1]);
}

template <class T>
void KZMBasVector<T>::Remove(int i, int n) {
    if (n < 1) return;
    for (int k = i; k + n < m_size; ++k) Data()[k] = std::move(Data()[k + n]);
    for (; n > 0; --n) RemoveLast();
}
