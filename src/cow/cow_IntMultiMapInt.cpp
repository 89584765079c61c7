#include <cow/cow_IntMultiMapInt.h>

namespace {

cow_IntMultiMapInt::Map* NewMap() {
    void* const memory = mem_OperatorNewThrow(sizeof(cow_IntMultiMapInt::Map));
    try {
        return ::new (memory) cow_IntMultiMapInt::Map;
    } catch (...) {
        mem_Free(memory);
        throw;
    }
}

}  // namespace

cow_IntMultiMapInt::cow_IntMultiMapInt() : m_map(NewMap()) {}

bool cow_IntMultiMapInt::operator==(const cow_IntMultiMapInt& other) const {
    return &Read() == &other.Read() || Read() == other.Read();
}

#define COW_DEFINE_INT_MULTI_MAP(...)       \
    KZM_DEFINE(cow_CountedHld<__VA_ARGS__>) \
    KZM_DEFINE(cow_COW<__VA_ARGS__, cow_Direct<__VA_ARGS__>>)
COW_INT_MULTI_MAP_REFERENTS(COW_DEFINE_INT_MULTI_MAP)
