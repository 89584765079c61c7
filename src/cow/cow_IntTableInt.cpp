#include <cow/cow_IntTableInt.h>
#include <cow/cow_String.h>

#include <cstdlib>

namespace {

cow_IntTableInt::Table* NewTable() {
    void* const memory = mem_OperatorNewThrow(sizeof(cow_IntTableInt::Table));
    try {
        return ::new (memory) cow_IntTableInt::Table;
    } catch (...) {
        mem_Free(memory);
        throw;
    }
}

}  // namespace

cow_IntTableInt::cow_IntTableInt() : m_table(NewTable()) {}

bool cow_IntTableInt::operator==(const cow_IntTableInt& other) const {
    return &Read() == &other.Read() || Read() == other.Read();
}

void cow_IntTableInt::RaiseAbsentKey() { std::abort(); }

#define COW_DEFINE_INT_TABLE(...)           \
    KZM_DEFINE(cow_CountedHld<__VA_ARGS__>) \
    KZM_DEFINE(cow_COW<__VA_ARGS__, cow_Direct<__VA_ARGS__>>)
COW_INT_TABLE_REFERENTS(COW_DEFINE_INT_TABLE)
