#pragma once
#include <alloc/mem_alloc.h>
#include <alloc/omi_SingletonRegistry.h>
#include <coreutils/KZMBasAtiGlobalLock.h>
#include <coreutils/KZMBasAtiMutex.h>
#include <coreutils/KZMBasAtiThreadingModel.h>
#include <host/KZMBasFatalError.h>
#include <kzm_export.h>

#include <new>
#include <typeinfo>

// Base of a class that exists once per process and may be reached first from several threads at
// once; otherwise as omi_Singleton, which is cheaper where one thread comes first:
//
//     class Cache : public KZMBasAtiGlobalSingleton<Cache> { ... };
//     Cache::Instance().Find(pattern);
//
// Creation and finalization hold the process-wide lock, which is recursive, so that T's constructor
// and destructor may reach other singletons, though T() not its own Instance and ~T not Finalize.
// Finalize while others use the object is not guarded.
//
// A singleton that several modules share needs KZM_DECLARE_GLOBAL_SINGLETON in its header and
// KZM_DEFINE(KZMBasAtiGlobalSingleton<T>) in one source of the module that owns it.
template <class T>
class KZM_API KZMBasAtiGlobalSingleton {
public:
    // Creates the object on the first call. If T's constructor throws, there is no instance
    // afterwards and the next call tries again, at the cost of one mutex that is never given back.
    // The fatal-error routine is called if no mutex can be had or the object vanishes meanwhile.
    static T& Instance();

    // Destroys the object and the mutex of its class. Harmless if there is none.
    static void Finalize();

    // The mutex of the class, for the users of the object; creation does not hold it. Only while
    // the instance exists.
    void Lock() volatile;
    void Unlock() volatile;

    KZMBasAtiGlobalSingleton(const KZMBasAtiGlobalSingleton&) = delete;
    KZMBasAtiGlobalSingleton& operator=(const KZMBasAtiGlobalSingleton&) = delete;

protected:
    KZMBasAtiGlobalSingleton();
    ~KZMBasAtiGlobalSingleton() = default;

private:
    static void CreateLocks();
    static T* Create();
    static void Withdraw();

    // Volatile alone orders nothing between threads: every access is an atomic one.
    template <class P>
    static P* Load(P* volatile& pointer) {
        return __atomic_load_n(&pointer, __ATOMIC_ACQUIRE);
    }
    template <class P>
    static void Store(P* volatile& pointer, P* value) {
        __atomic_store_n(&pointer, value, __ATOMIC_RELEASE);
    }
    [[noreturn]] static void Fail(const char* message, int line) {
        KZMBasFatalError(message, "", "", "", "KZMBasAtiGlobalSingleton", line);
    }

    static T* volatile m_instance;
    static KZMBasAtiMutex* volatile m_lock;
};

template <class T>
T* volatile KZMBasAtiGlobalSingleton<T>::m_instance = nullptr;

template <class T>
KZMBasAtiMutex* volatile KZMBasAtiGlobalSingleton<T>::m_lock = nullptr;

// The sanitizer would look up the dynamic type of a T that is not one yet.
template <class T>
__attribute__((no_sanitize("vptr"))) KZMBasAtiGlobalSingleton<T>::KZMBasAtiGlobalSingleton() {
    if (auto* const registry = omi_SingletonRegistry::Instance())
        registry->Add(typeid(T).name(), static_cast<T*>(this));
}

template <class T>
T& KZMBasAtiGlobalSingleton<T>::Instance() {
    if (!Load(m_instance)) {
        const KZMBasAtiGlobalLock lock;
        CreateLocks();
        if (T* const made = Load(m_instance)) return *made;
        Store(m_instance, Create());
    }
    T* const instance = Load(m_instance);
    if (!instance)
        Fail("AssertionFailed:static_cast<volatile Class* volatile>(m_instance) != 0", 87);
    return *instance;
}

// A mutex is asked for on every pass and one that is not needed is left alone: the product's
// threading model counts the requests.
template <class T>
void KZMBasAtiGlobalSingleton<T>::CreateLocks() {
    KZMBasAtiMutex* const mutex = KZMBasAtiThreadingModel::newMutex();
    if (!Load(m_lock)) Store(m_lock, mutex);
    if (!Load(m_lock)) Fail("AssertionFailed:m_lock != 0", 69);
}

template <class T>
T* KZMBasAtiGlobalSingleton<T>::Create() {
    static_assert(alignof(T) <= 2 * sizeof(void*), "the heap aligns to two pointers");
    void* const inst2 = mem_OperatorNewThrow(sizeof(T));
    if (!inst2) Fail("AssertionFailed:inst2 != 0", 84);
    try {
        return ::new (inst2) T;
    } catch (...) {
        Withdraw();
        mem_Free(inst2);
        throw;
    }
}

template <class T>
void KZMBasAtiGlobalSingleton<T>::Withdraw() {
    if (auto* const registry = omi_SingletonRegistry::Instance())
        registry->Remove(typeid(T).name());
}

template <class T>
void KZMBasAtiGlobalSingleton<T>::Finalize() {
    const KZMBasAtiGlobalLock lock;
    if (T* const instance = Load(m_instance)) {
        Withdraw();
        instance->~T();
        mem_Free(instance);
        Store(m_instance, static_cast<T*>(nullptr));
    }
    if (KZMBasAtiMutex* const mutex = Load(m_lock)) {
        delete mutex;
        Store(m_lock, static_cast<KZMBasAtiMutex*>(nullptr));
    }
}

template <class T>
void KZMBasAtiGlobalSingleton<T>::Lock() volatile {
    Load(m_lock)->Lock();
}

template <class T>
void KZMBasAtiGlobalSingleton<T>::Unlock() volatile {
    Load(m_lock)->Unlock();
}

#define KZM_DECLARE_GLOBAL_SINGLETON(...) \
    extern template class KZMBasAtiGlobalSingleton<__VA_ARGS__>;
