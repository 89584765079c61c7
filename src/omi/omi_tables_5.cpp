#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <cow/cow_String.h>
#include <omi/omi_IntTableIterator.impl.h>
#include <runtime/KZMBasSrmAllocator.h>

#define OMI_DEFINE_TABLES(V, A)             \
    KZM_DEFINE(omi_UintTableBlock<V, A>)    \
    KZM_DEFINE(omi_UintTable<V, A>)         \
    KZM_DEFINE(omi_UintTableIterator<V, A>) \
    KZM_DEFINE(omi_IntTable<V, A>)          \
    KZM_DEFINE(omi_IntTableIterator<V, A>)
OMI_TABLE_INSTANCES_5(OMI_DEFINE_TABLES)
