#pragma once
#include <generics/KZMBasVector.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_StdIterator.h>

#include <iterator>

class omi_SparseSetIT;

// Set of signed 32-bit integers for few members over a wide range, and for sets that are filled
// first and read later. The members from 0 on lie in a plain array, 4 bytes each; negative ones go
// to a bit vector, which exists from the first of them on.
//
// Insert appends without looking for repeats; the first query afterwards orders the array and
// drops them, in linear time through a temporary bit vector (1 KiB for each stretch of 8192 numbers
// with a member in it). IsMember is a linear scan: for many look-ups take omi_Set.
//
// Every listing of the members gives the negative ones first, by increasing magnitude, then the
// others ascending: -1, -4, 0, 3.
//
// When memory runs out, std::bad_alloc leaves the members as they were. One thread at a time, also
// for const queries: they may order the array.
class KZM_API omi_SparseSet {
public:
    using const_iterator = omi_StdIterator<omi_SparseSetIT>;
    using value_type = int;

    // Empty, without memory.
    omi_SparseSet() : m_negative(nullptr), m_unique(false), m_count(0), m_capacity(0) {}
    // Of these numbers, in any order and with any repeats.
    omi_SparseSet(const KZMBasVector<int>& values) : omi_SparseSet(values.Data(), values.Size()) {}
    omi_SparseSet(const int* values, int n);  // n below 1 inserts nothing
    template <std::input_iterator It>
    omi_SparseSet(It first, It last) : omi_SparseSet() {
        for (; first != last; ++first) Insert(*first);
    }
    // Copy the members as they are stored. An assignment that runs out of memory changes nothing.
    omi_SparseSet(const omi_SparseSet& other);
    omi_SparseSet& operator=(const omi_SparseSet& other);
    ~omi_SparseSet();

    // A linear scan, for a negative number one bit.
    bool IsMember(int v) const;
    // How many members there are; orders the array first if need be.
    bool IsEmpty() const { return m_count == 0 && SizeNegative() == 0; }
    int Size() const { return SizePositive() + SizeNegative(); }
    int SizePositive() const {  // of the members from 0 on
        MakeUnique();
        return m_count;
    }
    int SizeNegative() const { return m_negative ? static_cast<int>(m_negative->Size()) : 0; }

    // Replaces what `out` holds, in the order of listings.
    void Members(KZMBasVector<int>& out) const;

    // Over all members in the order of listings; ends with a change of the set.
    const_iterator begin() const;
    const_iterator end() const;

    bool operator==(const omi_SparseSet& other) const;  // equal members

    // Orders the array and drops repeats, if that has not been done since the last Insert.
    void MakeUnique() const;

    // Appends, O(1) on average; a repeat takes room until the array is ordered.
    void Insert(int v) {
        if (v < 0) {
            InsertNegative(v);
            return;
        }
        if (m_count == m_capacity) ReserveAdditional(1);
        m_values.Append(v);
        ++m_count;
        m_unique = false;
    }

    void Insert(const omi_BlkBitVect& members);  // bits above 2147483647 are left out
    // Removes one number, or all whose bit is set, which are none of the negative ones. O(members).
    void Remove(int v);
    void Remove(const omi_BlkBitVect& members);

    void Clear();  // keeps the array's room

    // Makes room for n entries in all, or for n more, repeats counted; in multiples of 1024.
    void Reserve(int n);
    void ReserveAdditional(int n);

    omi_SparseSet& operator+=(const omi_SparseSet& other);  // union; appends
    omi_SparseSet& operator-=(const omi_SparseSet& other);  // difference
    omi_SparseSet& operator&=(const omi_SparseSet& other);  // intersection
    omi_SparseSet& operator^=(const omi_SparseSet& other);  // members of one of the two only

private:
    friend struct kzm_Layout;
    friend class omi_SparseSetIT;

    void Swap(omi_SparseSet& other) noexcept;
    void InsertNegative(int v);
    omi_BlkBitVect& NegativePart();
    omi_BlkBitVect Bits() const;
    void Assign(const omi_BlkBitVect& members);

    omi_BlkBitVect* m_negative;  // owned; bit -v for member v; null until the first negative member
    mutable KZMBasVector<int> m_values;  // the members from 0 on, with repeats unless m_unique
    mutable bool m_unique;               // known to ascend without repeats
    mutable int m_count;                 // entries of m_values
    int m_capacity;                      // entries that m_values has room for
};

// Visits the members of a set, which First makes unique:
//
//     omi_SparseSetIT it(set);
//     for (it.First(); !it.IsDone(); it.Next()) Use(it.CurrentItem());
//
// It stands nowhere, IsDone, until First. Changing the set ends the walk.
class KZM_API omi_SparseSetIT {
public:
    using value_type = int;

    omi_SparseSetIT() = default;  // over no set: always IsDone
    // Over that set, done until First.
    explicit omi_SparseSetIT(const omi_SparseSet& set) : m_set(&set) {}

    // First moves to the first member there is, Next to the one after; past the last one the walk
    // is done.
    void First();
    void Next() {
        if (m_inNegative)
            m_inNegative = m_walk.Next(m_bit);
        else if (m_position < m_end)
            ++m_position;
    }
    // Whether there is no current member.
    bool IsDone() const { return !m_inNegative && m_position == m_end; }

    int CurrentItem() const {  // -1 beyond the last member
        if (m_inNegative) return static_cast<int>(0u - m_bit);
        return m_position < m_end ? *m_position : -1;
    }

    // Whether both stand on the same number, or are done.
    bool operator==(const omi_SparseSetIT& other) const {
        return m_inNegative == other.m_inNegative &&
               (m_inNegative ? m_bit == other.m_bit : m_position == other.m_position);
    }

private:
    const omi_SparseSet* m_set = nullptr;
    const int* m_position = nullptr;  // in the values
    const int* m_end = nullptr;
    omi_BlkBitVectTrav m_walk;  // of the negative part
    unsigned int m_bit = 0;
    bool m_inNegative = false;
};

inline omi_SparseSet::const_iterator omi_SparseSet::begin() const {
    omi_SparseSetIT it(*this);
    it.First();
    return const_iterator(it);
}
inline omi_SparseSet::const_iterator omi_SparseSet::end() const { return const_iterator(); }
