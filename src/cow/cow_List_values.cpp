#include "cow_List_define.h"

COW_LIST_VALUES(COW_DEFINE_LIST)
