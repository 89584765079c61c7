#pragma once
#include <alloc/mem_alloc.h>
#include <cow/cow_CountedHld.h>
#include <kzm_export.h>

#include <new>

// Bookkeeping of the null values that cow_Btree hands out. They are counted values, so each thread
// has its own. They live until the library stops, those of ended threads too: a reference to one
// may have been handed on; when the process ends by itself they stay. A copy of one shares with it
// and so belongs to its thread, as copies do. A module with instances of its own, for types that
// the library holds none for, must stay loaded as long.
struct cow_NullValueLink {
    cow_NullValueLink* m_next;
    void (*m_destroy)(cow_NullValueLink*);
};
KZM_API void cow_KeepNullValue(cow_NullValueLink* link);  // takes ownership; any thread
KZM_API unsigned int cow_NullValueGeneration();           // changes when all are released

// Destroys the null values of all threads. Called when the library stops, with one thread running;
// later ones are made anew.
KZM_API void cow_ReleaseNullValues();

template <class V>
class cow_NullValue : private cow_NullValueLink {
public:
    // V(), never written.
    static const V& Constant() { return OfThread().m_constant; }

    // V() again at each call, whatever was written to it before.
    static V& Scratch() {
        V& scratch = OfThread().m_scratch;
        scratch = V();
        return scratch;
    }

private:
    cow_NullValue() : cow_NullValueLink{nullptr, Destroy}, m_constant(), m_scratch() {}
    static void Destroy(cow_NullValueLink* link) { cow_Destroy(static_cast<cow_NullValue*>(link)); }
    static cow_NullValue& OfThread();
    template <class T>
    friend void cow_Destroy(T* object);

    const V m_constant;
    V m_scratch;
};

template <class V>
cow_NullValue<V>& cow_NullValue<V>::OfThread() {
    thread_local cow_NullValue* t_own = nullptr;
    thread_local unsigned int t_generation = 0;
    if (!t_own || t_generation != cow_NullValueGeneration()) {
        void* const block = mem_OperatorNewThrow(sizeof(cow_NullValue));
        try {
            t_own = ::new (block) cow_NullValue;
        } catch (...) {
            t_own = nullptr;
            mem_Free(block);
            throw;
        }
        t_generation = cow_NullValueGeneration();
        cow_KeepNullValue(t_own);
    }
    return *t_own;
}
