#pragma once
#include <coreutils/KZMBasSystemError.h>
#include <errors/cow_SystemErrorCode.h>

#include <system_error>

// Error numbers of the library as std::error_code and back: the C library's in
// std::generic_category, the system's in std::system_category, which is GetLastError's on Windows
// and errno's elsewhere. omi_SystemErrorCode converts by itself.

// No error if nothing was captured.
inline std::error_code cow_ErrorCode(const cow_SystemErrorCode& code) {
    switch (code.GetType()) {
        case omi_SystemErrorCode::CLibraryError:
            return {code.GetDetail(), std::generic_category()};
        case omi_SystemErrorCode::SystemError:
            return {code.GetDetail(), std::system_category()};
    }
    return {};
}
inline std::error_code cow_ErrorCode(const KZMBasSystemError& error) {
    return {error.Number(), std::system_category()};
}

// No error, and one of a category that the library does not know, become type 2 and detail -1,
// which is nothing captured.
inline cow_SystemErrorCode cow_SystemErrorCodeOf(const std::error_code& code) {
    if (code && code.category() == std::system_category())
        return {omi_SystemErrorCode::SystemError, code.value()};
    if (code && code.category() == std::generic_category())
        return {omi_SystemErrorCode::CLibraryError, code.value()};
    return {static_cast<omi_SystemErrorCode::ErrorCodeType>(2), -1};
}
