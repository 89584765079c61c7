#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlWriteError.h>

KZMBasUtlWriteError::KZMBasUtlWriteError(KZMBasSystemError systemError)
    : m_systemError(systemError) {}

KZMBasUtlWriteError::KZMBasUtlWriteError(const KZMBasUtlWriteError& other) = default;

KZMBasUtlWriteError::~KZMBasUtlWriteError() {}

atr_String KZMBasUtlWriteError::AsString(KZMBasStringMode mode) const {
    return atr(mode, "Write Error: %s", m_systemError.AsString());
}

void KZMBasUtlWriteError::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlWriteError::Clone() const { return new KZMBasUtlWriteError(*this); }

int KZMBasUtlWriteError::GetCode() const { return 307; }

KZMBasSystemError KZMBasUtlWriteError::GetSystemErrorCode() const { return m_systemError; }
