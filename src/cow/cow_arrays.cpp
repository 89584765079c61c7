#include <cow/cow_2DArray.h>
#include <cow/cow_FixedArray.h>

COW_FIXED_ARRAYS(KZM_DEFINE)
COW_2D_ARRAYS(KZM_DEFINE)
