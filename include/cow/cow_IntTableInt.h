#pragma once
#include <cow/cow_COW.h>
#include <omi/omi_IntTable.h>

#include <iterator>

// The tables for which the library holds handles.
#define COW_INT_TABLE_REFERENTS(X)                  \
    X(omi_IntTable<int, KZMBasOmiDefaultAllocator>) \
    X(omi_IntTable<cow_String, KZMBasOmiDefaultAllocator>)

#define COW_DECLARE_INT_TABLE(...)           \
    KZM_DECLARE(cow_CountedHld<__VA_ARGS__>) \
    KZM_DECLARE(cow_COW<__VA_ARGS__, cow_Direct<__VA_ARGS__>>)
COW_INT_TABLE_REFERENTS(COW_DECLARE_INT_TABLE)

// Map from int keys to int values that is passed by value: an omi_IntTable whose copies share it
// until one of them is written. Copying costs an increment, the first write to a shared table one
// copy of its blocks; also a write that turns out to change nothing makes the table private. For a
// table with one owner take omi_IntTable itself.
//
// When memory runs out, std::bad_alloc leaves every sharer with the members it had. Arguments may
// be values of the table. One thread at a time for a table and all its copies.
class KZM_API cow_IntTableInt {
public:
    // What copies share.
    using Table = omi_IntTable<int, KZMBasOmiDefaultAllocator>;
    using const_iterator = Table::const_iterator;
    using value_type = Table::value_type;

    // Empty; makes the table that copies will share.
    cow_IntTableInt();

    template <std::input_iterator It>  // over pairs; of equal keys the last value stays
    cow_IntTableInt(It first, It last) : cow_IntTableInt() {
        for (; first != last; ++first) {
            const auto& [key, value] = *first;
            Insert(key, value);
        }
    }

    // Ask without copying. O(1).
    bool IsEmpty() const { return Read().IsEmpty(); }
    int Size() const { return Read().Size(); }
    bool IsMember(const int& key) const { return Read().IsMember(key); }

    // Copies the value out; false, and `value` as it was, if the key is not a member.
    bool ConstGetValue(const int& key, int& value) const {
        return Read().ConstGetValue(key, value);
    }

    // The value of a key that must be a member: else the process ends (abort).
    const int& ConstGet(const int& key) const { return Existing(Read().FindCell(key)); }

    // Pairs of key and value, keys ascending. The iterators end with the next write.
    const_iterator begin() const { return Read().begin(); }
    const_iterator end() const { return Read().end(); }

    bool operator==(const cow_IntTableInt& other) const;  // equal keys with equal values

    // For writing: as ConstGet, on a private table. The reference must not be written through after
    // the table has been copied: the copy would change too.
    int& Get(const int& key) {
        const int k = key;
        return Existing(m_table.Get().FindCell(k));
    }

    // True if the key was no member before; its value is replaced in any case.
    bool Insert(const int& key, const int& value) {
        const int k = key;
        const int v = value;
        return m_table.Get().Insert(k, v);
    }
    // True if the key was a member.
    bool Remove(const int& key) {
        const int k = key;
        return m_table.Get().Remove(k);
    }
    // Removes every member; the table is made private first, as by all writing.
    void Clear() { m_table.Get().Clear(); }

private:
    friend struct kzm_Layout;

    const Table& Read() const { return m_table.ConstGet(); }
    static int& Existing(int* value) {
        if (!value) RaiseAbsentKey();
        return *value;
    }
    [[noreturn]] static void RaiseAbsentKey();

    cow_COW<Table, cow_Direct<Table>> m_table;
};
