#pragma once
#include <omi/omi_UintTable.h>

#include <cstddef>
#include <cstdint>

template <class T>
struct cow_Direct;

// Map from signed 32-bit keys to values of V: two unsigned tables, one for the negative keys under
// their magnitude and one for the rest. Costs, failures and reference rules are omi_UintTable's.
template <class V, class A>
class omi_IntTable : public mem_AllocationOperators {
public:
    // The type of both halves.
    using Table = omi_UintTable<V, A>;
    using const_iterator = omi_StdIterator<omi_TableCursor<int, V, A>>;
    using value_type = std::pair<int, V>;

    omi_IntTable();  // room for the keys between -2^21 and 2^21 at first

    // Each half as omi_UintTable(blockBits, innerBits, innerGrowth).
    omi_IntTable(unsigned int blockBits, unsigned int innerBits, unsigned int innerGrowth);

    // Inserts keys[i] with values[i] in order of i; of equal keys the last value stays. Each half
    // has room for magnitudes below 2^27 at first.
    omi_IntTable(unsigned int n, const int* keys, const V* values);

    // Inserts the pairs in order; of equal keys the last value stays.
    template <std::input_iterator It>
    omi_IntTable(It first, It last) : omi_IntTable() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }

    omi_IntTable& operator=(const omi_IntTable&) = delete;
    ~omi_IntTable();

    // A new deep copy, owned by the caller, who ends it with delete.
    omi_IntTable* Copy() const { return new omi_IntTable(*this); }

    // O(1).
    bool IsEmpty() const { return m_negative->IsEmpty() && m_nonNegative->IsEmpty(); }
    int Size() const { return m_negative->Size() + m_nonNegative->Size(); }

    // Look-ups. ConstGetValue copies the value out; false, and `value` as it was, if the key is not
    // a member.
    bool IsMember(int key) const {
        const auto usual = m_nonNegative->Index();
        if (const auto* const block = usual.FindBlock(Wide(key)))
            return block->Members().IsSet(AsUnsigned(key) & usual.localMask);
        return key < 0 && m_negative->IsMember(Magnitude(key));
    }
    bool ConstGetValue(int key, V& value) const {
        const V* const cell = FindCell(key);
        if (cell) value = *cell;
        return cell != nullptr;
    }

    // The address of a member's value, null for other keys.
    V* FindCell(int key) const {
        const auto usual = m_nonNegative->Index();
        if (const auto* const block = usual.FindBlock(Wide(key))) {
            const bool member = block->Members().IsSet(AsUnsigned(key) & usual.localMask);
            return member ? &usual.CellIn(*block, AsUnsigned(key)) : nullptr;
        }
        return key < 0 ? m_negative->FindCell(Magnitude(key)) : nullptr;
    }

    // The value of a key that must be a member.
    V& Get(int key) const {
        const auto usual = m_nonNegative->Index();
        return key < 0 ? m_negative->Get(Magnitude(key)) : usual.Cell(AsUnsigned(key));
    }
    const V& ConstGet(int key) const { return Get(key); }

    // Pairs of key and value, keys ascending.
    const_iterator begin() const { return const_iterator(Walk()); }
    const_iterator end() const { return const_iterator(); }

    // Equal keys with equal values.
    friend bool operator==(const omi_IntTable& a, const omi_IntTable& b) {
        return a.Size() == b.Size() && std::equal(a.begin(), a.end(), b.begin());
    }

    // True if the key was no member before; its value is replaced in any case.
    bool Insert(int key, const V& value) {
        if (auto* const block = m_nonNegative->Index().FindBlock(Wide(key)))
            return m_nonNegative->InsertInto(*block, AsUnsigned(key), value);
        return InsertElsewhere(key, value);
    }
    // True if the key was a member.
    bool Remove(int key) {
        if (auto* const block = m_nonNegative->Index().FindBlock(Wide(key)))
            return m_nonNegative->RemoveFrom(*block, AsUnsigned(key));
        return key < 0 && RemoveNegative(key);
    }

    // Removes every member and releases every block.
    void Clear() {
        m_negative->Clear();
        m_nonNegative->Clear();
    }

    unsigned int Footprint() const;  // with both halves

protected:
    // Copies every block; see Copy.
    omi_IntTable(const omi_IntTable& other);

    // The block that holds the key's cell, null where there is none.
    omi_UintTableBlock<V, A>* FindTableBlock(int key) const {
        const Table& half = key < 0 ? *m_negative : *m_nonNegative;
        return half.FindTableBlock(Magnitude(key));
    }

    // The walk behind begin(), for iterators of derived tables.
    omi_TableCursor<int, V, A> Walk() const { return {m_negative, m_nonNegative}; }

private:
    friend struct kzm_Layout;
    friend struct cow_Direct<omi_IntTable>;  // copy on write copies by the copy constructor
    template <class, class>
    friend class omi_IntTableIterator;

    static unsigned int Magnitude(int key) {
        return key < 0 ? 0u - AsUnsigned(key) : AsUnsigned(key);
    }
    static unsigned int AsUnsigned(int key) { return static_cast<unsigned int>(key); }

    // With the sign in all higher bits, so that only blocks of keys from 0 on are found by it.
    static std::uint64_t Wide(int key) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(key));
    }

    bool InsertElsewhere(int key, const V& value);
    bool RemoveNegative(int key);

    // make(true) returns the negative half, make(false) the other, both by NewTable.
    template <class Make>
    omi_IntTable(Make make, std::nullptr_t);

    template <class... Args>
    static Table* NewTable(const Args&... args);
    static void DestroyTable(Table* table);

    Table* m_negative;  // owned, from the policy, as the next
    Table* m_nonNegative;
};

#define OMI_DECLARE_INT_TABLE(V, A) KZM_DECLARE(omi_IntTable<V, A>)
OMI_TABLE_INSTANCES(OMI_DECLARE_INT_TABLE)
