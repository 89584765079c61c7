#pragma once
#include <errors/KZMBasUtlExceptionFactory.h>

// In force from the start of the library: throws KZMBasUtlSystemErrorException.
class KZM_API KZMBasUtlExcDefaultFactory : public KZMBasUtlExceptionFactory {
public:
    ~KZMBasUtlExcDefaultFactory() override;
    void throwSystemErrorException(cow_SystemErrorCode code) override;
};
