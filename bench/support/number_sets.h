// Sets of non-negative numbers with one set of members, so that one workload runs over all:
//
//     Insert(v), Erase(v), Has(v), Size()
//     Each(f)             f(v) for every member, in the set's order
//     += -= &= ^=         union, difference, intersection, members of one only
//
// They copy by copying. A peer that is not installed is Missing.
#pragma once

#include <omi/omi_BlkBitVect.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <unordered_set>
#include <vector>

#include "support/workload.h"
#ifdef KZM_BENCH_ABSL
#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_set.h>
#endif
#ifdef KZM_BENCH_BOOST
#include <boost/dynamic_bitset.hpp>
#endif
#ifdef KZM_BENCH_JUDY
#include <Judy.h>
#endif
#ifdef KZM_BENCH_ROARING
#include <roaring/roaring.h>
#endif

namespace bench {

class BitVector : public omi_BlkBitVect {
public:
    static constexpr const char* kWho = "omi_BlkBitVect";
    void Insert(int v) { SetBit(static_cast<unsigned>(v)); }
    void Erase(int v) { UnsetBit(static_cast<unsigned>(v)); }
    bool Has(int v) const { return IsSet(static_cast<unsigned>(v)); }
    void operator+=(const BitVector& other) { *this |= other; }
    template <class F>
    void Each(F f) const {
        omi_BlkBitVectTrav walk(this);
        unsigned v;
        for (bool more = walk.First(v); more; more = walk.Next(v)) f(static_cast<int>(v));
    }
};

template <class Set>
class OurSet : public Set {
public:
    void Erase(int v) { this->Remove(v); }
    bool Has(int v) const { return this->IsMember(v); }
    template <class F>
    void Each(F f) const {
        for (const int v : *this) f(v);
    }
};
struct Set : OurSet<omi_Set> {
    static constexpr const char* kWho = "omi_Set";
};
struct SparseSet : OurSet<omi_SparseSet> {
    static constexpr const char* kWho = "omi_SparseSet";
};

// As the standard's sets; the operators go through the members of one side.
template <class Any>
class StandardSet {
public:
    void Insert(int v) { m_set.insert(v); }
    void Erase(int v) { m_set.erase(v); }
    bool Has(int v) const { return m_set.find(v) != m_set.end(); }
    std::size_t Size() const { return m_set.size(); }
    template <class F>
    void Each(F f) const {
        for (const int v : m_set) f(v);
    }
    StandardSet& operator+=(const StandardSet& other) {
        m_set.insert(other.m_set.begin(), other.m_set.end());
        return *this;
    }
    StandardSet& operator-=(const StandardSet& other) {
        for (const int v : other.m_set) m_set.erase(v);
        return *this;
    }
    StandardSet& operator&=(const StandardSet& other) {
        StandardSet both;
        for (const int v : m_set)
            if (other.Has(v)) both.m_set.insert(both.m_set.end(), v);
        m_set.swap(both.m_set);
        return *this;
    }

private:
    Any m_set;
};
struct StdSet : StandardSet<std::set<int>> {
    static constexpr const char* kWho = "std::set";
};
struct StdHashSet : StandardSet<std::unordered_set<int>> {
    static constexpr const char* kWho = "std::unordered_set";
};
#ifdef KZM_BENCH_ABSL
struct AbslSet : StandardSet<absl::btree_set<int>> {
    static constexpr const char* kWho = "absl::btree_set";
};
struct AbslHashSet : StandardSet<absl::flat_hash_set<int>> {
    static constexpr const char* kWho = "absl::flat_hash_set";
};
#else
using AbslSet = Missing;
using AbslHashSet = Missing;
#endif

// A bit for each number up to the largest member.
template <class Bits>
class PlainBits {
public:
    void Insert(int v) {
        Reach(static_cast<std::size_t>(v) + 1);
        m_bits[static_cast<std::size_t>(v)] = true;
    }
    void Erase(int v) { m_bits[static_cast<std::size_t>(v)] = false; }
    bool Has(int v) const {
        return static_cast<std::size_t>(v) < m_bits.size() && m_bits[static_cast<std::size_t>(v)];
    }

protected:
    void Reach(std::size_t size) {
        if (m_bits.size() >= size) return;
        if (m_bits.capacity() < size) m_bits.reserve(2 * size);
        m_bits.resize(size);
    }

    Bits m_bits;
};
class StdBits : public PlainBits<std::vector<bool>> {
public:
    static constexpr const char* kWho = "std::vector<bool>";
    std::size_t Size() const {
        return static_cast<std::size_t>(std::count(m_bits.begin(), m_bits.end(), true));
    }
};
#ifdef KZM_BENCH_BOOST
class BoostBits : public PlainBits<boost::dynamic_bitset<>> {
public:
    static constexpr const char* kWho = "boost::dynamic_bitset";
    std::size_t Size() const { return m_bits.count(); }
    template <class F>
    void Each(F f) const {
        for (std::size_t i = m_bits.find_first(); i != m_bits.npos; i = m_bits.find_next(i))
            f(static_cast<int>(i));
    }
    BoostBits& operator+=(const BoostBits& other) {
        return Combine(other, [](auto& a, auto& b) { a |= b; });
    }
    BoostBits& operator-=(const BoostBits& other) {
        return Combine(other, [](auto& a, auto& b) { a -= b; });
    }
    BoostBits& operator&=(const BoostBits& other) {
        return Combine(other, [](auto& a, auto& b) { a &= b; });
    }
    BoostBits& operator^=(const BoostBits& other) {
        return Combine(other, [](auto& a, auto& b) { a ^= b; });
    }

private:
    // The operators want equal sizes, which the sets of a workload have as a rule.
    template <class Op>
    BoostBits& Combine(const BoostBits& other, Op op) {
        Reach(other.m_bits.size());
        if (other.m_bits.size() == m_bits.size()) {
            op(m_bits, other.m_bits);
        } else {
            BoostBits wide(other);
            wide.Reach(m_bits.size());
            op(m_bits, wide.m_bits);
        }
        return *this;
    }
};
#else
using BoostBits = Missing;
#endif

#ifdef KZM_BENCH_ROARING
class Roaring {
public:
    static constexpr const char* kWho = "Roaring::bitmap";
    Roaring() : m_bits(roaring_bitmap_create()) {}
    Roaring(const Roaring& other) : m_bits(roaring_bitmap_copy(other.m_bits)) {}
    Roaring& operator=(const Roaring&) = delete;
    ~Roaring() { roaring_bitmap_free(m_bits); }

    void Insert(int v) { roaring_bitmap_add(m_bits, static_cast<unsigned>(v)); }
    void Erase(int v) { roaring_bitmap_remove(m_bits, static_cast<unsigned>(v)); }
    bool Has(int v) const { return roaring_bitmap_contains(m_bits, static_cast<unsigned>(v)); }
    std::size_t Size() const { return roaring_bitmap_get_cardinality(m_bits); }
    template <class F>
    void Each(F f) const {
        const auto call = [](unsigned v, void* to) {
            (*static_cast<F*>(to))(static_cast<int>(v));
            return true;
        };
        roaring_iterate(m_bits, call, &f);
    }
    Roaring& operator+=(const Roaring& other) {
        roaring_bitmap_or_inplace(m_bits, other.m_bits);
        return *this;
    }
    Roaring& operator-=(const Roaring& other) {
        roaring_bitmap_andnot_inplace(m_bits, other.m_bits);
        return *this;
    }
    Roaring& operator&=(const Roaring& other) {
        roaring_bitmap_and_inplace(m_bits, other.m_bits);
        return *this;
    }
    Roaring& operator^=(const Roaring& other) {
        roaring_bitmap_xor_inplace(m_bits, other.m_bits);
        return *this;
    }

private:
    roaring_bitmap_t* m_bits;
};
#else
using Roaring = Missing;
#endif

#ifdef KZM_BENCH_JUDY
class Judy1 {
public:
    static constexpr const char* kWho = "Judy::Judy1";
    Judy1() = default;
    Judy1(const Judy1& other) { *this += other; }
    Judy1& operator=(const Judy1&) = delete;
    ~Judy1() { Judy1FreeArray(&m_bits, nullptr); }

    void Insert(int v) { Judy1Set(&m_bits, static_cast<Word_t>(v), nullptr); }
    void Erase(int v) { Judy1Unset(&m_bits, static_cast<Word_t>(v), nullptr); }
    bool Has(int v) const { return Judy1Test(m_bits, static_cast<Word_t>(v), nullptr); }
    std::size_t Size() const { return Judy1Count(m_bits, 0, ~Word_t{0}, nullptr); }
    template <class F>
    void Each(F f) const {
        Word_t v = 0;
        for (int more = Judy1First(m_bits, &v, nullptr); more;
             more = Judy1Next(m_bits, &v, nullptr))
            f(static_cast<int>(v));
    }
    Judy1& operator+=(const Judy1& other) {
        other.Each([&](int v) { Insert(v); });
        return *this;
    }
    Judy1& operator-=(const Judy1& other) {
        other.Each([&](int v) { Erase(v); });
        return *this;
    }
    Judy1& operator&=(const Judy1& other) {
        Each([&](int v) {
            if (!other.Has(v)) Erase(v);
        });
        return *this;
    }

private:
    void* m_bits = nullptr;
};
#else
using Judy1 = Missing;
#endif

}  // namespace bench
