#include <coreutils/KZMBasException.h>
#include <coreutils/atr_format.h>

#include <cstdlib>

KZMBasException::~KZMBasException() = default;

atr_String KZMBasException::DeveloperReport(KZMBasStringMode mode) const {
    return atr_format("%s (code %d, thrown at %s:%d)", AsString(mode), GetCode(), m_file, m_line);
}

atr_String KZMBasException::UserReport(KZMBasStringMode mode) const { return AsString(mode); }

void KZMBasException::Throw(const char* file, int line) {
    m_file = atr_StringBase::OrEmpty(file);
    m_line = line;
    Propagate();
    std::abort();
}
