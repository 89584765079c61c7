#pragma once
#include <omi/omi_BlockedArray.impl.h>

#include <climits>
#include <cstdint>
#include <cstdlib>

// What a comparison function of a table iterator is given pointers to pointers of:
//
//     int Descending(const void* a, const void* b) {
//         const auto& x = **static_cast<const omi_TableRecord<int, double>* const*>(a);
//         const auto& y = **static_cast<const omi_TableRecord<int, double>* const*>(b);
//         return x.key < y.key ? 1 : x.key > y.key ? -1 : 0;
//     }
template <class Key, class V>
struct omi_TableRecord {
    Key key;         // of the member
    const V* value;  // in the table
};

// A comparison function as std::qsort takes it.
using omi_TableCompare = int (*)(const void* a, const void* b);

// The members of a table in the order of a comparison function, and a position among them; the
// sorted half of both table iterators. Memory comes from the table's policy A.
template <class Key, class V, class A>
class omi_SortedRecords {
public:
    // What the comparison function sees.
    using Record = omi_TableRecord<Key, V>;

    // Without members, until Build.
    omi_SortedRecords() : m_order(nullptr), m_records(nullptr), m_count(0), m_position(-1) {}
    omi_SortedRecords(const omi_SortedRecords&) = delete;
    omi_SortedRecords& operator=(const omi_SortedRecords&) = delete;
    ~omi_SortedRecords() { Release(); }

    // Whether the array is there. It is built once.
    bool IsBuilt() const { return m_order != nullptr; }

    // Takes the `count` members that `walk` visits in the table's own order, then sorts them.
    template <class Walk>
    void Build(Walk& walk, unsigned int count, omi_TableCompare compare) {
        m_order = static_cast<Record**>(Allocate(count, sizeof(Record*)));
        try {
            m_records = static_cast<Record*>(Allocate(count, sizeof(Record)));
        } catch (...) {
            Release();
            throw;
        }
        for (walk.First(); !walk.IsDone(); walk.Next(), ++m_count) {
            m_records[m_count] = Record{walk.CurrentKey(), &walk.CurrentValue()};
            m_order[m_count] = &m_records[m_count];
        }
        std::qsort(m_order, m_count, sizeof(Record*), compare);
    }

    // The position may run past either end and come back; Current needs a member there.
    void First() { m_position = 0; }
    void Last() { m_position = std::int64_t{m_count} - 1; }
    void Next() { ++m_position; }
    void Previous() { --m_position; }
    bool IsDone() const { return m_position < 0 || m_position >= m_count; }
    const Record& Current() const { return *m_order[m_position]; }

private:
    static void* Allocate(unsigned int count, std::size_t size) {
        const std::size_t bytes = omi_BytesFor(count, size);
        if (bytes > UINT_MAX) throw std::bad_alloc();
        return A::allocate(static_cast<unsigned int>(bytes));
    }

    void Release() {
        if (m_records) A::deallocate(m_records);
        if (m_order) A::deallocate(m_order);
        m_records = nullptr;
        m_order = nullptr;
    }

    Record** m_order;   // owned; null until built
    Record* m_records;  // owned
    unsigned int m_count;
    std::int64_t m_position;
};
