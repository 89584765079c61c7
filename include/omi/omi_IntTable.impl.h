#pragma once
#include <omi/omi_IntTable.h>
#include <omi/omi_UintTable.impl.h>

template <class V, class A>
omi_IntTable<V, A>::omi_IntTable() : omi_IntTable([](bool) { return NewTable(); }, nullptr) {}

template <class V, class A>
omi_IntTable<V, A>::omi_IntTable(unsigned int blockBits, unsigned int innerBits,
                                 unsigned int innerGrowth)
    : omi_IntTable([=](bool) { return NewTable(blockBits, innerBits, innerGrowth); }, nullptr) {}

template <class V, class A>
omi_IntTable<V, A>::omi_IntTable(unsigned int n, const int* keys, const V* values)
    : omi_IntTable([=](bool) { return NewTable(n); }, nullptr) {
    for (unsigned int i = 0; i < n; ++i) Insert(keys[i], values[i]);
}

template <class V, class A>
omi_IntTable<V, A>::omi_IntTable(const omi_IntTable& other)
    : omi_IntTable(
          [&](bool negative) {
              return NewTable(negative ? *other.m_negative : *other.m_nonNegative);
          },
          nullptr) {}

template <class V, class A>
omi_IntTable<V, A>::~omi_IntTable() {
    DestroyTable(m_nonNegative);
    DestroyTable(m_negative);
}

template <class V, class A>
unsigned int omi_IntTable<V, A>::Footprint() const {
    const std::uint64_t bytes =
        sizeof *this + std::uint64_t{m_negative->Footprint()} + m_nonNegative->Footprint();
    return static_cast<unsigned int>(std::min<std::uint64_t>(bytes, UINT_MAX));
}

// Of a negative key, or one whose block is not there.
template <class V, class A>
bool omi_IntTable<V, A>::InsertElsewhere(int key, const V& value) {
    return (key < 0 ? m_negative : m_nonNegative)->Insert(Magnitude(key), value);
}

template <class V, class A>
bool omi_IntTable<V, A>::RemoveNegative(int key) {
    return m_negative->Remove(Magnitude(key));
}

template <class V, class A>
template <class Make>
omi_IntTable<V, A>::omi_IntTable(Make make, std::nullptr_t) : m_negative(make(true)) {
    try {
        m_nonNegative = make(false);
    } catch (...) {
        DestroyTable(m_negative);
        throw;
    }
}

template <class V, class A>
template <class... Args>
typename omi_IntTable<V, A>::Table* omi_IntTable<V, A>::NewTable(const Args&... args) {
    void* const memory = A::allocate(sizeof(Table));
    try {
        return ::new (memory) Table(args...);
    } catch (...) {
        A::deallocate(memory);
        throw;
    }
}

template <class V, class A>
void omi_IntTable<V, A>::DestroyTable(Table* table) {
    table->~Table();
    A::deallocate(table);
}
