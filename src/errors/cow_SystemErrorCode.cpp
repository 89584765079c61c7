#include <coreutils/KZMBasSystemError.h>
#include <errors/cow_SystemErrorCode.h>
#include <platform/platform.h>

cow_SystemErrorCode::cow_SystemErrorCode(const omi_SystemErrorCode& captured)
    : m_type(2), m_detail(-1) {
    if (captured.SystemCode() != -1) {
        m_type = omi_SystemErrorCode::SystemError;
        m_detail = captured.SystemCode();
    } else if (captured.CLibraryCode() != -1) {
        m_type = omi_SystemErrorCode::CLibraryError;
        m_detail = captured.CLibraryCode();
    }
}

cow_String cow_SystemErrorCode::GetText() const {
    switch (m_type) {
        case omi_SystemErrorCode::SystemError:
            return KZMBasSystemError(m_detail).AsString();
        case omi_SystemErrorCode::CLibraryError:
            return platform::CLibraryErrorText(m_detail).c_str();
        default:
            return cow_String();
    }
}
