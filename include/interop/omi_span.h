#pragma once
#include <cow/cow_IntTableInt.h>
#include <omi/omi_BlockedArray.h>
#include <omi/omi_IntTable.h>
#include <omi/omi_UintTable.h>

#include <cstddef>
#include <iterator>
#include <span>

// Sparse storage as runs of cells that lie side by side, for code that takes a std::span or a
// pointer with a length. Nothing is copied; a run ends where references to its cells end.
template <class Key, class V>
struct omi_Run {
    Key first;            // number or key of the first cell; the others follow without a gap
    std::span<V> values;  // never empty in a walk
};

// A range of runs, made as it is walked. Source is copyable and has Next(), which gives a run, one
// without values at the end.
template <class Source>
class omi_Runs {
public:
    // Stands on a run.
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = typename Source::Run;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = const value_type&;

        iterator() = default;  // the end of every range
        // At the first run of the source.
        explicit iterator(const Source& source) : m_source(source), m_run(m_source.Next()) {}

        reference operator*() const { return m_run; }
        pointer operator->() const { return &m_run; }
        iterator& operator++() {
            m_run = m_source.Next();
            return *this;
        }
        iterator operator++(int) {
            const iterator before = *this;
            ++*this;
            return before;
        }

        // Of one source.
        bool operator==(const iterator& other) const {
            return m_run.values.data() == other.m_run.values.data();
        }

    private:
        Source m_source;
        value_type m_run{};
    };

    explicit omi_Runs(const Source& source) : m_source(source) {}  // copied

    // All runs, from the first of the source on.
    iterator begin() const { return iterator(m_source); }
    iterator end() const { return iterator(); }

private:
    Source m_source;
};

// The blocks of a blocked array that are present.
template <class T, class V>
class omi_BlockSource {
public:
    using Run = omi_Run<unsigned, V>;  // a block

    omi_BlockSource() = default;                                                     // unusable
    explicit omi_BlockSource(const omi_BlockedArray<T>& array) : m_array(&array) {}  // before it

    // The next block, without values at the end.
    Run Next() {
        while (m_slot < m_array->m_slotCount) {
            const unsigned slot = m_slot++;
            if (V* const block = m_array->m_table[slot])
                return {slot << (m_array->m_blockShift & 31), {block, m_array->m_blockSize}};
        }
        return {};
    }

private:
    const omi_BlockedArray<T>* m_array = nullptr;
    unsigned m_slot = 0;
};

// Members of a table with successive keys.
template <class Iterator, class V>
class omi_MemberSource {
public:
    using Key = typename Iterator::value_type::first_type;  // the table's
    using Run = omi_Run<Key, V>;                            // of successive keys

    // Before the first of the members from begin to end; by default of none.
    omi_MemberSource() = default;
    omi_MemberSource(const Iterator& begin, const Iterator& end) : m_next(begin), m_end(end) {}

    // The next members with successive keys, without values at the end.
    Run Next() {
        if (m_next == m_end) return {};
        const Key first = (*m_next).first;
        V* const values = Cell();
        unsigned count = 0;
        do {
            ++count;
            ++m_next;
        } while (m_next != m_end && Offset(first) == count && Cell() == values + count &&
                 !BeginsGroup());
        return {first, {values, count}};
    }

private:
    // Groups of cells may lie side by side by chance, which must not show.
    bool BeginsGroup() const { return static_cast<unsigned>((*m_next).first) % 1024 == 0; }
    // Iterators are for reading; whether the table may be written is said by V.
    V* Cell() const { return const_cast<V*>(&(*m_next).second); }
    unsigned Offset(Key first) const {
        return static_cast<unsigned>((*m_next).first) - static_cast<unsigned>(first);
    }

    Iterator m_next;
    Iterator m_end;
};

// The blocks of a blocked array in order, each as a whole: cells that were never written read as
// T().
template <class T>
omi_Runs<omi_BlockSource<T, const T>> omi_ConstRuns(const omi_BlockedArray<T>& array) {
    return omi_Runs(omi_BlockSource<T, const T>(array));
}
template <class T>
omi_Runs<omi_BlockSource<T, T>> omi_WritableRuns(omi_BlockedArray<T>& array) {
    return omi_Runs(omi_BlockSource<T, T>(array));
}

// The members of a table, keys ascending: successive keys whose values lie side by side form a run,
// which ends before each multiple of 1024, or earlier where the table was made with smaller groups
// of cells. A negative key is a run of its own, as values lie by magnitude. A walk costs what
// begin() to end() cost; a run is a good unit where keys are mostly dense, such as node numbers.
//
//     for (const auto& [first, values] : omi_WritableRuns(temperatures)) Scale(values, 0.5);
template <class V, class A>
auto omi_ConstRuns(const omi_UintTable<V, A>& table) {
    using Iterator = typename omi_UintTable<V, A>::const_iterator;
    return omi_Runs(omi_MemberSource<Iterator, const V>(table.begin(), table.end()));
}
template <class V, class A>
auto omi_WritableRuns(omi_UintTable<V, A>& table) {
    using Iterator = typename omi_UintTable<V, A>::const_iterator;
    return omi_Runs(omi_MemberSource<Iterator, V>(table.begin(), table.end()));
}
template <class V, class A>
auto omi_ConstRuns(const omi_IntTable<V, A>& table) {
    using Iterator = typename omi_IntTable<V, A>::const_iterator;
    return omi_Runs(omi_MemberSource<Iterator, const V>(table.begin(), table.end()));
}
template <class V, class A>
auto omi_WritableRuns(omi_IntTable<V, A>& table) {
    using Iterator = typename omi_IntTable<V, A>::const_iterator;
    return omi_Runs(omi_MemberSource<Iterator, V>(table.begin(), table.end()));
}
inline auto omi_ConstRuns(const cow_IntTableInt& table) {
    using Iterator = cow_IntTableInt::const_iterator;
    return omi_Runs(omi_MemberSource<Iterator, const int>(table.begin(), table.end()));
}

// Runs of a temporary would end at once.
template <class T>
void omi_ConstRuns(const omi_BlockedArray<T>&&) = delete;
template <class V, class A>
void omi_ConstRuns(const omi_UintTable<V, A>&&) = delete;
template <class V, class A>
void omi_ConstRuns(const omi_IntTable<V, A>&&) = delete;
void omi_ConstRuns(const cow_IntTableInt&&) = delete;
