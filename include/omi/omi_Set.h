#pragma once
#include <generics/KZMBasVector.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_StdIterator.h>

#include <iterator>

class omi_SetIT;

// Set of signed 32-bit integers in two bit vectors, one for the members from 0 on and one for the
// magnitudes of the negative ones. Choose it for members that lie close together and for sets that
// are combined often: single members cost a shift and a mask, set operators work word by word. A
// stretch of 8192 numbers with a member in it takes 1 KiB; for few members over a wide range take
// omi_SparseSet, for regular progressions omi_GeneratedSet.
//
// Every listing of the members gives the negative ones first, by increasing magnitude, then the
// others ascending: -1, -4, 0, 3.
//
// When memory runs out, std::bad_alloc leaves the members as they were. One thread at a time, also
// for const queries: they may count anew.
class KZM_API omi_Set {
public:
    using const_iterator = omi_StdIterator<omi_SetIT>;
    using value_type = int;

    // Empty; the first member brings the first block.
    omi_Set() = default;
    // Of these numbers, in any order and with any repeats.
    omi_Set(const KZMBasVector<int>& values);
    omi_Set(const int* values, int n);  // n below 1 inserts nothing
    template <std::input_iterator It>
    omi_Set(It first, It last) {
        for (; first != last; ++first) Insert(*first);
    }
    // Copy every block: O(blocks). An assignment that runs out of memory changes nothing.
    omi_Set(const omi_Set& other) = default;
    omi_Set& operator=(const omi_Set& other);
    ~omi_Set() = default;

    // IsMember is a shift, a mask and two loads. The other two may have to count once after set
    // operators.
    bool IsMember(int v) const {
        return v < 0 ? m_negative.IsSet(Bit(v)) : m_members.IsSet(Bit(v));
    }
    bool IsEmpty() const { return m_members.Size() == 0 && m_negative.Size() == 0; }
    int Size() const { return static_cast<int>(m_members.Size() + m_negative.Size()); }

    // All members in the order of listings.
    void Members(int* out) const;  // writes Size() numbers
    void Members(KZMBasVector<int>& out) const;

    // Over all members in the order of listings; ends as omi_SetIT does.
    const_iterator begin() const;
    const_iterator end() const;

    bool operator==(const omi_Set& other) const;  // equal members
    bool Contains(const omi_Set& other) const {   // `other` is a subset of this
        return m_members.Contains(other.m_members) && m_negative.Contains(other.m_negative);
    }
    bool HasOverlap(const omi_Set& other) const {  // some number is a member of both
        return m_members.HasOverlap(other.m_members) || m_negative.HasOverlap(other.m_negative);
    }

    // On standard output: the title on a line of its own, then the members, eight a line.
    void Print(const char* title) const;

    // One number, or all of these; what is a member already stays one. Of an absent number Remove
    // does nothing. Inserting may make blocks, removing keeps them.
    void Insert(int v) { (v < 0 ? m_negative : m_members).SetBit(Bit(v)); }
    void Insert(const int* values, int n);
    void Insert(const KZMBasVector<int>& values) { Insert(values.Data(), values.Size()); }
    void Remove(int v) { (v < 0 ? m_negative : m_members).UnsetBit(Bit(v)); }
    // Removes every member and frees every block.
    void Clear();

    omi_Set& operator+=(const omi_Set& other);  // union
    omi_Set& operator-=(const omi_Set& other);  // difference
    omi_Set& operator&=(const omi_Set& other);  // intersection
    omi_Set& operator^=(const omi_Set& other);  // members of one of the two only

private:
    friend struct kzm_Layout;
    friend class omi_SetIT;

    static unsigned int Bit(int v) {
        const unsigned int bits = static_cast<unsigned int>(v);
        return v < 0 ? 0u - bits : bits;
    }

    omi_BlkBitVect m_members;   // from 0 on
    omi_BlkBitVect m_negative;  // bit -v for member v
};

// Visits the members of a set:
//
//     omi_SetIT it(set);
//     for (it.First(); !it.IsDone(); it.Next()) Use(it.CurrentItem());
//
// It stands nowhere, IsDone, until First. Inserting, set operators and Clear end the walk; removing
// members is allowed.
class KZM_API omi_SetIT {
public:
    using value_type = int;

    omi_SetIT() = default;  // over no set: always IsDone
    // Over that set, done until First.
    explicit omi_SetIT(const omi_Set& set) : m_set(&set) {}

    // First moves to the first member there is, Next to the one after; past the last one the walk
    // is done.
    void First();
    void Next() {
        if (m_part != Part::None && !m_walk.Next(m_bit)) NextPart();
    }
    // Whether there is no current member.
    bool IsDone() const { return m_part == Part::None; }

    int CurrentItem() const {  // -1 beyond the last member
        if (m_part == Part::Members) return static_cast<int>(m_bit);
        return m_part == Part::Negative ? static_cast<int>(0u - m_bit) : -1;
    }

    // Whether both stand on the same number, or are done.
    bool operator==(const omi_SetIT& other) const {
        return m_part == other.m_part && (IsDone() || m_bit == other.m_bit);
    }

private:
    enum class Part : unsigned char { None, Negative, Members };

    void NextPart();

    const omi_Set* m_set = nullptr;
    omi_BlkBitVectTrav m_walk;
    unsigned int m_bit = 0;
    Part m_part = Part::None;
};

inline omi_Set::const_iterator omi_Set::begin() const {
    omi_SetIT it(*this);
    it.First();
    return const_iterator(it);
}
inline omi_Set::const_iterator omi_Set::end() const { return const_iterator(); }
