#include <cow/cow_Btree.impl.h>
#include <cow/cow_BtreeIterator.h>
#include <cow/cow_BtreeUtils.impl.h>

#define COW_DEFINE(...)                                                                     \
    KZM_DEFINE(cow_CountedHld<cow_BtreeNode<__VA_ARGS__>>)                                  \
    KZM_DEFINE(cow_COW<cow_BtreeNode<__VA_ARGS__>, cow_Direct<cow_BtreeNode<__VA_ARGS__>>>) \
    KZM_DEFINE(cow_BtreeNode<__VA_ARGS__>)                                                  \
    KZM_DEFINE(cow_Btree<__VA_ARGS__>)                                                      \
    KZM_DEFINE(cow_BtreeIterator<__VA_ARGS__>)                                              \
    KZM_DEFINE(cow_BtreeUtils<__VA_ARGS__>)
COW_BTREES_1(COW_DEFINE)
