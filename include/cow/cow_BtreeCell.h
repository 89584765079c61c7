#pragma once
#include <alloc/mem_cell.h>
#include <cow/cow_COW.h>

#include <cstddef>
#include <cstdint>
#include <new>

// The handles with nodes that a tree makes. Where the heap has cells, and the node is small enough,
// handle, count and node lie side by side, so that a look-up touches one line of the caches a
// level. Each of them is a block of its own all the same: a node that is shared outlives the handle
// that it was made with.
template <class Node>
class cow_BtreeCell {
public:
    // What a tree keeps of each node.
    using Handle = cow_COW<Node, cow_Direct<Node>>;

    // The node of a handle that has one.
    static Node* NodeOf(const Handle* handle) {
        Node* const node = handle->GetPtr();
        if (!node) __builtin_unreachable();  // so that callers test once
        return node;
    }

    // Of a handle whose node may be asked for soon. Null is allowed.
    static void Prefetch(const Handle* handle) {
        if constexpr (kFits)
            __builtin_prefetch(handle);
        else if (handle)
            __builtin_prefetch(handle->GetPtr());
    }

    // A handle, which the caller owns, of a new node made from these.
    template <class... Args>
    static Handle* New(const Args&... args) {
        if constexpr (kFits)
            if (void* const cell = mem_TakeCell(kKind)) [[likely]]
                return NewInCell(static_cast<char*>(cell), args...);
        return NewHandle([&] { return NewNode(args...); });
    }

    // A handle, which the caller owns, that shares with another.
    static Handle* NewSharing(const Handle& other) {
        return NewHandle([&other]() -> const Handle& { return other; });
    }

    // A node in a block of its own, for the handle that the caller gives it to.
    template <class... Args>
    static Node* NewNode(const Args&... args) {
        void* const block = mem_OperatorNewThrow(sizeof(Node));
        try {
            return ::new (block) Node(args...);
        } catch (...) {
            mem_Free(block);
            throw;
        }
    }

    // Ends the handle and gives its block back. Null is allowed.
    static void Destroy(Handle* handle) {
        if constexpr (kFits) {
            if (handle && handle->Exclusive() && IsInCell(handle)) {
                cow_Counter* const counter = handle->m_counter;
                handle->GetPtr()->~Node();
                if constexpr (!kHasCounter) mem_Free(counter);
                return mem_FreeCell(handle, kKind);
            }
        }
        cow_Destroy(handle);
    }

private:
    static constexpr bool kHasCounter = sizeof(Node) <= 40 && alignof(Node) <= 8;
    static constexpr bool kFits = kMemHasCells && sizeof(void*) == 8 &&
                                  (kHasCounter || (sizeof(Node) <= 48 && alignof(Node) <= 16));
    static constexpr mem_CellKind kKind = kHasCounter ? kMemCellOfThree : kMemCellOfTwo;
    static constexpr std::size_t kCounterAt = 16;
    static constexpr std::size_t kNodeAt = kHasCounter ? 24 : 16;

    // Blocks of different sizes lie like this nowhere else in a heap with cells.
    static bool IsInCell(const Handle* handle) {
        const auto at = reinterpret_cast<std::uintptr_t>(handle);
        return at % kMemCell == 0 &&
               reinterpret_cast<std::uintptr_t>(handle->GetPtr()) == at + kNodeAt;
    }

    template <class... Args>
    static Handle* NewInCell(char* cell, const Args&... args) {
        cow_Counter* counter = nullptr;
        Node* node;
        try {
            void* const place =
                kHasCounter ? cell + kCounterAt : mem_OperatorNewTinyThrow(sizeof(cow_Counter));
            counter = ::new (place) cow_Counter;
            node = ::new (cell + kNodeAt) Node(args...);
        } catch (...) {
            if constexpr (!kHasCounter) mem_Free(counter);
            mem_FreeCell(cell, kKind);
            throw;
        }
        return ::new (cell) Handle(node, counter);
    }

    // From whatever makeReferent() returns: a new node or a handle to share.
    template <class MakeReferent>
    static Handle* NewHandle(const MakeReferent& makeReferent) {
        void* const block = mem_OperatorNewTinyThrow(sizeof(Handle));
        try {
            return ::new (block) Handle(makeReferent());
        } catch (...) {
            mem_Free(block);
            throw;
        }
    }
};
