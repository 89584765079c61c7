#include <errors/KZMBasUtlExcDefaultFactory.h>
#include <errors/KZMBasUtlSystemErrorException.h>

KZMBasUtlExcDefaultFactory::~KZMBasUtlExcDefaultFactory() {}

void KZMBasUtlExcDefaultFactory::throwSystemErrorException(cow_SystemErrorCode code) {
    KZMBasUtlSystemErrorException(code).Throw("KZMBasUtlExcDefaultFactory.cpp", __LINE__);
}
