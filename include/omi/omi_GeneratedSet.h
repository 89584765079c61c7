#pragma once
#include <generics/KZMBasVector.h>
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_StdIterator.h>

#include <cstdint>

class omi_GeneratedSetIT;

// Set of signed 32-bit integers that is described by arithmetic progressions and never listed: 12
// bytes a generator, however many members it has. A generator (start, end, step) holds the numbers
// from start towards end, in steps of step's magnitude: (3, 20, 5) is 3, 8, 13, 18 and (10, 1, -3)
// is 10, 7, 4, 1. The range (1, 0) is empty with any step, and so is every range with step 0.
//
// Generators may overlap; nothing is merged. IsMember is O(generators), one division each. When
// memory runs out, std::bad_alloc leaves the set as it was. One thread at a time.
class KZM_API omi_GeneratedSet {
public:
    using const_iterator = omi_StdIterator<omi_GeneratedSetIT>;
    using value_type = int;

    omi_GeneratedSet() = default;
    // With this one generator.
    omi_GeneratedSet(int start, int end, int step) { Insert(start, end, step); }
    omi_GeneratedSet(const omi_GeneratedSet& other) = default;
    // Copies the generators; if memory runs out, the set stays as it was.
    omi_GeneratedSet& operator=(const omi_GeneratedSet& other);
    ~omi_GeneratedSet() = default;

    // Whether any generator holds the number. O(generators).
    bool IsMember(int v) const;

    int Count() const { return m_starts.Size(); }  // of generators

    // The i-th generator; 0, 0, 1 where there is none.
    void GetRange(int i, int& start, int& end, int& step) const;

    // The members, generator by generator, each from its start towards its end: a number that
    // several generators hold comes several times.
    const_iterator begin() const;
    const_iterator end() const;

    // Appends a generator, also one that is empty.
    void Insert(int start, int end, int step);
    // Without generators; keeps the room.
    void Clear();

    omi_GeneratedSet& operator+=(const omi_GeneratedSet& other);  // appends the other's generators

    // Clips every generator to low..high and returns members that this cuts off, at most n for each
    // generator and side; a negative one as the bit of its two's complement. Start and end are
    // tested as of an ascending range: with start above high or end below low, a generator becomes
    // the empty one. A start below low moves to the last member that is not above low, so one
    // member below low may stay. A generator with step 0 is left as it is.
    omi_BlkBitVect Trim(int low, int high, int n);

private:
    friend struct kzm_Layout;
    void MakeRoom(int more);

    KZMBasVector<int> m_starts;
    KZMBasVector<int> m_ends;
    KZMBasVector<int> m_steps;
};

// The walk behind begin() and end() of a generated set; it ends with a change of the set.
class KZM_API omi_GeneratedSetIT {
public:
    using value_type = int;

    omi_GeneratedSetIT() = default;  // over no set: always IsDone
    // Over that set, done until First.
    explicit omi_GeneratedSetIT(const omi_GeneratedSet& set) : m_set(&set) {}

    // First moves to the first member there is, Next to the one after; past the last one the walk
    // is done.
    void First() {
        m_generator = -1;
        NextGenerator();
    }
    void Next() {
        if (m_left > 0) {
            --m_left;
            m_current += m_stride;
        } else if (!IsDone()) {
            NextGenerator();
        }
    }
    // Whether there is a current member; the member, -1 where there is none.
    bool IsDone() const { return m_generator < 0; }
    int CurrentItem() const { return IsDone() ? -1 : static_cast<int>(m_current); }

    // Whether both stand at the same place of their sets.
    bool operator==(const omi_GeneratedSetIT& other) const {
        return m_generator == other.m_generator && m_left == other.m_left;
    }

private:
    void NextGenerator();

    const omi_GeneratedSet* m_set = nullptr;
    int m_generator = -1;
    std::int64_t m_current = 0;
    std::int64_t m_stride = 0;
    std::int64_t m_left = 0;  // members of the generator behind the current one
};

inline omi_GeneratedSet::const_iterator omi_GeneratedSet::begin() const {
    omi_GeneratedSetIT it(*this);
    it.First();
    return const_iterator(it);
}
inline omi_GeneratedSet::const_iterator omi_GeneratedSet::end() const { return const_iterator(); }
