// The instances of cow_List, in three sources of about equal length.
#pragma once
#include <coreutils/atr_String.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_List.impl.h>
#include <cow/cow_ListIter.h>
#include <cow/cow_String.h>

#define COW_DEFINE_LIST(...)               \
    KZM_DEFINE(cow_ListBlock<__VA_ARGS__>) \
    KZM_DEFINE(cow_List<__VA_ARGS__>)      \
    KZM_DEFINE(cow_ListIter<__VA_ARGS__>)
