#pragma once
#include <kzm_export.h>

// Floating-point exceptions: whether an invalid operation, a division by zero or an overflow stops
// the process (a trap) or yields NaN or infinity (masked).
//
// Traps are wanted by setting GLOBAL_ENABLE_FPE to anything but "0". KVL_IGNORE_FPE=1 at the start
// of the library overrules it.

// Whether a wish for traps is to be ignored. Takes effect with the next omn_globalFPESetting.
KZM_API void omn_ignoreFPESetting(bool ignore);

// Applies the setting to the calling thread; called at the start of the library. On Linux new
// threads inherit it, on Windows they begin with everything masked and call this themselves.
KZM_API void omn_globalFPESetting();

// What the settings of the process came to.
struct omn_FPEState {
    bool ignored;      // as last told to omn_ignoreFPESetting
    bool trapping;     // what omn_globalFPESetting last chose
    unsigned applied;  // calls of omn_globalFPESetting since the library was loaded
};
// The state now; for reports and tests.
KZM_API omn_FPEState omn_currentFPEState();
