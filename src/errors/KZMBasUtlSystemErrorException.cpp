#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlSystemErrorException.h>

KZMBasUtlSystemErrorException::KZMBasUtlSystemErrorException(cow_SystemErrorCode code)
    : m_code(code) {}

KZMBasUtlSystemErrorException::KZMBasUtlSystemErrorException(
    const KZMBasUtlSystemErrorException& other) = default;

KZMBasUtlSystemErrorException::~KZMBasUtlSystemErrorException() {}

atr_String KZMBasUtlSystemErrorException::AsString(KZMBasStringMode mode) const {
    return atr(mode, "System Error: %s", m_code.GetText());
}

void KZMBasUtlSystemErrorException::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlSystemErrorException::Clone() const {
    return new KZMBasUtlSystemErrorException(*this);
}

int KZMBasUtlSystemErrorException::GetCode() const { return 306; }

cow_SystemErrorCode KZMBasUtlSystemErrorException::GetSec() const { return m_code; }
