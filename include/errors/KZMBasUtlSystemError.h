#pragma once
#include <coreutils/KZMBasException.h>
#include <coreutils/KZMBasSystemError.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// A service of the operating system failed, such as "CreateFile".
class KZM_API KZMBasUtlSystemError : public KZMBasException, public mem_AllocationOperators {
public:
    // The name is kept as a pointer: pass a literal.
    KZMBasUtlSystemError(const char* serviceName, KZMBasSystemError systemError);
    KZMBasUtlSystemError(const KZMBasUtlSystemError& other);  // with the throw site
    ~KZMBasUtlSystemError() override;

    atr_String AsString(KZMBasStringMode mode) const override;
    void Propagate() const override;
    KZMBasException* Clone() const override;
    int GetCode() const override;

    const char* GetServiceName() const;  // the pointer as passed
    // As passed.
    KZMBasSystemError GetSystemErrorCode() const;

private:
    friend struct kzm_Layout;
    const char* m_serviceName;  // not owned
    KZMBasSystemError m_systemError;
};
