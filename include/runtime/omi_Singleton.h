#pragma once
#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <kzm_export.h>

#include <cstdlib>
#include <new>
#include <typeinfo>

template <class T>
class omi_Singleton;

// Base of a class that exists once per process, is created on first use and is destroyed on demand:
//
//     class Monitor : public omi_SingletonBase<Monitor> { ... };
//     omi_Singleton<Monitor>::Instance().Sample();
//     omi_SingletonBase<Monitor>::Finalize();
//
// No lock: for objects first reached from one thread. Where several threads may race for the first
// use, take KZMBasAtiGlobalSingleton. An object that is made while the allocation library is
// started is listed in that library's registry under typeid(T).name() until either ends.
//
// A singleton that several modules share needs KZM_DECLARE_SINGLETON in its header and
// KZM_DEFINE_SINGLETON in one source of the module that owns it; without them every Windows module
// would get an instance of its own.
template <class T>
class KZM_API omi_SingletonBase {
public:
    // Takes the name out of the registry, destroys the object and frees it. Harmless if there is
    // none. While ~T runs, Instance() still yields the dying object, and Finalize must not be
    // called again; afterwards the next Instance() makes a new one.
    static void Finalize();

    omi_SingletonBase(const omi_SingletonBase&) = delete;
    omi_SingletonBase& operator=(const omi_SingletonBase&) = delete;

protected:
    omi_SingletonBase();
    ~omi_SingletonBase() = default;

    static T* Instance();  // null while there is none

private:
    friend class omi_Singleton<T>;
    static void Announce(T* object);
    static void Withdraw();

    static T* s_instance;
};

// Access to the one T. T's default constructor and destructor are reached from here and from
// omi_SingletonBase<T>; they need not be public if T befriends both.
template <class T>
class KZM_API omi_Singleton : public omi_SingletonBase<T> {
public:
    omi_Singleton() = delete;  // only T itself is ever made

    // Creates the object on the first call. If T's constructor throws, everything is as before the
    // call. Ends the process if the new T did not become the instance, which happens when its
    // constructor made another T.
    static T& Instance();
};

// The sanitizer would look up the dynamic type of a T that is not one yet.
template <class T>
__attribute__((no_sanitize("vptr"))) omi_SingletonBase<T>::omi_SingletonBase() {
    s_instance = static_cast<T*>(this);
    Announce(s_instance);
}

template <class T>
T* omi_SingletonBase<T>::s_instance = nullptr;

template <class T>
T* omi_SingletonBase<T>::Instance() {
    return s_instance;
}

template <class T>
void omi_SingletonBase<T>::Announce(T* object) {
    if (auto* const registry = omi_SingletonRegistry::Instance())
        registry->Add(typeid(T).name(), object);
}

template <class T>
void omi_SingletonBase<T>::Withdraw() {
    if (auto* const registry = omi_SingletonRegistry::Instance())
        registry->Remove(typeid(T).name());
}

template <class T>
void omi_SingletonBase<T>::Finalize() {
    Withdraw();
    if (T* const instance = s_instance) {
        instance->~T();
        mem_Free(instance);
    }
    s_instance = nullptr;
}

template <class T>
T& omi_Singleton<T>::Instance() {
    using Base = omi_SingletonBase<T>;
    if (Base::s_instance) return *Base::s_instance;
    static_assert(alignof(T) <= 2 * sizeof(void*), "the heap aligns to two pointers");
    void* const block = mem_OperatorNewThrow(sizeof(T));
    T* created;
    try {
        created = ::new (block) T;
    } catch (...) {
        Base::Withdraw();
        Base::s_instance = nullptr;
        mem_Free(block);
        throw;
    }
    if (created != Base::s_instance) std::abort();
    return *created;
}

#define KZM_DECLARE_SINGLETON(...)                        \
    extern template class omi_SingletonBase<__VA_ARGS__>; \
    extern template class KZM_API omi_Singleton<__VA_ARGS__>;
#define KZM_DEFINE_SINGLETON(...)                  \
    template class omi_SingletonBase<__VA_ARGS__>; \
    template class omi_Singleton<__VA_ARGS__>;
