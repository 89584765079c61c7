#pragma once
#include <kzm_export.h>

// Natural order of texts: runs of digits compare by their value, however long, everything else by
// unsigned bytes ("x9" before "x10"). Zero for identical texts only: equal values such as "x1" and
// "x01" are told apart by their bytes. -1, 0 or 1. Null reads as the empty text.
KZM_API int strnatcmp(const char* a, const char* b);

// Process-wide switch, off (0) at load: whether trees order their text keys naturally. Flip it
// only while no tree with text keys exists; existing ones would no longer find their keys.
KZM_API int atr_getNaturalOrder();
KZM_API void atr_setNaturalOrder(int on);
