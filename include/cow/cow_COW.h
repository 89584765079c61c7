#pragma once
#include <cow/cow_CountedHld.h>

#include <type_traits>

// The copy policy of every container of this library: the referent's copy constructor.
template <class T>
struct cow_Direct {
    // A new T in a block of mem_OperatorNewThrow, as cow_CountedHld takes it over. If the
    // constructor throws, the block is given back.
    static T* Copy(const T& value) {
        void* const block = mem_OperatorNewThrow(sizeof(T));
        try {
            return ::new (block) T(value);
        } catch (...) {
            mem_Free(block);
            throw;
        }
    }
};

// Copy-on-write handle, the one field that value containers embed. Copying a handle is two pointer
// copies and an increment; Get() makes a private copy of a shared referent first, at most once per
// handle and sharing. Policy::Copy(const T&) returns a new T as cow_Direct does.
//
// An rvalue is shared like any other source and keeps its reference, so a moved-from handle is
// still a value.
template <class T, class Policy>
class cow_COW : public cow_CountedHld<T> {
    using Base = cow_CountedHld<T>;

public:
    // Holds a copy of the value, made by the policy.
    cow_COW(const T& value) : Base(Policy::Copy(value)) {}
    // Takes ownership of `p`, as cow_CountedHld does; null is allowed.
    cow_COW(T* p) : Base(p) {}
    // Share the referent; an rvalue keeps its share.
    cow_COW(const cow_COW& other) noexcept : Base(other) {}
    cow_COW(cow_COW&& other) noexcept : Base(other) {}

    using Base::operator=;
    // Shares, and drops the share it had.
    cow_COW& operator=(const cow_COW& other) noexcept {
        Base::operator=(other);
        return *this;
    }

    // For writing: detaches first. Must not be called on a shared handle without a value. If the
    // copy cannot be made, the handle stays shared as it was.
    T& Get() {
        if (!this->Exclusive()) [[unlikely]] {
            if constexpr (std::is_trivially_copyable_v<T> && sizeof(T) <= 64)
                Base::operator=(Policy::Copy(*this->GetPtr()));
            else
                Detach();
        }
        return *this->GetPtr();
    }

    // For reading: never detaches. The handle must have a value.
    const T& ConstGet() const { return *this->GetPtr(); }

private:
    template <class Node>
    friend class cow_BtreeCell;

    cow_COW(T* p, cow_Counter* counter) noexcept : Base(p, counter) {}

    void Detach();  // out of line, so that Get is not; small values are copied in place
};

template <class T, class Policy>
void cow_COW<T, Policy>::Detach() {
    Base::operator=(Policy::Copy(*this->GetPtr()));
}
