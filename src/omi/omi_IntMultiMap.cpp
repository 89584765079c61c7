#include <omi/omi_IntMultiMap.impl.h>

#define OMI_DEFINE_INT_MULTI_MAP(V, A) \
    KZM_DEFINE(omi_IntMultiMap<V, A>)  \
    KZM_DEFINE(omi_IntMultiMapIterator<V, A>)
OMI_INT_MULTI_MAPS(OMI_DEFINE_INT_MULTI_MAP)
