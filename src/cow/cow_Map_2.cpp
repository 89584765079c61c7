#include <cow/cow_Map.impl.h>
#include <cow/cow_MapIterator.impl.h>
#include <cow/cow_MapUtils.impl.h>

#define COW_DEFINE(...)                                                                 \
    KZM_DEFINE(cow_CountedHld<cow_MapNode<__VA_ARGS__>>)                                \
    KZM_DEFINE(cow_COW<cow_MapNode<__VA_ARGS__>, cow_Direct<cow_MapNode<__VA_ARGS__>>>) \
    KZM_DEFINE(cow_MapNode<__VA_ARGS__>)                                                \
    KZM_DEFINE(cow_Map<__VA_ARGS__>)                                                    \
    KZM_DEFINE(cow_ConstMapIterator<__VA_ARGS__>)                                       \
    KZM_DEFINE(cow_ConstMapSortedIt<__VA_ARGS__>)                                       \
    KZM_DEFINE(cow_MapUtils<__VA_ARGS__>)
COW_MAPS_2(COW_DEFINE)
