#pragma once
#include <coreutils/KZMBasException.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// A write took nothing, although the system reported no error.
class KZM_API KZMBasUtlShortWrite : public KZMBasException, public mem_AllocationOperators {
public:
    // Carries nothing: there is no error number.
    KZMBasUtlShortWrite();
    KZMBasUtlShortWrite(const KZMBasUtlShortWrite& other);  // with the throw site
    ~KZMBasUtlShortWrite() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;
};
