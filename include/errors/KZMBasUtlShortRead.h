#pragma once
#include <coreutils/KZMBasException.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// A file ended before all that was asked for could be read.
class KZM_API KZMBasUtlShortRead : public KZMBasException, public mem_AllocationOperators {
public:
    // Carries nothing: there is no error number.
    KZMBasUtlShortRead();
    KZMBasUtlShortRead(const KZMBasUtlShortRead& other);  // with the throw site
    ~KZMBasUtlShortRead() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;
};
