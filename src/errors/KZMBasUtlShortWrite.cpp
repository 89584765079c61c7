#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlShortWrite.h>

KZMBasUtlShortWrite::KZMBasUtlShortWrite() {}

KZMBasUtlShortWrite::KZMBasUtlShortWrite(const KZMBasUtlShortWrite& other) = default;

KZMBasUtlShortWrite::~KZMBasUtlShortWrite() {}

atr_String KZMBasUtlShortWrite::AsString(KZMBasStringMode mode) const {
    return atr(mode, "All the data provided to write could not be written.");
}

void KZMBasUtlShortWrite::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlShortWrite::Clone() const { return new KZMBasUtlShortWrite(*this); }

int KZMBasUtlShortWrite::GetCode() const { return 308; }
