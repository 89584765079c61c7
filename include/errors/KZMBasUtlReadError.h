#pragma once
#include <coreutils/KZMBasException.h>
#include <coreutils/KZMBasSystemError.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// The system refused reading from a file. Raised with Throw; see KZMBasException.
class KZM_API KZMBasUtlReadError : public KZMBasException, public mem_AllocationOperators {
public:
    // The error number is taken by KZMBasSystemError::Last() right after the failing call. A copy
    // carries the same.
    explicit KZMBasUtlReadError(KZMBasSystemError systemError);
    KZMBasUtlReadError(const KZMBasUtlReadError& other);  // with the throw site
    ~KZMBasUtlReadError() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;

    // As passed.
    KZMBasSystemError GetSystemErrorCode() const;

private:
    friend struct kzm_Layout;
    KZMBasSystemError m_systemError;
};
