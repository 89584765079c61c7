// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <omi/HashTable.h>
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_GeneratedSet.h>
#include <omi/omi_IntMultiMap.h>
#include <omi/omi_IntTable.h>
#include <omi/omi_Set.h>
#include <omi/omi_SparseSet.h>
#include <omi/omi_SystemErrorCode.h>
#include <omi/omi_complex.h>

#include <cstddef>

struct kzm_Layout {
    using Array = omi_BlockedArray<int>;
    static_assert(offsetof(Array, m_growthStep) == sizeof(void*));
    static_assert(offsetof(Array, m_slotCount) == sizeof(void*) + 4);
    static_assert(offsetof(Array, m_blockSize) == sizeof(void*) + 8);
    static_assert(offsetof(Array, m_blockShift) == sizeof(void*) + 12);
    static_assert(offsetof(Array, m_blockMask) == sizeof(void*) + 16);
    static_assert(offsetof(Array, m_table) > offsetof(Array, m_blockMask));
    static_assert(sizeof(void*) != 4 || sizeof(Array) == 28);

    static_assert(offsetof(omi_BlkBitVect, m_bitCount) >= sizeof(Array));
    static_assert(offsetof(omi_BlkBitVect, m_stale) == offsetof(omi_BlkBitVect, m_bitCount) + 4);
    static_assert(sizeof(void*) != 4 || sizeof(omi_BlkBitVect) == 36);

    using Trav = omi_BlkBitVectTrav;
    static_assert(offsetof(Trav, m_slotCount) == sizeof(void*));
    static_assert(offsetof(Trav, m_table) == sizeof(void*) + 16);
    static_assert(offsetof(Trav, m_blockSize) == sizeof(void*) + 4);
    static_assert(offsetof(Trav, m_blockShift) == sizeof(void*) + 8);
    static_assert(offsetof(Trav, m_blockMask) == sizeof(void*) + 12);
    static_assert(offsetof(Trav, m_bitsPerBlock) == 2 * sizeof(void*) + 16);
    static_assert(offsetof(Trav, m_slot) == 2 * sizeof(void*) + 20);
    static_assert(offsetof(Trav, m_word) == 2 * sizeof(void*) + 24);
    static_assert(offsetof(Trav, m_firstWord) == 3 * sizeof(void*) + 24);
    static_assert(offsetof(Trav, m_endWord) == 4 * sizeof(void*) + 24);
    static_assert(offsetof(Trav, m_mask) == 5 * sizeof(void*) + 24);
    static_assert(offsetof(Trav, m_index) == 5 * sizeof(void*) + 28);
    static_assert(sizeof(Trav) == 5 * sizeof(void*) + 32);

    using Table = omi_UintTable<int, KZMBasOmiDefaultAllocator>;
    static_assert(offsetof(Table, m_table) == sizeof(void*));
    static_assert(offsetof(Table, m_memberCount) == 2 * sizeof(void*));
    static_assert(offsetof(Table, m_slotCount) == 2 * sizeof(void*) + 4);
    static_assert(offsetof(Table, m_localMask) == 2 * sizeof(void*) + 8);
    static_assert(offsetof(Table, m_keyShift) == 2 * sizeof(void*) + 12);
    static_assert(offsetof(Table, m_innerGrowth) == 2 * sizeof(void*) + 16);
    static_assert(offsetof(Table, m_innerShift) == 2 * sizeof(void*) + 20);
    static_assert(sizeof(Table) == 2 * sizeof(void*) + 24);

    using Block = omi_UintTableBlock<int, KZMBasOmiDefaultAllocator>;
    static_assert(offsetof(Block, m_members) == sizeof(Array));

    using SignedTable = omi_IntTable<int, KZMBasOmiDefaultAllocator>;
    static_assert(offsetof(SignedTable, m_negative) == 0);
    static_assert(offsetof(SignedTable, m_nonNegative) == sizeof(void*));
    static_assert(sizeof(SignedTable) == 2 * sizeof(void*));

    static_assert(offsetof(omi_SystemErrorCode, m_systemCode) == 0);
    static_assert(offsetof(omi_SystemErrorCode, m_cLibraryCode) == 4);
    static_assert(sizeof(omi_SystemErrorCode) == 8);

    static_assert(offsetof(omi_complex, m_real) == 0);
    static_assert(offsetof(omi_complex, m_imaginary) == sizeof(double));
    static_assert(sizeof(omi_complex) == 2 * sizeof(double));

    static_assert(offsetof(omi_Set, m_members) == 0);
    static_assert(offsetof(omi_Set, m_negative) == sizeof(omi_BlkBitVect));

    using Sparse = omi_SparseSet;
    static_assert(offsetof(Sparse, m_negative) == 0);
    static_assert(offsetof(Sparse, m_values) == sizeof(void*));
    static_assert(offsetof(Sparse, m_unique) == sizeof(void*) + sizeof(KZMBasVector<int>));
    static_assert(offsetof(Sparse, m_count) == offsetof(Sparse, m_unique) + 4);
    static_assert(offsetof(Sparse, m_capacity) == offsetof(Sparse, m_count) + 4);

    using Generated = omi_GeneratedSet;
    static_assert(offsetof(Generated, m_starts) < offsetof(Generated, m_ends));
    static_assert(offsetof(Generated, m_ends) < offsetof(Generated, m_steps));
    static_assert(sizeof(Generated) == 3 * sizeof(KZMBasVector<int>));

    using Link = omi_IntMultiMapLink<int>;
    static_assert(offsetof(Link, value) == 0);
    static_assert(sizeof(Link) == 2 * sizeof(void*));
    static_assert(sizeof(void*) != 4 || 256 * sizeof(Link) == 2048);

    using MultiMap = omi_IntMultiMap<int, KZMBasOmiDefaultAllocator>;
    static_assert(offsetof(MultiMap, m_entryCount) == sizeof(void*) + sizeof(SignedTable));
    static_assert(offsetof(MultiMap, m_linkCount) == offsetof(MultiMap, m_entryCount) + 4);
    static_assert(offsetof(MultiMap, m_chunks) == offsetof(MultiMap, m_entryCount) + 8);
    static_assert(offsetof(MultiMap, m_linksUsed) == offsetof(MultiMap, m_chunks) + sizeof(void*));
    static_assert(offsetof(MultiMap, m_currentLink) > offsetof(MultiMap, m_linksUsed));
    static_assert(sizeof(void*) != 4 || sizeof(MultiMap) == 32);

    using Hash = HashTable<unsigned int, void*>;
    static_assert(offsetof(Hash, m_buckets) == 0);
    static_assert(offsetof(Hash, m_bucketCount) == sizeof(void*));
    static_assert(offsetof(Hash::Entry, key) == 0);
    static_assert(offsetof(Hash::Entry, value) == sizeof(void*));
    static_assert(offsetof(Hash::Entry, next) == 2 * sizeof(void*));
    using HashPlace = HashIterator<unsigned int, void*>;
    static_assert(offsetof(HashPlace, m_table) == 0);
    static_assert(offsetof(HashPlace, m_state) == sizeof(void*));
    static_assert(sizeof(iterState) == 8);
};
