#include <direct.h>
#include <float.h>
#include <io.h>
#include <platform/platform.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wchar.h>
#include <windows.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace platform {
namespace {

std::wstring Wide(const std::string& utf8) {
    const int size = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
    return wide;
}

std::string Narrow(std::wstring_view text, UINT encoding) {
    const int size = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(encoding, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(encoding, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

DWORD CountOf(std::size_t size) {
    return static_cast<DWORD>(std::min<std::size_t>(size, 0x40000000));
}

class WindowsFile final : public File {
public:
    ~WindowsFile() override { Close(); }

    bool Open(const char* path, FileMode mode) {
        const DWORD access = mode == FileMode::kRead ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
        const DWORD creation = mode == FileMode::kRead     ? OPEN_EXISTING
                               : mode == FileMode::kUpdate ? OPEN_ALWAYS
                                                           : CREATE_ALWAYS;
        m_handle = CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
        return m_handle != INVALID_HANDLE_VALUE;
    }

    std::int64_t Seek(std::int64_t position) override {
        LARGE_INTEGER target, reached;
        target.QuadPart = position;
        return SetFilePointerEx(m_handle, target, &reached, FILE_BEGIN) ? reached.QuadPart : -1;
    }
    std::ptrdiff_t Read(void* buffer, std::size_t size) override {
        DWORD n = 0;
        return ReadFile(m_handle, buffer, CountOf(size), &n, nullptr)
                   ? static_cast<std::ptrdiff_t>(n)
                   : -1;
    }
    std::ptrdiff_t Write(const void* buffer, std::size_t size) override {
        DWORD n = 0;
        return WriteFile(m_handle, buffer, CountOf(size), &n, nullptr)
                   ? static_cast<std::ptrdiff_t>(n)
                   : -1;
    }
    bool Close() override {
        const HANDLE handle = m_handle;
        m_handle = INVALID_HANDLE_VALUE;
        if (handle != INVALID_HANDLE_VALUE) return CloseHandle(handle) != 0;
        ::SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }

private:
    HANDLE m_handle = INVALID_HANDLE_VALUE;
};

}  // namespace

const char* Environment(const char* name) { return getenv(name); }

bool SetEnvironment(const char* name, const char* value) {
    const std::string setting = std::string(name) + "=" + (value ? value : "");
    return _putenv(setting.c_str()) == 0;
}

std::vector<std::string> EnvironmentEntries() {
    std::vector<std::string> entries;
    struct FreeBlock {
        void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
    };
    const std::unique_ptr<wchar_t, FreeBlock> block(GetEnvironmentStringsW());
    for (const wchar_t* entry = block.get(); entry && *entry; entry += wcslen(entry) + 1)
        entries.push_back(Narrow(entry, CP_ACP));
    return entries;
}

std::int32_t ProcessId() { return static_cast<std::int32_t>(GetCurrentProcessId()); }

std::uint32_t ThreadId() { return GetCurrentThreadId(); }

std::string ModuleFileName() {
    wchar_t path[1024] = L"";
    return GetModuleFileNameW(nullptr, path, 1023) != 0 ? Narrow(path, CP_UTF8) : std::string();
}

std::string Multibyte(const std::string& text, std::size_t size) {
    const std::wstring wide = Wide(text);
    std::string narrow = Narrow(wide, CP_ACP);
    for (std::size_t n = wide.size(); narrow.size() > size;) {
        --n;
        if (n > 0 && IS_LOW_SURROGATE(wide[n])) --n;
        narrow = Narrow(std::wstring_view(wide).substr(0, n), CP_ACP);
    }
    return narrow;
}

bool SetFloatingPointTraps(bool on) {
    constexpr unsigned kTraps = _EM_INVALID | _EM_ZERODIVIDE | _EM_OVERFLOW;
    _clearfp();
    _controlfp(on ? _MCW_EM & ~kTraps : _MCW_EM, _MCW_EM);
    return true;
}

std::int32_t LastError() { return static_cast<std::int32_t>(::GetLastError()); }

void SetLastError(std::int32_t code) { ::SetLastError(static_cast<DWORD>(code)); }

std::string CLibraryErrorText(int code) {
    char buffer[256] = "";
    strerror_s(buffer, sizeof buffer, code);
    return buffer;
}

double ProcessorSeconds() {
    FILETIME created, exited, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user)) return 0;
    const auto seconds = [](const FILETIME& time) {
        ULARGE_INTEGER ticks;
        ticks.LowPart = time.dwLowDateTime;
        ticks.HighPart = time.dwHighDateTime;
        return static_cast<double>(ticks.QuadPart) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
}

std::string WorkingDirectory() {
    std::wstring directory(MAX_PATH, L'\0');
    DWORD length;
    while ((length = GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data())) >
           directory.size())
        directory.resize(length);
    directory.resize(length);
    return length > 0 ? Narrow(directory, CP_ACP) : "?:\\(unreachable)";
}

// A drive that does not exist is a broken contract to some C runtimes, which end the process.
std::string WorkingDirectory(int drive) {
    char directory[260];
    const bool exists = drive >= 1 && drive <= 26 && (GetLogicalDrives() >> (drive - 1) & 1) != 0;
    return exists && _getdcwd(drive, directory, 260) ? directory : std::string();
}

std::string NativePath(const char* path) { return path; }

bool AskPath(PathQuestion question, const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    const bool isDirectory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    struct _stat64 status;
    switch (question) {
        case PathQuestion::kExists:
            return true;
        case PathQuestion::kIsDirectory:
            return isDirectory;
        case PathQuestion::kIsReadable:
            return _access(path, R_OK) == 0;
        case PathQuestion::kIsWriteable:
            return _access(path, W_OK) == 0;
        case PathQuestion::kIsExecutable:
            return isDirectory || (_stat64(path, &status) == 0 && (status.st_mode & _S_IEXEC) != 0);
    }
    return false;
}

std::unique_ptr<File> OpenFile(const char* path, FileMode mode, std::int32_t& error) {
    auto file = std::make_unique<WindowsFile>();
    if (file->Open(path, mode)) return file;
    error = LastError();
    return nullptr;
}

}  // namespace platform
