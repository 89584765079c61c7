#pragma once
#include <alloc/mem_alloc.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

// Stack of pointers for walks through trees. The first N entries lie in the object itself, so that
// no walk of usual depth allocates; deeper ones continue on the heap. When memory runs out,
// std::bad_alloc leaves the stack as it was.
template <class T, std::size_t N>
class cow_SmallStack {
    static_assert(std::is_pointer_v<T>);

public:
    cow_SmallStack() : m_entries(m_own), m_size(0), m_capacity(N) {}
    cow_SmallStack(const cow_SmallStack& other) : cow_SmallStack() { *this = other; }
    cow_SmallStack& operator=(const cow_SmallStack& other) {
        if (this == &other) return *this;
        if (other.m_size > m_capacity) Reserve(other.m_size);
        m_size = other.m_size;
        std::memcpy(m_entries, other.m_entries, m_size * sizeof(T));
        return *this;
    }
    ~cow_SmallStack() {
        if (m_entries != m_own) mem_Free(m_entries);
    }

    bool Empty() const { return m_size == 0; }
    std::size_t Size() const { return m_size; }
    T& operator[](std::size_t i) { return m_entries[i]; }

    T Top() const { return m_entries[m_size - 1]; }
    void Pop() { --m_size; }
    void Clear() { m_size = 0; }
    void Push(T entry) {
        if (m_size == m_capacity) Reserve(2 * m_capacity);
        m_entries[m_size++] = entry;
    }

private:
    void Reserve(std::size_t capacity) {
        if (capacity > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
        T* const entries = static_cast<T*>(mem_Malloc(capacity * sizeof(T)));
        std::memcpy(entries, m_entries, m_size * sizeof(T));
        if (m_entries != m_own) mem_Free(m_entries);
        m_entries = entries;
        m_capacity = capacity;
    }

    T* m_entries;  // m_own or a block of its own
    std::size_t m_size;
    std::size_t m_capacity;
    T m_own[N];
};
