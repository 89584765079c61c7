#pragma once
#include <alloc/mem_alloc.h>
#include <cow/cow_Counter.h>

#include <new>

// Destroys *object and gives its block back. Null is allowed.
template <class T>
void cow_Destroy(T* object) {
    if (!object) return;
    object->~T();
    mem_FreeSized(object, sizeof(T));
}

// Counted holder of a heap object of type T, which needs no change to be held: the count is a block
// of its own. Copies share; the last holder destroys the referent. A null referent is a legal state
// and is counted like any other.
//
// Every T* handed over must be a block of mem_OperatorNewThrow with a T constructed in it (for
// example from cow_Direct<T>::Copy): it is destroyed with ~T() and mem_Free. One thread at a time.
template <class T>
class cow_CountedHld {
public:
    // Takes ownership of `p`, also when the counter cannot be allocated: then `p` is destroyed
    // before the exception leaves.
    cow_CountedHld(T* p) : m_counter(NewCounter(p)), m_referent(p) {}

    // Shares, null as well.
    cow_CountedHld(const cow_CountedHld& other) noexcept
        : m_counter(other.m_counter), m_referent(other.m_referent) {
        m_counter->Increment();
    }

    // Shares. Safe for self-assignment and for a holder inside the own referent.
    cow_CountedHld& operator=(const cow_CountedHld& other) noexcept {
        cow_Counter* const counter = other.m_counter;
        T* const referent = other.m_referent;
        counter->Increment();
        DropReference();
        m_counter = counter;
        m_referent = referent;
        return *this;
    }

    // Replaces the referent and takes ownership of `p`. An exclusive holder destroys its referent
    // and keeps its counter; a sharing one leaves the referent to the others. If the fresh counter
    // cannot be allocated, `p` is destroyed and the holder stays as it was. The own exclusive
    // referent must not be passed: it would be destroyed.
    cow_CountedHld& operator=(T* p) {
        if (Exclusive()) {
            DeleteReferent();
        } else {
            cow_Counter* const counter = NewCounter(p);
            m_counter->Decrement();
            m_counter = counter;
        }
        m_referent = p;
        return *this;
    }

    ~cow_CountedHld() { DropReference(); }

    // Whether no other holder shares the referent.
    bool Exclusive() const { return m_counter->m_count == 1; }
    // The referent, for all who share it: nothing is copied. GetRef needs a value.
    T* GetPtr() const { return m_referent; }
    const T& GetRef() const { return *m_referent; }
    // Whether the referent is there, or null.
    bool HasValue() const { return m_referent != nullptr; }
    bool IsNull() const { return m_referent == nullptr; }

protected:
    // Takes ownership of both; the counter counts one.
    cow_CountedHld(T* p, cow_Counter* counter) noexcept : m_counter(counter), m_referent(p) {}

    // Gives up the share; the last one destroys referent and counter. The holder must be assigned
    // its fields, or end, afterwards.
    void DropReference() {
        if (m_counter->Decrement()) Delete();
    }

    // Destroys referent and counter whoever shares them, and makes both pointers null.
    void Delete() {
        DeleteReferent();
        m_referent = nullptr;
        mem_FreeTiny(m_counter, sizeof(cow_Counter));
        m_counter = nullptr;
    }

    void DeleteReferent() { cow_Destroy(m_referent); }  // leaves the pointer as it was

private:
    friend struct kzm_Layout;
    template <class Node>
    friend class cow_BtreeCell;

    static cow_Counter* NewCounter(T* owned) {
        try {
            return ::new (mem_OperatorNewTinyThrow(sizeof(cow_Counter))) cow_Counter;
        } catch (...) {
            cow_Destroy(owned);
            throw;
        }
    }

    cow_Counter* m_counter;
    T* m_referent;
};
