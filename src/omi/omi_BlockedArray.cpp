#include <omi/omi_BlockedArray.impl.h>
// The string cells' own header; the list of instances only names the class.
#include <cow/cow_String.h>

OMI_BLOCKED_ARRAYS(KZM_DEFINE)
