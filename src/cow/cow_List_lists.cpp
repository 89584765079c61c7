#include "cow_List_define.h"

COW_LIST_LISTS(COW_DEFINE_LIST)
