#include <fcntl.h>
#include <fenv.h>
#include <platform/letters.h>
#include <platform/platform.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace platform {
namespace {

constexpr int kOnlyDrive = 'Z' - 'A' + 1;
constexpr std::size_t kLongestOfDrive = 259;  // as the system with drives has it

std::string HostForm(std::string_view native) {
    std::string path = std::string("Z:").append(native);
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

class PosixFile final : public File {
public:
    ~PosixFile() override { Close(); }

    bool Open(const char* name, FileMode mode) {
        const int flags = mode == FileMode::kRead     ? O_RDONLY
                          : mode == FileMode::kUpdate ? O_RDWR | O_CREAT
                                                      : O_RDWR | O_CREAT | O_TRUNC;
        m_descriptor = Uninterrupted([&] { return open(name, flags | O_CLOEXEC, 0666); });
        struct stat status;
        if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0) return false;
        if (!S_ISDIR(status.st_mode)) return true;
        errno = EISDIR;
        return false;
    }

    std::int64_t Seek(std::int64_t position) override {
        return lseek(m_descriptor, static_cast<off_t>(position), SEEK_SET);
    }
    std::ptrdiff_t Read(void* buffer, std::size_t size) override {
        return Uninterrupted([&] { return read(m_descriptor, buffer, size); });
    }
    std::ptrdiff_t Write(const void* buffer, std::size_t size) override {
        return Uninterrupted([&] { return write(m_descriptor, buffer, size); });
    }
    // An interrupted close has closed all the same.
    bool Close() override {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return close(descriptor) == 0 || errno == EINTR;
    }

private:
    int m_descriptor = -1;
};

}  // namespace

const char* Environment(const char* name) { return std::getenv(name); }

bool SetEnvironment(const char* name, const char* value) {
    return (value ? setenv(name, value, 1) : unsetenv(name)) == 0;
}

std::vector<std::string> EnvironmentEntries() {
    std::vector<std::string> entries;
    for (char** entry = environ; entry && *entry; ++entry) entries.emplace_back(*entry);
    return entries;
}

std::int32_t ProcessId() { return getpid(); }

std::uint32_t ThreadId() { return static_cast<std::uint32_t>(gettid()); }

std::string ModuleFileName() {
    char link[4096];
    const ssize_t length = readlink("/proc/self/exe", link, sizeof link - 1);
    if (length <= 0) return std::string();
    link[length] = '\0';
    std::string_view path = link;
    // What the system appends once the file has been removed, as by an update while it runs.
    constexpr std::string_view kRemoved = " (deleted)";
    if (path.ends_with(kRemoved) && access(link, F_OK) != 0) path.remove_suffix(kRemoved.size());
    return HostForm(path);
}

std::string Multibyte(const std::string& text, std::size_t size) {
    if (text.size() <= size) return text;
    std::size_t n = size;
    const auto continues = [&text](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
    while (n > 0 && size - n < 3 && continues(n)) --n;
    return text.substr(0, continues(n) ? size : n);  // what is not UTF-8 is cut anywhere
}

bool SetFloatingPointTraps(bool on) {
    constexpr int kTraps = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
    feclearexcept(FE_ALL_EXCEPT);
    return (on ? feenableexcept(kTraps) : fedisableexcept(FE_ALL_EXCEPT)) != -1;
}

std::int32_t LastError() { return errno; }

void SetLastError(std::int32_t code) { errno = code; }

std::string CLibraryErrorText(int code) {
    char buffer[256];
    return strerror_r(code, buffer, sizeof buffer);
}

double ProcessorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::string WorkingDirectory() {
    const std::unique_ptr<char, void (*)(void*)> native(getcwd(nullptr, 0), std::free);
    if (!native && errno == ENOMEM) throw std::bad_alloc();
    // Older systems put "(unreachable)" in front of what lies outside the process's root.
    const bool reachable = native && native.get()[0] == '/';
    return HostForm(reachable ? native.get() : "/dev/null/(unreachable)");
}

std::string WorkingDirectory(int drive) {
    const std::string directory = drive == kOnlyDrive ? WorkingDirectory() : std::string();
    return directory.size() <= kLongestOfDrive ? directory : std::string();
}

std::string NativePath(const char* path) {
    std::string native = path;
    std::replace(native.begin(), native.end(), '\\', '/');
    if (native.starts_with("//")) return std::string();
    if (native.size() < 2 || native[1] != ':' || !IsLetter(native[0])) return native;
    if (path[0] != 'Z' && path[0] != 'z') return std::string();
    native.erase(0, 2);
    return native.empty() ? "." : native;
}

bool AskPath(PathQuestion question, const char* path) {
    const std::string name = NativePath(path);
    struct stat status;
    if (question == PathQuestion::kIsDirectory)
        return stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    const int access = question == PathQuestion::kIsReadable     ? R_OK
                       : question == PathQuestion::kIsWriteable  ? W_OK
                       : question == PathQuestion::kIsExecutable ? X_OK
                                                                 : F_OK;
    return ::access(name.c_str(), access) == 0;
}

std::unique_ptr<File> OpenFile(const char* path, FileMode mode, std::int32_t& error) {
    const std::string name = NativePath(path);
    auto file = std::make_unique<PosixFile>();
    if (file->Open(name.c_str(), mode)) return file;
    error = errno;
    return nullptr;
}

}  // namespace platform
