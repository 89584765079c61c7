#include <errors/KZMBasUtlExceptionFactory.h>

KZMBasUtlExceptionFactory::~KZMBasUtlExceptionFactory() {}
