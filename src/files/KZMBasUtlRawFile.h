#pragma once
#include <files/KZMBasUtlFilePath.h>
#include <platform/platform.h>

#include <cstddef>
#include <cstdint>
#include <memory>

// A file of bytes, opened and transferred whole or with an exception of the error family:
// KZMBasUtlSystemError names the service ("CreateFile", "SetFilePointer", "CloseHandle"),
// KZMBasUtlReadError and KZMBasUtlWriteError tell why a transfer failed, KZMBasUtlShortRead and
// KZMBasUtlShortWrite that it stopped without an error. What a failed transfer left in the buffer
// or in the file stays there. One thread at a time.
class KZMBasUtlRawFile {
public:
    KZMBasUtlRawFile(const KZMBasUtlFilePath& path, platform::FileMode mode);
    explicit KZMBasUtlRawFile(std::unique_ptr<platform::File> opened);

    void Seek(std::int64_t position);  // from the start of the file
    void Read(void* buffer, std::size_t size);
    void Write(const void* buffer, std::size_t size);

    // Afterwards every transfer fails. The destructor closes too, but without a word.
    void Close();

private:
    std::unique_ptr<platform::File> m_file;
};
