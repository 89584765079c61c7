#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlSystemError.h>

KZMBasUtlSystemError::KZMBasUtlSystemError(const char* serviceName, KZMBasSystemError systemError)
    : m_serviceName(serviceName), m_systemError(systemError) {}

KZMBasUtlSystemError::KZMBasUtlSystemError(const KZMBasUtlSystemError& other) = default;

KZMBasUtlSystemError::~KZMBasUtlSystemError() {}

atr_String KZMBasUtlSystemError::AsString(KZMBasStringMode mode) const {
    return atr(mode, "System Error %s: %s", m_serviceName, m_systemError.AsString());
}

void KZMBasUtlSystemError::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlSystemError::Clone() const { return new KZMBasUtlSystemError(*this); }

int KZMBasUtlSystemError::GetCode() const { return 305; }

const char* KZMBasUtlSystemError::GetServiceName() const { return m_serviceName; }

KZMBasSystemError KZMBasUtlSystemError::GetSystemErrorCode() const { return m_systemError; }
