#pragma once
#include <kzm_export.h>

#include <cstdint>
#include <system_error>

// The error number of the calling thread's last failure, captured when this is made or set, so do
// it right after the failing call. The number that is not asked for is -1. Never fails.
class KZM_API omi_SystemErrorCode {
public:
    // Which of the two error numbers of a failed call is meant. Other values mean none.
    enum ErrorCodeType : int {
        CLibraryError = 0,  // errno
        SystemError = 1,    // GetLastError; on Linux the same as errno
    };

    // Captures at once, SetError anew.
    explicit omi_SystemErrorCode(ErrorCodeType type);
    void SetError(ErrorCodeType type);

    // The numbers; -1 for the one that was not asked for.
    std::int32_t SystemCode() const { return m_systemCode; }
    std::int32_t CLibraryCode() const { return m_cLibraryCode; }

    // No error if nothing was captured.
    operator std::error_code() const;

private:
    friend struct kzm_Layout;
    std::int32_t m_systemCode;
    std::int32_t m_cLibraryCode;
};
