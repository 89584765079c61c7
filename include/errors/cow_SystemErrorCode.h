#pragma once
#include <cow/cow_String.h>
#include <kzm_export.h>
#include <omi/omi_SystemErrorCode.h>

#include <cstdint>

// A captured error number as a value to pass on: to KZMBasUtlExceptionModel, or into a record that
// is read later.
class KZM_API cow_SystemErrorCode {
public:
    // Which of the two numbers is meant.
    using Type = omi_SystemErrorCode::ErrorCodeType;

    // Nothing captured becomes type 2 and detail -1.
    cow_SystemErrorCode(const omi_SystemErrorCode& captured);
    // An error number from elsewhere, such as one read from a record.
    cow_SystemErrorCode(Type type, std::int32_t detail) : m_type(type), m_detail(detail) {}

    // Whose number it is, and the number; -1 if nothing was captured.
    Type GetType() const { return static_cast<Type>(m_type); }
    std::int32_t GetDetail() const { return m_detail; }

    // The system's message, "" if nothing was captured.
    cow_String GetText() const;

    friend bool operator==(const cow_SystemErrorCode&, const cow_SystemErrorCode&) = default;

private:
    friend struct kzm_Layout;
    std::int32_t m_type;
    std::int32_t m_detail;
};
