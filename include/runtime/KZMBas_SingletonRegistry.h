#pragma once
#include <runtime/omi_Singleton.h>

#include <cstdint>

class KZMBasOmiDefaultAllocator;
template <class V, class A>
class omi_UintTable;

// The two stages of a process's shut-down. Other values name no stage.
enum SingletonDestructPhase : int {
    SingletonDestructPhaseFirst = 0,
    SingletonDestructPhaseSecond = 1,
};

// Set by client code before shut-down; they choose which IDs a phase finalizes.
struct SingletonDestructCondition {
    // What they stand for is agreed among the clients.
    bool condition1 = false;
    bool condition2 = false;
    bool condition3 = false;
};

// Finalizers that client libraries leave behind under an agreed ID, so that their singletons end in
// one order whichever module loaded first. Clients call Destroy for both phases while they shut
// down; what is left ends with the registry.
//
// A finalizer may call Tag and Destroy, which do not run it again. It must not throw, and must not
// touch a singleton of this library: one that is finalized already would come to life again and
// stay. A client that is unloaded runs its finalizers first, since only their addresses are kept
// here.
class KZM_API KZMBas_SingletonRegistry : public omi_SingletonBase<KZMBas_SingletonRegistry> {
public:
    // Without finalizers, all conditions false.
    KZMBas_SingletonRegistry();
    virtual ~KZMBas_SingletonRegistry();  // Destroy()

    // Replaces a finalizer tagged with the same ID before. Null tags the ID with nothing to call.
    void Tag(const int& id, void (*finalizer)());

    // Calls the finalizer and removes it; 1, or 0 if there is none. What the finalizer tags under
    // its own ID is removed with it.
    int Destroy(const int& id);

    // The same for each tagged ID of a phase, in this order (ID 10 or 18 in two places ends at the
    // first). Other phases do nothing.
    //
    //   first:   1 10 if condition 2 · 20 10 unless condition 3 · 5 unless condition 1 · 2 3 4 9 11
    //            · 14 24 if condition 1 · 18 21 28 29
    //   second:  6 7 11 23 8 25 · 26 12 16 22 17 if condition 2 · 13 15 · 18 19 if condition 2
    //            · 18 if condition 3 · 28 29 27
    void Destroy(const SingletonDestructPhase& phase);

    // Called by the destructor: the finalizers of all IDs above 0 that are tagged now, ascending.
    // Removes nothing, so a caller would see them run again at the end. IDs of 0 and below are
    // never called. With KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON set, each leaves a line on standard
    // output.
    void Destroy();

    // For writing, before the first phase.
    SingletonDestructCondition& Condition() { return m_condition; }

private:
    friend struct kzm_Layout;
    using Finalizer = void (*)();
    using Table = omi_UintTable<Finalizer, KZMBasOmiDefaultAllocator>;

    bool Call(int id) const;
    bool NextId(std::int64_t after, int& id) const;
    void Leftover(int id, bool print) const;
    Table& TableOf(int id) const { return id < 0 ? *m_negative : *m_nonNegative; }

    Table* m_negative;     // owned; keys are the absolute values of the IDs
    Table* m_nonNegative;  // owned
    SingletonDestructCondition m_condition;
};
KZM_DECLARE_SINGLETON(KZMBas_SingletonRegistry)
