#pragma once
#include <errors/cow_SystemErrorCode.h>
#include <kzm_export.h>
#include <runtime/mem_AllocationOperators.h>

// Decides what is thrown for a failure of the operating system. Derive from it to have the whole
// library throw a type of your own; see KZMBasUtlExceptionModel.
class KZM_API KZMBasUtlExceptionFactory : public mem_AllocationOperators {
public:
    virtual ~KZMBasUtlExceptionFactory();

    // Must throw. May run on any thread.
    virtual void throwSystemErrorException(cow_SystemErrorCode code) = 0;
};
