#pragma once
#include <alloc/mem_alloc.h>

#include <compare>
#include <new>
#include <utility>

// A value that owns a block, so that a lost or twice destroyed one shows in the count of live
// blocks, and whose copying can run out of memory.
class Boxed {
public:
    Boxed(int value = 0) : m_value(::new (mem_Malloc(sizeof(int))) int(value)) {}
    Boxed(const Boxed& other) : Boxed(*other.m_value) {}
    Boxed& operator=(const Boxed& other) {
        Boxed copy(other);
        std::swap(m_value, copy.m_value);
        return *this;
    }
    ~Boxed() { mem_Free(m_value); }
    int Code() const { return *m_value; }
    auto operator<=>(const Boxed& other) const { return *m_value <=> *other.m_value; }
    bool operator==(const Boxed& other) const { return *m_value == *other.m_value; }

private:
    int* m_value;
};
