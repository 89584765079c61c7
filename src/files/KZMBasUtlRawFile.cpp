#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortRead.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlWriteError.h>
#include <files/KZMBasUtlRawFile.h>
#include <files/path_query.h>

#include <utility>

namespace {

constexpr char kSource[] = "KZMBasUtlRawFile.cpp";

// Right after the call that failed.
[[noreturn]] void RaiseSystemError(const char* service, int line) {
    const KZMBasSystemError error = KZMBasSystemError::Last();
    KZMBasUtlSystemError(service, error).Throw(kSource, line);
}

std::unique_ptr<platform::File> Open(const KZMBasUtlFilePath& path, platform::FileMode mode) {
    cow_String name = path.AbsolutePathName();
    if (path.IsUrl() || path.IsRemote() || HasZeroByte(name)) name.Erase();
    std::int32_t error = 0;
    auto file = platform::OpenFile(name.CStr(), mode, error);
    if (!file)
        KZMBasUtlSystemError("CreateFile", KZMBasSystemError(error)).Throw(kSource, __LINE__);
    return file;
}

}  // namespace

KZMBasUtlRawFile::KZMBasUtlRawFile(const KZMBasUtlFilePath& path, platform::FileMode mode)
    : m_file(Open(path, mode)) {}

KZMBasUtlRawFile::KZMBasUtlRawFile(std::unique_ptr<platform::File> opened)
    : m_file(std::move(opened)) {}

void KZMBasUtlRawFile::Seek(std::int64_t position) {
    platform::SetLastError(0);
    if (m_file->Seek(position) == -1 && platform::LastError() != 0)
        RaiseSystemError("SetFilePointer", __LINE__);
}

void KZMBasUtlRawFile::Read(void* buffer, std::size_t size) {
    auto* at = static_cast<char*>(buffer);
    while (size > 0) {
        const std::ptrdiff_t n = m_file->Read(at, size);
        if (n < 0) KZMBasUtlReadError(KZMBasSystemError::Last()).Throw(kSource, __LINE__);
        if (n == 0) KZMBasUtlShortRead().Throw(kSource, __LINE__);
        at += n;
        size -= static_cast<std::size_t>(n);
    }
}

void KZMBasUtlRawFile::Write(const void* buffer, std::size_t size) {
    auto* at = static_cast<const char*>(buffer);
    while (size > 0) {
        const std::ptrdiff_t n = m_file->Write(at, size);
        if (n < 0) KZMBasUtlWriteError(KZMBasSystemError::Last()).Throw(kSource, __LINE__);
        if (n == 0) KZMBasUtlShortWrite().Throw(kSource, __LINE__);
        at += n;
        size -= static_cast<std::size_t>(n);
    }
}

void KZMBasUtlRawFile::Close() {
    if (!m_file->Close()) RaiseSystemError("CloseHandle", __LINE__);
}
