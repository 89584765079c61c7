#pragma once
#include <alloc/mem_alloc.h>
#include <cow/cow_ListConstIterator.h>
#include <kzm_export.h>

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

template <class T>
class cow_FixedArray;
template <class T>
struct cow_ListCut;
class atr_String;
class cow_String;

// Says that a list is to be made ready for n elements: cow_List<int> list(cow_ListConstruct(), n).
struct cow_ListConstruct {
    explicit cow_ListConstruct() = default;
};

// One block of a list: 2^shift elements, shared by every block table that refers to it. The list
// knows the shift. Elements that need construction are all constructed, also those outside the
// list; the others start uninitialised. Head and elements are one block of mem_Malloc.
template <class T>
class cow_ListBlock {
    template <class>
    friend class cow_List;
    template <class>
    friend class cow_ListConstIterator;
    friend struct kzm_Layout;
    friend struct kzm_ListView;

    cow_ListBlock() : m_count(1), m_data(Elements()) {}

    static constexpr std::size_t Head() {
        return (sizeof(cow_ListBlock) + alignof(T) - 1) / alignof(T) * alignof(T);
    }
    // As m_data, without waiting for it to be read.
    T* Elements() const {
        return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(this) + Head());
    }

    // Elements first..last-1 are copies of those of `from` at the same places.
    static cow_ListBlock* New(int shift, const T* from, int first, int last);
    static cow_ListBlock* New(int shift) {
        constexpr int kFirst = 4;  // nearly all blocks, and of a size that the compiler knows
        if (std::is_trivially_copyable_v<T> && shift == kFirst)
            return ::new (mem_Malloc(Head() + (sizeof(T) << kFirst))) cow_ListBlock();
        return New(shift, nullptr, 0, 0);
    }
    void Release(int shift) {
        if (--m_count == 0) Delete(shift);
    }
    void Delete(int shift);

    std::int32_t m_count;  // tables that refer to the block; plain, as every count of a value
    T* m_data;
};

// Growable sequence that is passed by value. A copy costs six fields and an increment; it shares
// first the table of blocks, then, after the first write, every block that neither side has
// written. Growth at either end never moves elements. Choose it for sequences that are handed on,
// kept as snapshots or extended at both ends; for a private scratch array std::vector is faster.
//
// Cost: Append, Prepend, Get and RemoveLast O(1) on a private list; the first write after a copy
// adds O(blocks) for the table, each first write to a shared block O(block). Inserting and removing
// inside is O(elements behind). Lists start with blocks of 16 elements; pre-sized for n >= 256, a
// block has between n/16 and n/8.
//
// References stay valid while the list grows; they end with the next write to their element's block
// by a sharing list, with removal and with the list. begin()/end() end with any write. A reference
// from Get() must not be written through after the list has been copied: the copy would change too.
//
// Arguments may be elements of the list itself; of numbers and pointers they may also be in the
// room behind its end. A bad index ends the process (abort). On exhaustion, also when a length or
// position would pass 2147483647, std::bad_alloc is thrown and the list holds what it held before.
// One thread at a time for a list and all its copies.
//
// T is copied and default-constructed. A removed element goes at once, its place taken by T(), so
// that the value a Pop() returned shares nothing with the list; other lists that share the block
// keep it. If assigning a T can throw, removed elements stay until they are overwritten, and an
// insertion or removal that is cut short may leave some elements twice and lose others.
template <class T>
class cow_List {
    using Block = cow_ListBlock<T>;

public:
    using value_type = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = const T&;
    using const_reference = const T&;
    using iterator = cow_ListConstIterator<T>;
    using const_iterator = cow_ListConstIterator<T>;

    // Empty. Memory for elements comes with the first of them.
    cow_List() { Initialize(0); }

    cow_List(cow_ListConstruct, int n) { Initialize(n); }  // empty; a hint, not a limit
    // Lists of one to five elements. A single T converts to a list.
    cow_List(const T& a) : cow_List(cow_ListConstruct(), 1) { Append(a); }
    cow_List(const T& a, const T& b) : cow_List(cow_ListConstruct(), 2) { Append(a).Append(b); }
    cow_List(const T& a, const T& b, const T& c) : cow_List(cow_ListConstruct(), 3) {
        Append(a).Append(b).Append(c);
    }
    cow_List(const T& a, const T& b, const T& c, const T& d) : cow_List(cow_ListConstruct(), 4) {
        Append(a).Append(b).Append(c).Append(d);
    }
    cow_List(const T& a, const T& b, const T& c, const T& d, const T& e)
        : cow_List(cow_ListConstruct(), 5) {
        Append(a).Append(b).Append(c).Append(d).Append(e);
    }
    // One element for each in the braces, of which there may be none.
    cow_List(std::initializer_list<T> elements)
        : cow_List(cow_ListConstruct(), CheckedCount(elements.size())) {
        SetFromArray(elements.begin(), static_cast<int>(elements.size()));
    }
    // Two arguments that convert to T are two elements, also if they are pointers.
    template <std::input_iterator It>
    requires(!std::convertible_to<It, T> && std::convertible_to<std::iter_reference_t<It>, T>)
        cow_List(It first, It last)
        : cow_List(cow_ListConstruct(), CountOf(first, last)) {
        for (; first != last; ++first) Append(*first);
    }
    // Copies share the table and every block: six fields and an increment. An rvalue is copied too,
    // so a moved-from list keeps its elements.
    cow_List(const cow_List& other) noexcept
        : m_length(other.m_length),
          m_tableSlots(other.m_tableSlots),
          m_blockShift(other.m_blockShift),
          m_offset(other.m_offset),
          m_tableCount(other.m_tableCount),
          m_table(other.m_table) {
        ++*m_tableCount;
    }
    cow_List& operator=(const cow_List& other) noexcept {
        cow_List copy(other);
        Swap(copy);
        return *this;
    }
    ~cow_List() { ReleaseTable(); }

    // The number of elements, at most 2147483647. O(1).
    int Length() const { return m_length; }

    // No copying, O(1).
    const T& ConstGet(int i) const {
        Block* const* const table = m_table;  // before the test: a loop reads the fields once
        const int shift = m_blockShift;
        const int offset = m_offset;
        CheckIndex(i);
        return *Cell(table, shift, offset, i);
    }
    const T& UncheckedConstGet(int i) const { return *Cell(i); }
    const T& Last() const { return ConstGet(m_length - 1); }

    // For writing: makes table and block private first, also if the element is then only read.
    T& Get(int i) {
        CheckIndex(i);
        return UncheckedGet(i);
    }
    T& UncheckedGet(int i) {
        const unsigned position = static_cast<unsigned>(m_offset + i);
        const unsigned slot = position >> m_blockShift;
        const Block* const block = m_table[slot];
        if (*m_tableCount == 1 && block && block->m_count == 1) [[likely]]
            return block->Elements()[position - (slot << m_blockShift)];
        return MakeWritable(i);
    }

    // Ends the process unless 0 <= i < Length(). For a loop over the unchecked accessors: test
    // once.
    void CheckIndex(int i) const {
        if (static_cast<unsigned>(i) >= static_cast<unsigned>(m_length)) RaiseOutOfRange();
    }

    [[noreturn]] static void RaiseOutOfRange();  // abort()

    // Constant iterators: reading through them never copies. O(1) per step.
    const_iterator begin() const { return const_iterator(*this, 0); }
    const_iterator end() const { return const_iterator(*this, m_length); }

    // Searches with ==, from the front: O(n).
    bool IsMember(const T& v) const { return FindMember(v) >= 0; }
    int FindMember(const T& v) const;  // the first index, -1 where there is none

    // Element by element with ==, even between copies: a list with a NaN does not equal itself.
    bool IsEqual(const cow_List& other) const;

    // The elements that are not in other, in this list's order and with its repeats.
    cow_List Difference(const cow_List& other) const;

    // Elements first..first+n-1, which must exist; n <= 0 gives an empty list. From one block on
    // the result shares the blocks of this list, so it costs O(n / block) and keeps them alive.
    cow_List Slice(int first, int n) const;

    // A fresh array of copies, n of them, null for an empty list. The caller owns it and hands it
    // back with ReleaseCArray.
    T* GetCArray(int& n) const;
    static void ReleaseCArray(T* elements, int n);

    // Append and Prepend add at either end, O(1) on average, and move no element; v may be an
    // element. AppendUnlessMember looks for v first, with ==: O(n).
    cow_List& Append(const T& v) {
        const std::conditional_t<std::is_scalar_v<T>, T, const T&> value = v;
        const int length = m_length;
        if (!IsInTail(length)) [[unlikely]]
            MakeTail();
        const TableHead& head = *TableHead::Of(m_table);
        head.m_tail[static_cast<unsigned>(m_offset + length) - head.m_tailFirst] = value;
        m_length = length + 1;
        return *this;
    }
    cow_List& AppendUnlessMember(const T& v) { return IsMember(v) ? *this : Append(v); }
    cow_List& Prepend(const T& v) {
        const int position = m_offset - 1;
        if (position >= 0 && *m_tableCount == 1) [[likely]] {
            const int slot = position >> m_blockShift;
            const Block* const block = m_table[slot];
            if (block && block->m_count == 1) [[likely]] {
                block->Elements()[position - (slot << m_blockShift)] = v;
                m_offset = position;
                ++m_length;
                return *this;
            }
        }
        return OutOfLine(v, &cow_List::PrependToNewSlot);
    }

    cow_List& InsertIndex(int i, const T& v);  // v becomes element i; i is at most Length()

    // Appends copies of the other's elements, a block at a time; the list may be its own `other`.
    cow_List& Concatenate(const cow_List& other);

    // The list becomes n elements; a negative n ends the process.
    cow_List& Fill(int n, const T& v);
    cow_List& SetFromArray(const T* a, int n);

    // Cuts the list to n elements. Above Length() it only makes room for n and the length stays. An
    // emptied list forgets its block size. A negative n ends the process.
    cow_List& Resize(int n);

    // RemoveIndex closes the gap: the elements behind move by one. Pop returns the last element,
    // RemoveLast drops it. A bad index and an empty list end the process.
    cow_List& RemoveIndex(int i);
    cow_List& RemoveLast();
    // Searches from the front: O(n).
    cow_List& RemoveMember(const T& v);  // the first occurrence, if there is one
    // The last element, which leaves the list. An empty list ends the process.
    T Pop();

    // Ascending by SortCmp. Equal elements, and those that < does not order such as NaN, end in no
    // particular order. O(n log n), with a scratch array of n elements.
    cow_List& Sort();
    static int SortCmp(const void* a, const void* b);  // of two T: -1, 0 or +1, for qsort

protected:
    void Initialize(int n);           // on raw fields; for constructors
    void CopyArray();                 // makes the table private
    void IsolateRange(int a, int b);  // makes the blocks of elements a..b private; -1 after Prefix
    void Prefix();                    // makes room before element 0

private:
    template <class>
    friend class cow_ListConstIterator;
    template <class>
    friend class cow_ListIter;
    template <class, class>
    friend class cow_ListRuns;
    friend struct kzm_Layout;
    friend struct kzm_ListView;

    static constexpr int kLastPosition = 2147483647;

    // Stands right before the slots of a table. The tail is a block that only this table refers to,
    // the one where Append wrote last: while the table is private, Append may write at any of its
    // positions, and Resize would leave the table as it is. Whatever shares or drops blocks, moves
    // them to other positions or changes the number of slots forgets the tail.
    struct TableHead {
        T* m_tail;
        std::uint32_t m_tailFirst;  // position of its first element
        std::uint32_t m_tailSize;   // 0: there is no tail
        std::int32_t m_before;      // unused slots in front of this head
        std::int32_t m_room;  // slots from the first one of the table to the end of the memory

        static TableHead* Of(Block** table) { return reinterpret_cast<TableHead*>(table) - 1; }
        void* Memory() { return reinterpret_cast<void**>(this) - m_before; }
        static std::size_t Bytes(int slots) {
            return sizeof(TableHead) + static_cast<std::size_t>(slots) * sizeof(void*);
        }
        // The slots of a table in this memory.
        static Block** Start(void* memory, int before, int room) {
            void** const head = static_cast<void**>(memory) + before;
            return reinterpret_cast<Block**>(::new (head) TableHead{nullptr, 0, 0, before, room} +
                                             1);
        }
    };
    // Whether element i, or the one behind the last, may be written in the tail.
    bool IsInTail(int i) const {
        if (!m_table || *m_tableCount != 1) [[unlikely]]
            return false;
        const TableHead& head = *TableHead::Of(m_table);
        return static_cast<unsigned>(m_offset + i) - head.m_tailFirst < head.m_tailSize;
    }
    void MakeTail();  // of the block for the next element
    void ForgetTail() const {
        if (m_table) TableHead::Of(m_table)->m_tailSize = 0;
    }

    // Of a position, its place in the block. A loop that reads computes this once.
    static unsigned Mask(int shift) { return (1u << shift) - 1; }
    static T* Cell(Block* const* table, int shift, int offset, int i) {
        const unsigned position = static_cast<unsigned>(offset + i);
        return table[position >> shift]->Elements() + (position & Mask(shift));
    }
    T* Cell(int i) const { return Cell(m_table, m_blockShift, m_offset, i); }
    // The address of element i, in `run` how many of at most n elements lie side by side there.
    T* Run(int i, int n, int& run) const {
        const int room = (1 << m_blockShift) - ((m_offset + i) & ((1 << m_blockShift) - 1));
        run = n < room ? n : room;
        return Cell(i);
    }

    void ReleaseTable() {
        if (--*m_tableCount == 0) DeleteTable();
    }
    void DeleteTable();
    void Swap(cow_List& other) noexcept {
        std::swap(m_length, other.m_length);
        std::swap(m_tableSlots, other.m_tableSlots);
        std::swap(m_blockShift, other.m_blockShift);
        std::swap(m_offset, other.m_offset);
        std::swap(m_tableCount, other.m_tableCount);
        std::swap(m_table, other.m_table);
    }

    static int CheckedCount(std::size_t n) {
        if (n > static_cast<std::size_t>(kLastPosition)) throw std::bad_alloc();
        return static_cast<int>(n);
    }
    template <class It>
    static int CountOf(const It& first, const It& last) {
        if constexpr (std::forward_iterator<It>)
            return CheckedCount(static_cast<std::size_t>(std::distance(first, last)));
        else
            return 0;
    }

    static Block** NewTable(int slots, int slotsBefore = 0);
    static void FreeTable(Block** table);
    void FitTable(int slots);
    int SlotsFor(std::int64_t n) const;
    cow_List EmptyLikeThis() const;
    Block* CopyOfBlock(int slot, int length) const;
    T& MakeWritable(int i);
    void Grow(std::int64_t n);
    cow_ListCut<T> PrepareCut(int n) const;
    void Truncate(int n, cow_ListCut<T>& cut);
    bool SharesBlocks(int n) const;
    // Small values go as copies: a caller's variable whose address goes elsewhere is no longer kept
    // in a register.
    cow_List& OutOfLine(const T& v, cow_List& (cow_List::*add)(const T&)) {
        if constexpr (std::is_scalar_v<T>) {
            const T copy = v;
            return (this->*add)(copy);
        } else {
            return (this->*add)(v);
        }
    }
    cow_List& PrependToNewSlot(const T& v);
    cow_List& AppendElements(const cow_List& other, int first, int n);
    template <class Write>
    cow_List& Overwrite(int n, const Write& write);
    template <class Write>
    void Rewrite(int n, int slots, const Write& write);

    std::int32_t m_length;
    std::int32_t m_tableSlots;
    std::int32_t m_blockShift;   // log2 of the elements per block
    std::int32_t m_offset;       // storage position of element 0
    std::int32_t* m_tableCount;  // lists that share the table; a block of its own, never null
    Block** m_table;             // m_tableSlots entries, null where no block is; null for 0
};

// As IsEqual.
template <class T>
bool operator==(const cow_List<T>& a, const cow_List<T>& b) {
    return a.IsEqual(b);
}
template <class T>
bool operator!=(const cow_List<T>& a, const cow_List<T>& b) {
    return !a.IsEqual(b);
}

// Lexicographic, for elements that have <=>.
template <class T>
requires std::three_way_comparable<T>
auto operator<=>(const cow_List<T>& a, const cow_List<T>& b) {
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end());
}

// The element types whose lists the library holds, in groups that are compiled side by side.
#define COW_LIST_NUMBERS(X) X(bool) X(int) X(unsigned int) X(float) X(double) X(std::int64_t)
#define COW_LIST_VALUES(X) X(cow_String) X(atr_String) X(cow_FixedArray<double>)
#define COW_LIST_LISTS(X)     \
    X(cow_List<int>)          \
    X(cow_List<unsigned int>) \
    X(cow_List<float>)        \
    X(cow_List<double>)       \
    X(cow_List<cow_String>)
#define COW_LIST_ELEMENTS(X) COW_LIST_NUMBERS(X) COW_LIST_VALUES(X) COW_LIST_LISTS(X)

#define COW_DECLARE_LIST(...)               \
    KZM_DECLARE(cow_ListBlock<__VA_ARGS__>) \
    KZM_DECLARE(cow_List<__VA_ARGS__>)
COW_LIST_ELEMENTS(COW_DECLARE_LIST)
#undef COW_DECLARE_LIST
