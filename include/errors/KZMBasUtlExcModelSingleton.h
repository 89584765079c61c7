#pragma once
#include <errors/KZMBasUtlExceptionFactory.h>
#include <runtime/omi_Singleton.h>

// Where the factory in force is kept. Clients use KZMBasUtlExceptionModel.
class KZM_API KZMBasUtlExcModelSingleton : public omi_SingletonBase<KZMBasUtlExcModelSingleton> {
public:
    // Without a factory; the last stop deletes the one in force.
    KZMBasUtlExcModelSingleton();
    ~KZMBasUtlExcModelSingleton();

    // What the functions of the same names in KZMBasUtlExceptionModel call.
    bool setBehavior(KZMBasUtlExceptionFactory* factory);
    void throwSystemErrorException(cow_SystemErrorCode code);

private:
    friend struct kzm_Layout;
    KZMBasUtlExceptionFactory* m_factory;  // owned; null before the start and after the stop
};
KZM_DECLARE_SINGLETON(KZMBasUtlExcModelSingleton)
