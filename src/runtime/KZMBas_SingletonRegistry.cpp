#include <omi/omi_UintTable.impl.h>
#include <omi/omi_UintTableIterator.impl.h>
#include <platform/platform.h>
#include <runtime/KZMBas_SingletonRegistry.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <new>
#include <utility>

template class omi_UintTable<void (*)(), KZMBasOmiDefaultAllocator>;
KZM_DEFINE_SINGLETON(KZMBas_SingletonRegistry)

namespace {

using Table = omi_UintTable<void (*)(), KZMBasOmiDefaultAllocator>;
using TableIterator = omi_UintTableIterator<void (*)(), KZMBasOmiDefaultAllocator>;

// Defined for the least int too.
unsigned KeyOf(int id) {
    const unsigned key = static_cast<unsigned>(id);
    return id < 0 ? 0u - key : key;
}

Table* NewTable() {
    void* const block = mem_OperatorNewThrow(sizeof(Table));
    try {
        return ::new (block) Table;
    } catch (...) {
        mem_Free(block);
        throw;
    }
}

void DeleteTable(Table* table) {
    table->~Table();
    mem_Free(table);
}

// Stands in for a finalizer while it runs, so that it is not called again from within.
void Running() {}

int* NewIds(int count) {
    try {
        return static_cast<int*>(mem_Malloc(static_cast<unsigned>(count) * sizeof(int)));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// The format's one directive, a percent sign and a letter, stands for the ID. Takes no memory.
void Print(const char* format, int id) {
    const char* const directive = std::strchr(format, '%');
    std::fprintf(stdout, "%.*s%d%s", static_cast<int>(directive - format), format, id,
                 directive + 2);
    std::fflush(stdout);
}

}  // namespace

KZMBas_SingletonRegistry::KZMBas_SingletonRegistry() : m_negative(NewTable()) {
    try {
        m_nonNegative = NewTable();
    } catch (...) {
        DeleteTable(m_negative);
        throw;
    }
}

KZMBas_SingletonRegistry::~KZMBas_SingletonRegistry() {
    Destroy();
    DeleteTable(m_negative);
    DeleteTable(m_nonNegative);
}

void KZMBas_SingletonRegistry::Tag(const int& id, void (*finalizer)()) {
    TableOf(id).Insert(KeyOf(id), finalizer);
}

bool KZMBas_SingletonRegistry::Call(int id) const {
    Finalizer* const cell = TableOf(id).FindCell(KeyOf(id));
    if (!cell) return false;
    const Finalizer finalizer = std::exchange(*cell, &Running);
    if (finalizer) finalizer();
    return true;
}

int KZMBas_SingletonRegistry::Destroy(const int& id) {
    const int own = id;  // the finalizer may end the life of the argument
    if (!Call(own)) return 0;
    TableOf(own).Remove(KeyOf(own));
    return 1;
}

void KZMBas_SingletonRegistry::Destroy(const SingletonDestructPhase& phase) {
    const auto run = [this](std::initializer_list<int> ids) {
        for (const int id : ids) Destroy(id);
    };
    switch (phase) {
        case SingletonDestructPhaseFirst:
            if (m_condition.condition2) run({1, 10});
            if (!m_condition.condition3) run({20, 10});
            if (!m_condition.condition1) run({5});
            run({2, 3, 4, 9, 11});
            if (m_condition.condition1) run({14, 24});
            run({18, 21, 28, 29});
            break;
        case SingletonDestructPhaseSecond:
            run({6, 7, 11, 23, 8, 25});
            if (m_condition.condition2) run({26, 12, 16, 22, 17});
            run({13, 15});
            if (m_condition.condition2) run({18, 19});
            if (m_condition.condition3) run({18});
            run({28, 29, 27});
            break;
    }
}

// The IDs that are tagged now: what a finalizer tags meanwhile is not called. Without memory for
// the list the tables are searched for the next ID each time, and such an ID may be called after
// all.
void KZMBas_SingletonRegistry::Destroy() {
    const bool print = platform::Environment("KZM_PRINT_FINALIZED_LEFTOVER_SINGLETON") != nullptr;
    int* const ids = NewIds(m_negative->Size() + m_nonNegative->Size());
    if (!ids) {
        int id;
        for (bool more = NextId(INT64_MIN, id); more; more = NextId(id, id)) Leftover(id, print);
        return;
    }
    int listed = 0;
    TableIterator negative(*m_negative);
    for (negative.Last(); !negative.IsDone(); negative.Previous())
        ids[listed++] = static_cast<int>(0u - negative.CurrentKey());
    TableIterator nonNegative(*m_nonNegative);
    for (nonNegative.First(); !nonNegative.IsDone(); nonNegative.Next())
        ids[listed++] = static_cast<int>(nonNegative.CurrentKey());
    for (int i = 0; i < listed; ++i) Leftover(ids[i], print);
    mem_Free(ids);
}

bool KZMBas_SingletonRegistry::NextId(std::int64_t after, int& id) const {
    TableIterator negative(*m_negative);
    for (negative.Last(); !negative.IsDone(); negative.Previous()) {
        id = static_cast<int>(0u - negative.CurrentKey());
        if (id > after) return true;
    }
    TableIterator nonNegative(*m_nonNegative);
    for (nonNegative.First(); !nonNegative.IsDone(); nonNegative.Next()) {
        id = static_cast<int>(nonNegative.CurrentKey());
        if (id > after) return true;
    }
    return false;
}

void KZMBas_SingletonRegistry::Leftover(int id, bool print) const {
    Finalizer* const cell = TableOf(id).FindCell(KeyOf(id));
    if (!cell) return;
    if (id >= 1) {
        const Finalizer finalizer = *cell;
        Call(id);
        Finalizer* const left = TableOf(id).FindCell(KeyOf(id));
        if (left && *left == &Running) *left = finalizer;
        if (print) Print("Singleton with ID %n is now finalized in the end\n", id);
    } else if (print) {
        Print("Singleton with ID %s is registered but not finalized\n", id);
    }
}
