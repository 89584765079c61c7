#include <omi/HashTable.impl.h>

namespace {

class BadAllocation : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

}  // namespace

void HashTableRaiseBadAllocation() { throw BadAllocation(); }

#define HASH_DEFINE_TABLE(K, V)      \
    KZM_DEFINE(HashTableEntry<K, V>) \
    KZM_DEFINE(HashTable<K, V>)      \
    KZM_DEFINE(HashIterator<K, V>)
HASH_TABLES(HASH_DEFINE_TABLE)
