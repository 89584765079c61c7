#pragma once
#include <kzm_export.h>

// Start and stop of the library, counted: the first start and the matching last stop act, the calls
// between only count. `count` is the caller's own tally; each library and module that really starts
// adds 1 to it, each that really stops subtracts 1. A whole start adds 13, one for each of
//
//     this library · core utilities · generics · allocation · eight modules · the entry module
//
// unless a client has started some of them by themselves before. Nothing here reads the tally.
//
// Loading the library starts it and unloading stops it, so a program needs the pair only if it
// wants to be sure of the order. One thread at a time. A stop too many wraps the counter: it does
// nothing, and the next start is swallowed.
#ifdef __cplusplus

// If memory runs out, what has started so far is stopped again, the tally is as before, and
// std::bad_alloc leaves.
KZM_API void KZMBasShared_initialize(int& count);

// Destroys the library's singletons, in a fixed order; docs/startup.md lists it.
KZM_API void KZMBasShared_finalize(int& count);

extern "C" {
#define KZM_NOEXCEPT noexcept
#else
#define KZM_NOEXCEPT
#endif

// The same for callers in C, with a tally that the library keeps. Exhausted memory ends the
// process.
KZM_API void KZMBasShared_initializeC(void) KZM_NOEXCEPT;
KZM_API void KZMBasShared_finalizeC(void) KZM_NOEXCEPT;

#undef KZM_NOEXCEPT
#ifdef __cplusplus
}
#endif
