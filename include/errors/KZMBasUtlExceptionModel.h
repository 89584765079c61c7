#pragma once
#include <errors/cow_SystemErrorCode.h>
#include <kzm_export.h>

class KZMBasUtlExceptionFactory;

// Through here the library raises failures that it holds as a cow_SystemErrorCode, so that an
// application can choose the type that is thrown.
class KZM_API KZMBasUtlExceptionModel {
public:
    // Puts a factory in force, deletes the one before and returns true. Takes ownership, so pass a
    // new object each time: the one in force, passed again, would be deleted. Null takes the
    // factory away. Only while one thread is active, and not from a factory's destructor. Where
    // there is no model yet, std::bad_alloc may leave; the factory is then still the caller's.
    static bool setBehavior(KZMBasUtlExceptionFactory* factory);

    // Throws what the factory in force throws; there must be one, as there is while the library is
    // started (checked in debug builds).
    static void throwSystemErrorException(cow_SystemErrorCode code);
};
