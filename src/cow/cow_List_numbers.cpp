#include "cow_List_define.h"

COW_LIST_NUMBERS(COW_DEFINE_LIST)
