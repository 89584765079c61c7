#pragma once
#include <kzm_export.h>

// Texts between Fortran and C. A Fortran text is an address and a length: padded with blanks at its
// end, without a terminator. Only the blank (32) is padding; leading blanks stay. Texts for C are
// trimmed first and cut afterwards, and always terminated.
//
// A null address and a length of 0 or less are the empty text; a null output is left alone. Nothing
// here throws. For Fortran callers the module in omi/omi_fortran.f90 declares these functions.
#ifdef __cplusplus
extern "C" {
#endif

// At most 79 characters come out, however large the buffer: `out` must hold 80 bytes, or length + 1
// if that is less.
KZM_API void omi_fortranStringConvert(char* out, const char* text, int length);

// At most size - 1 characters. With a size of 0 or less nothing is written.
KZM_API void omi_fortranFileNameConvert(char* out, int size, const char* text, int length);

// The way back: fills `out` with `length` characters, those of the C text and then blanks. A longer
// text is cut; null gives blanks only.
KZM_API void omi_fortranStringEnblank(char* out, int length, const char* text);

// n texts of equal length that lie end to end (an array of character(length)), each converted into
// a block of its own as by the functions above. Where not even the terminator fits, a text of the
// second form is "". Null if memory is exhausted, and then the blocks made so far are lost. The
// caller releases the list, with the n that it was made with; a null list may be released too.
KZM_API char** omi_fortranStringListConvert(int n, const char* texts, int length);
KZM_API char** omi_fortranStringVarListConvert(int n, int size, const char* texts, int length);
KZM_API void omi_fortranStringListFree(int n, char** list);

#ifdef __cplusplus
}
#endif
