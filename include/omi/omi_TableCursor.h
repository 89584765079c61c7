#pragma once
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_StdIterator.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

template <class V, class A>
class omi_UintTable;
template <class V, class A>
class omi_UintTableBlock;

// A walk over the members of one table in both directions, in key order: a place among a block's
// membership bits and the value cell that belongs to it. It reads the bits anew at each step, so
// that members which were removed meanwhile are passed over.
//
// What leaves the word is done out of line by functions of values, which no address of a walk
// reaches: so the walk of a loop lives in registers.
template <class V, class A>
class omi_TableWalk {
    using Table = omi_UintTable<V, A>;
    using Block = omi_UintTableBlock<V, A>;

public:
    omi_TableWalk() = default;  // of no table, done
    explicit omi_TableWalk(const Table& table) : m_table(&table) {}

    bool IsDone() const { return !m_word; }
    void Leave() { m_word = nullptr; }

    // These need a current member. The value is the table's own.
    unsigned int Key() const { return m_base + m_local; }
    V& Value() const { return *m_cell; }

    // Beyond its ends, Next and Previous do nothing.
    void First() { *this = FromSlot(m_table, 0); }
    void Last() { *this = DownFromSlot(m_table, std::int64_t{m_table->m_slotCount} - 1); }
    void Next() {
        if (m_word && !NextInBlock()) NextBlock();
    }
    void Previous() {
        if (m_word && !PreviousInBlock()) PreviousBlock();
    }

    // To the lowest member of the next block, or the highest of the block before; before the first
    // move only the first block is found, beyond an end only the one that was left.
    void NextBlock() { *this = FromSlot(m_table, m_slot + 1); }
    void PreviousBlock() { *this = DownFromSlot(m_table, m_slot - 1); }

    bool operator==(const omi_TableWalk& other) const {
        return m_word == other.m_word && (!m_word || m_local == other.m_local);
    }

private:
    static constexpr unsigned int kWords = omi_BlkBitVect::kBlockWords;

    struct Place {
        const unsigned int* word;  // null for nowhere
        std::size_t local;
    };

    // The next bit, which in dense tables is set as a rule, is not waited for.
    bool NextInBlock() {
        const auto above = static_cast<unsigned int>(*m_word & m_group) >> (m_local & 31) >> 1;
        if (above & 1) [[likely]]
            return Move(1);
        if (above) return Move(1 + std::countr_zero(above));
        return Stand(Above(m_block, m_word, m_local));
    }
    bool PreviousInBlock() {
        const auto below = static_cast<unsigned int>(*m_word & m_group) << (~m_local & 31) << 1;
        if (below >> 31) [[likely]]
            return Move(-1);
        if (below) return Move(-1 - std::countl_zero(below));
        return Stand(Below(m_block, m_word, m_local));
    }

    // To another bit of the same word whose cell lies in the same group of cells.
    bool Move(int distance) {
        m_cell += distance;
        m_local += static_cast<unsigned int>(distance);
        return true;
    }

    bool Stand(Place place) {
        m_word = place.word;
        if (!m_word) return false;
        m_local = static_cast<unsigned int>(place.local);
        const unsigned int cells = m_block->m_blockMask;
        m_cell = m_block->m_table[m_local >> (m_block->m_blockShift & 31)] + (m_local & cells);
        m_group = cells >= 31 ? ~0u : ((2u << cells) - 1) << (m_local & 31 & ~cells);
        return true;
    }

    // `bits` are what is left of the word with this number.
    static Place SeekUp(const Block* block, const unsigned int* word, unsigned int number,
                        unsigned int bits) {
        const omi_BlkBitVect& members = block->Members();
        while (!bits) {
            if (++number % kWords == 0) {
                const unsigned int slots = members.m_slotCount;
                const unsigned int slot =
                    omi_detail::NextPresent(members.m_table, number / kWords, slots);
                if (slot == slots) return {nullptr, 0};
                number = slot * kWords;
                word = members.m_table[slot];
            } else {
                ++word;
            }
            bits = *word;
        }
        return {word, number * 32 + static_cast<unsigned int>(std::countr_zero(bits))};
    }
    static Place SeekDown(const Block* block, const unsigned int* word, unsigned int number,
                          unsigned int bits) {
        const omi_BlkBitVect& members = block->Members();
        while (!bits) {
            if (number % kWords == 0) {
                unsigned int slot = number / kWords;
                while (slot > 0 && !members.m_table[slot - 1]) --slot;
                if (slot == 0) return {nullptr, 0};
                number = slot * kWords - 1;
                word = members.m_table[slot - 1] + kWords - 1;
            } else {
                --number;
                --word;
            }
            bits = *word;
        }
        return {word, number * 32 + 31 - static_cast<unsigned int>(std::countl_zero(bits))};
    }

    [[gnu::noinline]] static Place Above(const Block* block, const unsigned int* word,
                                         unsigned int local) noexcept {
        return SeekUp(block, word, local / 32, *word & ~1u << (local & 31));
    }
    [[gnu::noinline]] static Place Below(const Block* block, const unsigned int* word,
                                         unsigned int local) noexcept {
        return SeekDown(block, word, local / 32, *word & ((1u << (local & 31)) - 1));
    }

    // At the first member from this slot on, or at the last one of this slot and those before.
    [[gnu::noinline]] static omi_TableWalk FromSlot(const Table* table,
                                                    std::int64_t slot) noexcept {
        omi_TableWalk walk(*table);
        const std::int64_t end = table->m_slotCount;
        for (slot = std::clamp<std::int64_t>(slot, 0, end); slot < end; ++slot)
            if (walk.Enter(slot) && walk.Stand(SeekUp(walk.m_block, nullptr, ~0u, 0))) break;
        walk.m_slot = slot;
        return walk;
    }
    [[gnu::noinline]] static omi_TableWalk DownFromSlot(const Table* table,
                                                        std::int64_t slot) noexcept {
        omi_TableWalk walk(*table);
        for (slot = std::clamp<std::int64_t>(slot, -1, std::int64_t{table->m_slotCount} - 1);
             slot >= 0; --slot) {
            if (!walk.Enter(slot)) continue;
            const unsigned int words = walk.m_block->Members().m_slotCount * kWords;
            if (walk.Stand(SeekDown(walk.m_block, nullptr, words, 0))) break;
        }
        walk.m_slot = slot;
        return walk;
    }

    bool Enter(std::int64_t slot) {
        m_base = static_cast<unsigned int>(static_cast<std::uint64_t>(slot) << m_table->m_keyShift);
        m_block = m_table->m_table[slot];
        return m_block;
    }

    const Table* m_table = nullptr;
    const Block* m_block = nullptr;
    const unsigned int* m_word = nullptr;  // null while the walk stands nowhere
    V* m_cell = nullptr;
    std::int64_t m_slot = -2;  // of the current member's block; -2 before the first move
    unsigned int m_local = 0;
    std::size_t m_group = 0;  // bits of the word whose cells lie side by side with the current one
    unsigned int m_base = 0;  // lowest key of the slot
};

// The walk behind begin() and end() of the integer-keyed tables, in ascending key order. Key is
// unsigned for one table, int for the two halves of a signed one, of which the negative half is
// walked downwards. Rules are those of omi_UintTableIterator in key order; this one can be copied.
template <class Key, class V, class A>
class omi_TableCursor {
    using Table = omi_UintTable<V, A>;

public:
    using value_type = std::pair<Key, V>;

    omi_TableCursor() = default;  // beyond the last member

    // On the first member. `negative` is the half to walk downwards first, or null.
    omi_TableCursor(const Table* negative, const Table* table)
        : m_walk(negative ? *negative : *table), m_after(negative ? table : nullptr) {
        if (negative)
            m_walk.Last();
        else
            m_walk.First();
        LeaveNegative();
    }

    bool IsDone() const { return m_walk.IsDone(); }

    void Next() {
        if (IsNegative()) {
            m_walk.Previous();
            LeaveNegative();
        } else {
            m_walk.Next();
        }
    }

    // These need a current member. The value is the table's own.
    Key CurrentKey() const {
        return static_cast<Key>(IsNegative() ? 0u - m_walk.Key() : m_walk.Key());
    }
    V& CurrentValue() const { return m_walk.Value(); }
    omi_PairItem<Key, V> CurrentItem() const { return {CurrentKey(), CurrentValue()}; }

    friend bool operator==(const omi_TableCursor& a, const omi_TableCursor& b) {
        return a.m_walk == b.m_walk;
    }

private:
    bool IsNegative() const { return std::is_signed_v<Key> && m_after; }

    void LeaveNegative() {
        if (!IsNegative() || !m_walk.IsDone()) return;
        m_walk = omi_TableWalk<V, A>(*m_after);
        m_walk.First();
        m_after = nullptr;
    }

    omi_TableWalk<V, A> m_walk;
    const Table* m_after = nullptr;  // what comes after the negative half, null once it is reached
};
