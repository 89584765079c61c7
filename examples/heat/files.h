#pragma once
#include <coreutils/KZMBasException.h>

#include <string>

#include "heat_error.h"

namespace heat {

// Runs an action on a file. Where the library reports that the system refused it, the file is named
// before the system's text: "cannot write 'beam.vtu': Write Error: No space left on device".
template <class Action>
auto OnFile(const char* attempt, const cow_String& path, const Action& action) {
    try {
        return action();
    } catch (const KZMBasException& error) {
        throw HeatError(
            Text(attempt, " '", path, "': ", error.UserReport(KZMBasStringModeUser).CStr()));
    }
}

// Under native names. They throw the library's KZMBasUtlSystemError, KZMBasUtlReadError,
// KZMBasUtlWriteError or KZMBasUtlShortWrite.
std::string StartOfFile(const cow_String& path, std::size_t most);
void WriteFile(const cow_String& path, const std::string& contents);
void MakeFolder(const cow_String& path);
void RenameFile(const cow_String& from, const cow_String& to);

// A name as the command line has it, in the library's host form: "//tmp/a" is no share and "C:a" on
// no drive, since this system has neither. Only a backslash cannot be part of a name.
cow_String HostForm(const cow_String& nativeName);

// These throw HeatError.
void AppendEnvironment(const cow_String& nativeName);
void FinishOutput();  // unless all of standard output was written, or its reader has gone

}  // namespace heat
