#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlReadError.h>

KZMBasUtlReadError::KZMBasUtlReadError(KZMBasSystemError systemError)
    : m_systemError(systemError) {}

KZMBasUtlReadError::KZMBasUtlReadError(const KZMBasUtlReadError& other) = default;

KZMBasUtlReadError::~KZMBasUtlReadError() {}

atr_String KZMBasUtlReadError::AsString(KZMBasStringMode mode) const {
    return atr(mode, "Read Error: %s", m_systemError.AsString());
}

void KZMBasUtlReadError::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlReadError::Clone() const { return new KZMBasUtlReadError(*this); }

int KZMBasUtlReadError::GetCode() const { return 303; }

KZMBasSystemError KZMBasUtlReadError::GetSystemErrorCode() const { return m_systemError; }
