#pragma once
#include <kzm_export.h>

// What the host platform of the product is asked for: the end of the process after a broken
// invariant. The default handler writes message, texts, source and line to standard error and
// aborts. Null texts read as empty.
using KZMBasFatalErrorHandler = void (*)(const char* message, const char* text1, const char* text2,
                                         const char* text3, const char* source, int line);

// Hands the report to the handler in force. A handler must not return; one that does is followed
// by abort(). A test's handler may throw.
[[noreturn]] KZM_API void KZMBasFatalError(const char* message, const char* text1,
                                           const char* text2, const char* text3, const char* source,
                                           int line);

// Installs a handler for all threads and returns the one before; null stands for the default.
KZM_API KZMBasFatalErrorHandler KZMBasSetFatalErrorHandler(KZMBasFatalErrorHandler handler);
