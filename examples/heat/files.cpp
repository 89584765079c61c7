#include "files.h"

#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlWriteError.h>
#include <fcntl.h>
#include <files/KZMBasUtlDirPathUtils.h>
#include <files/KZMBasUtlFilePath.h>
#include <process/KZMBasOmniProcessInfo.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace heat {
namespace fs = std::filesystem;
namespace {

constexpr char kSource[] = "files.cpp";

[[noreturn]] void RaiseSystemError(const char* service, int line) {
    const KZMBasSystemError error = KZMBasSystemError::Last();
    KZMBasUtlSystemError(service, error).Throw(kSource, line);
}

class Descriptor {
public:
    Descriptor(const cow_String& path, int flags)
        : m_descriptor(open(path.CStr(), flags | O_CLOEXEC, 0666)) {
        if (m_descriptor < 0) RaiseSystemError("open", __LINE__);
    }
    ~Descriptor() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    std::size_t Read(char* buffer, std::size_t size) {
        const ssize_t count = read(m_descriptor, buffer, size);
        if (count < 0) KZMBasUtlReadError(KZMBasSystemError::Last()).Throw(kSource, __LINE__);
        return static_cast<std::size_t>(count);
    }
    std::size_t Write(const char* bytes, std::size_t size) {
        const ssize_t count = write(m_descriptor, bytes, size);
        if (count < 0) KZMBasUtlWriteError(KZMBasSystemError::Last()).Throw(kSource, __LINE__);
        if (count == 0) KZMBasUtlShortWrite().Throw(kSource, __LINE__);
        return static_cast<std::size_t>(count);
    }
    void Close() {  // tells what the system could not write after all
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        if (close(descriptor) != 0) RaiseSystemError("close", __LINE__);
    }

private:
    int m_descriptor;
};

}  // namespace

std::string StartOfFile(const cow_String& path, std::size_t most) {
    Descriptor file(path, O_RDONLY);
    std::string start(most, '\0');
    std::size_t size = 0;
    while (size < most) {
        const std::size_t count = file.Read(start.data() + size, most - size);
        if (count == 0) break;
        size += count;
    }
    start.resize(size);
    return start;
}

void WriteFile(const cow_String& path, const std::string& contents) {
    Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
    for (std::size_t done = 0; done < contents.size();) {
        done += file.Write(contents.data() + done, contents.size() - done);
    }
    file.Close();
}

void MakeFolder(const cow_String& path) {
    if (mkdir(path.CStr(), 0777) != 0) RaiseSystemError("mkdir", __LINE__);
}

void RenameFile(const cow_String& from, const cow_String& to) {
    if (std::rename(from.CStr(), to.CStr()) != 0) RaiseSystemError("rename", __LINE__);
}

cow_String HostForm(const cow_String& nativeName) {
    const std::string_view name = nativeName;
    if (name.starts_with('/')) {
        const std::size_t slashes = std::min(name.find_first_not_of('/'), name.size());
        return getdevice().Append(cow_String(name.substr(slashes - 1)));
    }
    const bool looksLikeMore =
        name.find(':') != name.npos || KZMBasUtlFilePath::IsPrefixRemoteFileAccessor(nativeName);
    return looksLikeMore ? Text("./", nativeName) : nativeName;
}

void AppendEnvironment(const cow_String& nativeName) {
    const cow_String host = KZMBasUtlFilePath("", HostForm(nativeName)).AbsolutePathName();
    const cow_String path = KZMBasUtlDirPathUtils::NativeName(host);
    std::error_code error;
    if (fs::exists(path.CStr(), error) && !fs::is_regular_file(path.CStr(), error)) {
        throw HeatError(Text("'", nativeName, "' is not a file"));
    }
    OnFile("cannot write", nativeName, [&] {
        Descriptor(path, O_WRONLY | O_CREAT | O_APPEND).Close();
        const std::uintmax_t before = fs::file_size(path.CStr(), error);
        KZMBasOmniProcessInfo::SaveEnvironment(host.CStr());  // a failure shows in the size only
        std::uintmax_t entries = 0;
        for (char** entry = environ; *entry; ++entry) entries += std::strlen(*entry) + 1;
        if (fs::file_size(path.CStr(), error) - before <= entries) {
            KZMBasUtlShortWrite().Throw(kSource, __LINE__);
        }
    });
}

void FinishOutput() {
    const int reason = std::fflush(stdout) == 0 ? 0 : errno;
    if (reason == EPIPE || (reason == 0 && !std::ferror(stdout))) return;
    throw HeatError(Text("cannot write the output: ",
                         reason == 0 ? "not all of it was taken" : std::strerror(reason)));
}

}  // namespace heat
