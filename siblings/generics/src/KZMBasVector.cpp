#include <generics/KZMBasVector.h>
#include <host/host_take.h>

#include <algorithm>
#include <climits>
#include <cstdint>

KZMBasVectorStorage::~KZMBasVectorStorage() { host_heap::GiveBack(m_data); }

int KZMBasVectorStorage::GrownCapacity(int needed) const {
    if (needed > INT_MAX - m_size) throw std::bad_alloc();
    const int byHalf = m_capacity > INT_MAX / 3 * 2 ? INT_MAX : m_capacity + m_capacity / 2;
    return std::max({m_size + needed, byHalf, 4});
}

void KZMBasVectorStorage::Reallocate(int capacity, std::size_t elementSize, Relocate relocate) {
    void* grown = nullptr;
    if (capacity > 0) {
        if (static_cast<std::size_t>(capacity) > PTRDIFF_MAX / elementSize) throw std::bad_alloc();
        grown = host_heap::Take(static_cast<std::size_t>(capacity) * elementSize);
    }
    relocate(grown, m_data, m_size);
    host_heap::GiveBack(m_data);
    m_data = grown;
    m_capacity = capacity;
}
