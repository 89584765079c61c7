#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Everything the library asks of the operating system. platform_win.cpp and platform_posix.cpp each
// define all of it. Texts are in the encoding of the process's narrow texts, which the C library
// and main's arguments have: Windows has the current code page, posix passes bytes on as they are.
namespace platform {

// Null if the variable is not set; the text lasts until the environment changes.
const char* Environment(const char* name);
// A null value removes the name. False if the system refuses.
bool SetEnvironment(const char* name, const char* value);
// All of it as NAME=value, in the system's order.
std::vector<std::string> EnvironmentEntries();

std::int32_t ProcessId();
std::uint32_t ThreadId();  // of the calling thread, never 0

// The path of the running program in host form; Windows has it in UTF-8, where a backslash is never
// half of a character, and at most 1022 characters of it. Empty if it is unknown.
std::string ModuleFileName();

// A text from ModuleFileName in the encoding of the others, cut between characters to fit `size`
// bytes.
std::string Multibyte(const std::string& text, std::size_t size);

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

// Paths are in host form, with either separator. Where the system has no drives, its file system is
// the drive Z: and there is nothing else.

// Without a separator at the end, but for a root. Never empty: a directory that is gone or lies
// outside the process's root has a name that cannot exist.
std::string WorkingDirectory();
// Of one drive, 1 for A:. Empty if the drive has none, or one longer than 259 characters.
std::string WorkingDirectory(int drive);

// As the system's own functions, and other libraries, take it. Empty if no such file can be.
std::string NativePath(const char* path);

enum class PathQuestion : int { kExists, kIsDirectory, kIsReadable, kIsWriteable, kIsExecutable };
bool AskPath(PathQuestion question, const char* path);

// An open file. The system's failures give -1 or false, and LastError tells why.
class File {
public:
    virtual ~File() = default;  // closes
    virtual std::int64_t Seek(std::int64_t position) = 0;
    // The number of bytes, which may be fewer than asked for; reading gives 0 at the end. A call
    // that a signal interrupts is made again.
    virtual std::ptrdiff_t Read(void* buffer, std::size_t size) = 0;
    virtual std::ptrdiff_t Write(const void* buffer, std::size_t size) = 0;
    virtual bool Close() = 0;  // all of these fail afterwards
};
enum class FileMode {
    kRead,    // an existing file, for reading
    kUpdate,  // for both, made if it is missing
    kReplace  // for both, emptied or made
};
// Null on failure, with the system's number for it in `error`. A directory is no file.
std::unique_ptr<File> OpenFile(const char* path, FileMode mode, std::int32_t& error);

}  // namespace platform
