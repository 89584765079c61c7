#pragma once
#include <cstdint>
#include <string>

// Everything the library asks of the operating system. platform_win.cpp and platform_posix.cpp each
// define all of it.
namespace platform {

// Null if the variable is not set; the text lasts until the environment changes.
const char* Environment(const char* name);
// A null value removes the name. False if the system refuses.
bool SetEnvironment(const char* name, const char* value);

// Of the calling thread: invalid operation, division by zero and overflow stop the process, or are
// masked. Clears what is pending first. False if the processor cannot trap.
bool SetFloatingPointTraps(bool on);

// The system's number of the calling thread's last failure; on posix errno.
std::int32_t LastError();
void SetLastError(std::int32_t code);

// The C library's message for an errno value.
std::string CLibraryErrorText(int code);

// Processor time of all threads of the process, in seconds.
double ProcessorSeconds();

}  // namespace platform
