// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <omi/omi_BlkBitVectTrav.h>
#include <omi/omi_IntTable.h>
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
    static_assert(offsetof(Trav, m_bitsPerBlock) == 2 * sizeof(void*) + 16);
    static_assert(offsetof(Trav, m_slot) < offsetof(Trav, m_word));
    static_assert(offsetof(Trav, m_word) < offsetof(Trav, m_firstWord));
    static_assert(offsetof(Trav, m_endWord) < offsetof(Trav, m_mask));
    static_assert(offsetof(Trav, m_mask) < offsetof(Trav, m_index));

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
};
