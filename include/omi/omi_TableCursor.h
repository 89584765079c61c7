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

    // To a key that is a member.
    void StandAt(unsigned int key) {
        m_slot = m_table->Slot(key);
        Enter(m_slot);
        const unsigned int local = key & m_table->m_localMask;
        Stand({m_block->Members().Word(local), local});
    }

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

    // The members from the current one on whose keys and cells follow each other, and, upwards,
    // what the word holds behind them for the same group of cells.
    struct Run {
        unsigned int length;
        unsigned int rest;
    };
    Run RunUp() const {
        const unsigned int most = MostBehind() - (m_local & MostBehind()) + 1;
        const unsigned int* word = m_word;
        const auto bits = static_cast<unsigned int>(*word & m_group) >> (m_local & 31);
        auto length = static_cast<unsigned int>(std::countr_one(bits));
        while (length < most && (m_local + length) % 32 == 0) {
            const auto ones = static_cast<unsigned int>(std::countr_one(*++word));
            length += ones;
            if (ones < 32) break;
        }
        const unsigned int behind = (m_local + length) % 32;
        return {length, behind ? static_cast<unsigned int>(*word & m_group) >> behind : 0};
    }
    Run RunDown() const {
        const unsigned int most = (m_local & MostBehind()) + 1;
        const unsigned int* word = m_word;
        const auto bits = static_cast<unsigned int>(*word & m_group) << (~m_local & 31);
        auto length = static_cast<unsigned int>(std::countl_one(bits));
        while (length < most && (m_local - length) % 32 == 31) {
            const auto ones = static_cast<unsigned int>(std::countl_one(*--word));
            length += ones;
            if (ones < 32) break;
        }
        return {length, 0};
    }

private:
    static constexpr unsigned int kWords = omi_BlkBitVect::kBlockWords;

    // Runs end at the end of their group of cells, and so often that finding one stays cheap.
    unsigned int MostBehind() const { return std::min(m_block->m_blockMask, 1023u); }

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
// walked downwards. It can be copied; inserting and removing keys ends it.
//
// Members whose keys follow each other are a run: its cells are walked as an array, and bits are
// read once a run.
template <class Key, class V, class A>
class omi_TableCursor {
    using Table = omi_UintTable<V, A>;

public:
    using value_type = std::pair<Key, V>;

    omi_TableCursor() = default;  // beyond the last member

    // On the first member. `negative` is the half to walk downwards first, or null.
    omi_TableCursor(const Table* negative, const Table* table)
        : omi_TableCursor(AtFirst(negative, table)) {}

    bool IsDone() const { return !m_cell; }

    // At the end Next does nothing.
    void Next() {
        if (++m_key != m_runEnd) [[likely]] {
            m_cell += m_step;
        } else if (m_rest) {
            const int gap = std::countr_zero(m_rest);
            const int length = std::countr_one(m_rest >> gap);
            m_rest = m_rest >> gap >> length;
            m_cell += gap + 1;
            m_key += static_cast<unsigned int>(gap);
            m_runEnd = m_key + static_cast<unsigned int>(length);
        } else {
            *this = Behind(m_table, m_after, m_key - 1);
            return;
        }
        if (!m_cell) __builtin_unreachable();  // spares loops to ask, as this member is there
    }

    // These need a current member. The value is the table's own.
    Key CurrentKey() const { return static_cast<Key>(m_key); }
    V& CurrentValue() const { return *m_cell; }
    omi_PairItem<Key, V> CurrentItem() const { return {CurrentKey(), CurrentValue()}; }

    // By place; all ends are equal.
    friend bool operator==(const omi_TableCursor& a, const omi_TableCursor& b) {
        return a.m_cell == b.m_cell;
    }

private:
    using Walk = omi_TableWalk<V, A>;

    // `after` is the table to go on with behind the current one, which then holds negative keys.
    omi_TableCursor(Walk walk, const Table* table, const Table* after) {
        if (walk.IsDone() && after) {
            walk = Walk(*after);
            walk.First();
            table = std::exchange(after, nullptr);
        }
        if (walk.IsDone()) return;
        const auto run = after ? walk.RunDown() : walk.RunUp();
        m_cell = &walk.Value();
        m_step = after ? -1 : 1;
        m_key = after ? 0u - walk.Key() : walk.Key();
        m_runEnd = m_key + run.length;
        m_rest = run.rest;
        m_table = table;
        m_after = after;
    }

    // As functions of values: see omi_TableWalk.
    [[gnu::noinline]] static omi_TableCursor AtFirst(const Table* negative,
                                                     const Table* table) noexcept {
        Walk walk(negative ? *negative : *table);
        if (negative)
            walk.Last();
        else
            walk.First();
        return negative ? omi_TableCursor(walk, negative, table)
                        : omi_TableCursor(walk, table, nullptr);
    }
    [[gnu::noinline]] static omi_TableCursor Behind(const Table* table, const Table* after,
                                                    unsigned int key) noexcept {
        if (!table) return {};
        Walk walk(*table);
        walk.StandAt(after ? 0u - key : key);
        if (after)
            walk.Previous();
        else
            walk.Next();
        return omi_TableCursor(walk, table, after);
    }

    V* m_cell = nullptr;        // null beyond the last member
    std::ptrdiff_t m_step = 1;  // -1 in the negative half
    unsigned int m_key = 0;
    unsigned int m_runEnd = 1;  // the key behind the run; Next leaves the end there, too
    unsigned int m_rest = 0;    // bits of the word behind the run
    const Table* m_table = nullptr;
    const Table* m_after = nullptr;  // the other half while m_table holds the negative one
};
