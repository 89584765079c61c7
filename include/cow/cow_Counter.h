#pragma once
#include <kzm_export.h>

#include <cstdint>

// The number of holders that share one referent. A plain integer: a value and all its copies
// belong to one thread at a time.
class KZM_API cow_Counter {
public:
    // Counts one holder.
    cow_Counter() : m_count(1) {}

    // One more and one holder less. No test for overflow: 2147483647 holders at the most.
    void Increment() { ++m_count; }
    bool Decrement() { return --m_count == 0; }  // true when the last holder has gone

private:
    template <class T>
    friend class cow_CountedHld;
    friend struct kzm_Layout;
    std::int32_t m_count;
};
