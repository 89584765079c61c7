#pragma once
#include <alloc/mem_alloc.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>

// Stack of pointers for walks through trees. The first N entries lie in the object itself,
// so that no walk of usual depth allocates; deeper ones continue on the heap. When memory runs out,
// std::bad_alloc leaves the stack as it was.
template <class T, std::size_t N>
class cow_SmallStack {
    static_assert(std::is_pointer_v<T>);

public:
    cow_SmallStack() : m_top(m_own), m_entries(m_own), m_limit(m_own + N) {}
    cow_SmallStack(const cow_SmallStack& other) : cow_SmallStack() { *this = other; }
    cow_SmallStack& operator=(const cow_SmallStack& other) {
        if (this == &other) return *this;
        Reserve(other.Capacity());  // walks rely on it
        std::memcpy(m_entries, other.m_entries, other.Size() * sizeof(T));
        m_top = m_entries + other.Size();
        return *this;
    }
    ~cow_SmallStack() {
        if (m_entries != m_own) mem_Free(m_entries);
    }

    bool Empty() const { return m_top == m_entries; }
    std::size_t Size() const { return static_cast<std::size_t>(m_top - m_entries); }
    T& operator[](std::size_t i) { return m_entries[i]; }

    T Top() const { return m_top[-1]; }
    T Pop() { return *--m_top; }
    void Clear() { m_top = m_entries; }
    void DropFirst(std::size_t count) {
        const std::size_t rest = Size() - count;
        std::memmove(m_entries, m_entries + count, rest * sizeof(T));
        m_top = m_entries + rest;
    }
    void Push(T entry) {
        if (m_top == m_limit) [[unlikely]]
            Grow(2 * Size());
        PushReserved(entry);
    }

    // Room for so many entries in all; then PushReserved, which does not look, may make them.
    void Reserve(std::size_t capacity) {
        if (capacity > Capacity()) [[unlikely]]
            Grow(capacity);
    }
    void PushReserved(T entry) { *m_top++ = entry; }

private:
    std::size_t Capacity() const { return static_cast<std::size_t>(m_limit - m_entries); }

    [[gnu::noinline]] void Grow(std::size_t capacity) {
        if (capacity > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
        T* const entries = static_cast<T*>(mem_Malloc(capacity * sizeof(T)));
        const std::size_t size = Size();
        std::memcpy(entries, m_entries, size * sizeof(T));
        if (m_entries != m_own) mem_Free(m_entries);
        m_entries = entries;
        m_top = entries + size;
        m_limit = entries + capacity;
    }

    T* m_top;      // behind the last entry
    T* m_entries;  // m_own or a block of its own
    T* m_limit;
    T m_own[N];
};
