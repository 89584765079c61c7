#pragma once
#include <alloc/KZMBasMemSmallBlockAllocator.h>
#include <cow/cow_String.h>
#include <omi/omi_IntTableIterator.impl.h>
#include <runtime/KZMBasSrmAllocator.h>

// What is compiled of both families of tables for a value and an allocation policy.
#define OMI_DEFINE_TABLES(V, A)             \
    KZM_DEFINE(omi_UintTableBlock<V, A>)    \
    KZM_DEFINE(omi_UintTable<V, A>)         \
    KZM_DEFINE(omi_UintTableIterator<V, A>) \
    KZM_DEFINE(omi_IntTable<V, A>)          \
    KZM_DEFINE(omi_IntTableIterator<V, A>)
