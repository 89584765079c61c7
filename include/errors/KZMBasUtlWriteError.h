#pragma once
#include <coreutils/KZMBasException.h>
#include <coreutils/KZMBasSystemError.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// The system refused writing to a file. Raised with Throw; see KZMBasException.
class KZM_API KZMBasUtlWriteError : public KZMBasException, public mem_AllocationOperators {
public:
    explicit KZMBasUtlWriteError(KZMBasSystemError systemError);
    KZMBasUtlWriteError(const KZMBasUtlWriteError& other);
    ~KZMBasUtlWriteError() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;

    KZMBasSystemError GetSystemErrorCode() const;

private:
    friend struct kzm_Layout;
    KZMBasSystemError m_systemError;
};
