#include <omi/omi_SystemErrorCode.h>
#include <platform/platform.h>

#include <cerrno>

omi_SystemErrorCode::omi_SystemErrorCode(ErrorCodeType type) { SetError(type); }

// The two are read before anything that could change them.
void omi_SystemErrorCode::SetError(ErrorCodeType type) {
    const std::int32_t cLibrary = errno;
    const std::int32_t system = platform::LastError();
    m_systemCode = type == SystemError ? system : -1;
    m_cLibraryCode = type == CLibraryError ? cLibrary : -1;
}

omi_SystemErrorCode::operator std::error_code() const {
    if (m_systemCode != -1) return {m_systemCode, std::system_category()};
    if (m_cLibraryCode != -1) return {m_cLibraryCode, std::generic_category()};
    return {};
}
