#include <errors/KZMBasUtlExcModelSingleton.h>
#include <errors/KZMBasUtlExceptionModel.h>

namespace {
KZMBasUtlExcModelSingleton& Model() {
    return omi_Singleton<KZMBasUtlExcModelSingleton>::Instance();
}
}  // namespace

bool KZMBasUtlExceptionModel::setBehavior(KZMBasUtlExceptionFactory* factory) {
    return Model().setBehavior(factory);
}

void KZMBasUtlExceptionModel::throwSystemErrorException(cow_SystemErrorCode code) {
    Model().throwSystemErrorException(code);
}
