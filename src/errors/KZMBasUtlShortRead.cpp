#include <coreutils/atr_format.h>
#include <errors/KZMBasUtlShortRead.h>

KZMBasUtlShortRead::KZMBasUtlShortRead() {}

KZMBasUtlShortRead::KZMBasUtlShortRead(const KZMBasUtlShortRead& other) = default;

KZMBasUtlShortRead::~KZMBasUtlShortRead() {}

atr_String KZMBasUtlShortRead::AsString(KZMBasStringMode mode) const {
    return atr(mode, "All the data requested could not be read.");
}

void KZMBasUtlShortRead::Propagate() const { throw *this; }

KZMBasException* KZMBasUtlShortRead::Clone() const { return new KZMBasUtlShortRead(*this); }

int KZMBasUtlShortRead::GetCode() const { return 304; }
