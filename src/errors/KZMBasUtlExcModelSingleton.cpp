#include <errors/KZMBasUtlExcModelSingleton.h>

#include <cassert>

KZM_DEFINE_SINGLETON(KZMBasUtlExcModelSingleton)

KZMBasUtlExcModelSingleton::KZMBasUtlExcModelSingleton() : m_factory(nullptr) {}

KZMBasUtlExcModelSingleton::~KZMBasUtlExcModelSingleton() { delete m_factory; }

bool KZMBasUtlExcModelSingleton::setBehavior(KZMBasUtlExceptionFactory* factory) {
    delete m_factory;
    m_factory = factory;
    return true;
}

void KZMBasUtlExcModelSingleton::throwSystemErrorException(cow_SystemErrorCode code) {
    assert(m_factory);
    m_factory->throwSystemErrorException(code);
}
