#pragma once
#include <omi/omi_BlkBitVect.h>
#include <omi/omi_StdIterator.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

template <class V, class A>
class omi_UintTable;
template <class V, class A>
class omi_UintTableBlock;

// A walk over the members of one table block in both directions: a place among its membership bits
// and the value cell that belongs to it. It reads the bits anew at each step, so that members which
// were removed meanwhile are passed over. Steps within a word stay in registers: what leaves the
// word works on a copy.
template <class V, class A>
class omi_TableBlockWalk {
    using Block = omi_UintTableBlock<V, A>;

public:
    bool IsDone() const { return !m_word; }
    void Leave() { m_word = nullptr; }

    // These need a current member.
    unsigned int Local() const { return m_local; }
    V& Value() const { return *m_cell; }

    // Each is false, and the walk stands nowhere, if there is no such member. Next and Prev need a
    // current member.
    bool First(const Block& block) {
        *this = FirstOf(&block);
        return m_word;
    }
    bool Last(const Block& block) {
        *this = LastOf(&block);
        return m_word;
    }
    bool Next() {
        const unsigned int above = *m_word & m_group & (0u - (m_bit << 1));
        if (above)
            Move(above & (0u - above), std::countr_zero(above));
        else
            *this = Higher(*this);
        return m_word;
    }
    bool Prev() {
        const unsigned int below = *m_word & m_group & (m_bit - 1);
        if (below)
            Move(std::bit_floor(below), 31 - std::countl_zero(below));
        else
            *this = Lower(*this);
        return m_word;
    }

    bool operator==(const omi_TableBlockWalk& other) const {
        return m_word == other.m_word && m_bit == other.m_bit;
    }

private:
    static constexpr unsigned int kWords = omi_BlkBitVect::kBlockWords;

    // To another bit of the same word whose cell lies in the same group of cells.
    void Move(unsigned int bit, int number) {
        const unsigned int local = (m_local & ~31u) + static_cast<unsigned int>(number);
        m_cell += static_cast<std::ptrdiff_t>(local) - static_cast<std::ptrdiff_t>(m_local);
        m_local = local;
        m_bit = bit;
    }

    // To a bit of the word with this number, which lies at `place`.
    void Stand(unsigned int word, const unsigned int* place, int number) {
        m_word = place;
        m_bit = 1u << number;
        m_local = word * 32 + static_cast<unsigned int>(number);
        m_cell = m_block->GetCell(m_local);
        const unsigned int cells = m_block->m_blockMask;
        m_group =
            cells >= 31 ? ~0u : ((2u << cells) - 1) << (static_cast<unsigned>(number) & ~cells);
    }

    // `bits` are what is left of the word.
    void SeekUp(unsigned int word, const unsigned int* place, unsigned int bits) {
        const omi_BlkBitVect& members = m_block->Members();
        while (!bits) {
            if (++word % kWords == 0) {
                const unsigned int slots = members.m_slotCount;
                const unsigned int slot =
                    omi_detail::NextPresent(members.m_table, word / kWords, slots);
                if (slot == slots) return Leave();
                word = slot * kWords;
                place = members.m_table[slot];
            } else {
                ++place;
            }
            bits = *place;
        }
        Stand(word, place, std::countr_zero(bits));
    }

    void SeekDown(unsigned int word, const unsigned int* place, unsigned int bits) {
        const omi_BlkBitVect& members = m_block->Members();
        while (!bits) {
            if (word % kWords == 0) {
                unsigned int slot = word / kWords;
                while (slot > 0 && !members.m_table[slot - 1]) --slot;
                if (slot == 0) return Leave();
                word = slot * kWords - 1;
                place = members.m_table[slot - 1] + kWords - 1;
            } else {
                --word;
                --place;
            }
            bits = *place;
        }
        Stand(word, place, 31 - std::countl_zero(bits));
    }

    [[gnu::noinline]] static omi_TableBlockWalk FirstOf(const Block* block) {
        omi_TableBlockWalk walk;
        walk.m_block = block;
        walk.SeekUp(~0u, nullptr, 0);
        return walk;
    }
    [[gnu::noinline]] static omi_TableBlockWalk LastOf(const Block* block) {
        omi_TableBlockWalk walk;
        walk.m_block = block;
        walk.SeekDown(block->Members().m_slotCount * kWords, nullptr, 0);
        return walk;
    }
    [[gnu::noinline]] static omi_TableBlockWalk Higher(omi_TableBlockWalk walk) {
        walk.SeekUp(walk.m_local / 32, walk.m_word, *walk.m_word & (0u - (walk.m_bit << 1)));
        return walk;
    }
    [[gnu::noinline]] static omi_TableBlockWalk Lower(omi_TableBlockWalk walk) {
        walk.SeekDown(walk.m_local / 32, walk.m_word, *walk.m_word & (walk.m_bit - 1));
        return walk;
    }

    const Block* m_block = nullptr;
    const unsigned int* m_word = nullptr;  // null while the walk stands nowhere
    V* m_cell = nullptr;
    unsigned int m_local = 0;
    unsigned int m_bit = 0;    // the current one of the word
    unsigned int m_group = 0;  // bits of the word whose cells lie side by side with the current one
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
        : m_half(negative), m_after(table), m_slot(negative ? negative->m_slotCount : 0) {
        *this = AtNextBlock(*this);
    }

    bool IsDone() const { return m_walk.IsDone(); }

    void Next() {
        if (!IsDone() && !(IsNegative() ? m_walk.Prev() : m_walk.Next()))
            *this = AtNextBlock(*this);
    }

    // These need a current member. The value is the table's own.
    Key CurrentKey() const {
        const unsigned int key = m_base + m_walk.Local();
        return static_cast<Key>(IsNegative() ? 0u - key : key);
    }
    V& CurrentValue() const { return m_walk.Value(); }
    omi_PairItem<Key, V> CurrentItem() const { return {CurrentKey(), CurrentValue()}; }

    friend bool operator==(const omi_TableCursor& a, const omi_TableCursor& b) {
        return a.m_walk == b.m_walk;
    }

private:
    bool IsNegative() const { return std::is_signed_v<Key> && m_after; }

    // The block of the slot, if there is one.
    const omi_UintTableBlock<V, A>* Enter(std::int64_t slot) {
        m_base = static_cast<unsigned int>(static_cast<std::uint64_t>(slot) << m_half->m_keyShift);
        return m_half->m_table[slot];
    }

    [[gnu::noinline]] static omi_TableCursor AtNextBlock(omi_TableCursor cursor) {
        cursor.NextBlock();
        return cursor;
    }

    void NextBlock() {
        if (m_after) {
            if (m_half)
                while (--m_slot >= 0)
                    if (const auto* const block = Enter(m_slot); block && m_walk.Last(*block))
                        return;
            m_half = m_after;
            m_after = nullptr;
            m_slot = -1;
        }
        for (const std::int64_t end = m_half->m_slotCount; ++m_slot < end;)
            if (const auto* const block = Enter(m_slot); block && m_walk.First(*block)) return;
        m_walk.Leave();
    }

    const Table* m_half = nullptr;   // the table being walked
    const Table* m_after = nullptr;  // what comes after the negative half, null once it is reached
    omi_TableBlockWalk<V, A> m_walk;
    std::int64_t m_slot = 0;
    unsigned int m_base = 0;  // lowest key of the slot
};
