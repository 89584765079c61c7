#pragma once
#include <kzm_export.h>

// The value types and allocator policies for which the library holds the integer-keyed tables,
// their blocks and their iterators: X(V, A) each. Clients with others include the .impl.h headers.

class KZMBasMemSmallBlockAllocator;
class KZMBasOmiDefaultAllocator;
class cow_String;
template <int N>
class KZMBasSrmAllocator;

#define OMI_TEN_POOLS(X, V, tens)     \
    X(V, KZMBasSrmAllocator<tens##0>) \
    X(V, KZMBasSrmAllocator<tens##1>) \
    X(V, KZMBasSrmAllocator<tens##2>) \
    X(V, KZMBasSrmAllocator<tens##3>) \
    X(V, KZMBasSrmAllocator<tens##4>) \
    X(V, KZMBasSrmAllocator<tens##5>) \
    X(V, KZMBasSrmAllocator<tens##6>) \
    X(V, KZMBasSrmAllocator<tens##7>) \
    X(V, KZMBasSrmAllocator<tens##8>) \
    X(V, KZMBasSrmAllocator<tens##9>)

#define OMI_POOLS_0_TO_29(X, V) OMI_TEN_POOLS(X, V, ) OMI_TEN_POOLS(X, V, 1) OMI_TEN_POOLS(X, V, 2)
#define OMI_POOLS_30_TO_61(X, V) \
    OMI_TEN_POOLS(X, V, 3)       \
    OMI_TEN_POOLS(X, V, 4)       \
    OMI_TEN_POOLS(X, V, 5)       \
    X(V, KZMBasSrmAllocator<60>) \
    X(V, KZMBasSrmAllocator<61>)

// In groups, which are compiled side by side. The pools' ones hold the same code for each number.
#define OMI_TABLE_INSTANCES_1(X)               \
    X(int, KZMBasOmiDefaultAllocator)          \
    X(int, KZMBasMemSmallBlockAllocator)       \
    X(double, KZMBasOmiDefaultAllocator)       \
    X(unsigned int, KZMBasOmiDefaultAllocator) \
    X(void*, KZMBasOmiDefaultAllocator)        \
    X(cow_String, KZMBasOmiDefaultAllocator)
#define OMI_TABLE_INSTANCES_2(X) OMI_POOLS_0_TO_29(X, int)
#define OMI_TABLE_INSTANCES_3(X) OMI_POOLS_30_TO_61(X, int) X(int, KZMBasSrmAllocator<62>)
#define OMI_TABLE_INSTANCES_4(X) OMI_POOLS_0_TO_29(X, double)
#define OMI_TABLE_INSTANCES_5(X) OMI_POOLS_30_TO_61(X, double)
#define OMI_TABLE_INSTANCES(X) \
    OMI_TABLE_INSTANCES_1(X)   \
    OMI_TABLE_INSTANCES_2(X)   \
    OMI_TABLE_INSTANCES_3(X)   \
    OMI_TABLE_INSTANCES_4(X)   \
    OMI_TABLE_INSTANCES_5(X)
