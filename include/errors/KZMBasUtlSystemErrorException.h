#pragma once
#include <coreutils/KZMBasException.h>
#include <errors/cow_SystemErrorCode.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// A failure of the operating system that is known by its error number alone. Not constructed where
// it is thrown: KZMBasUtlExceptionModel::throwSystemErrorException lets the application choose.
class KZM_API KZMBasUtlSystemErrorException : public KZMBasException,
                                              public mem_AllocationOperators {
public:
    // Called by a factory; a copy carries the same code.
    explicit KZMBasUtlSystemErrorException(cow_SystemErrorCode code);
    // With the throw site.
    KZMBasUtlSystemErrorException(const KZMBasUtlSystemErrorException& other);
    ~KZMBasUtlSystemErrorException() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;

    // As captured.
    cow_SystemErrorCode GetSec() const;

private:
    friend struct kzm_Layout;
    cow_SystemErrorCode m_code;
};
