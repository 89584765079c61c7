// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <errors/KZMBasUtlExcModelSingleton.h>
#include <errors/KZMBasUtlReadError.h>
#include <errors/KZMBasUtlShortRead.h>
#include <errors/KZMBasUtlShortWrite.h>
#include <errors/KZMBasUtlSystemError.h>
#include <errors/KZMBasUtlSystemErrorException.h>
#include <errors/KZMBasUtlWriteError.h>

#include <cstddef>

struct kzm_Layout {
    static_assert(sizeof(cow_SystemErrorCode) == 8);
    static_assert(offsetof(cow_SystemErrorCode, m_type) == 0);
    static_assert(sizeof(KZMBasUtlExcModelSingleton) == sizeof(void*));

    // The class operators add nothing in front of the own fields.
    static constexpr std::size_t kBase = sizeof(KZMBasUtlShortRead);
    static_assert(kBase == sizeof(KZMBasUtlShortWrite));
    static_assert(offsetof(KZMBasUtlSystemError, m_serviceName) <= kBase);
    static_assert(offsetof(KZMBasUtlSystemError, m_systemError) ==
                  offsetof(KZMBasUtlSystemError, m_serviceName) + sizeof(void*));
    static_assert(sizeof(KZMBasUtlReadError) == sizeof(KZMBasUtlWriteError));
    static constexpr bool k32Bit = sizeof(void*) == 4;
    static_assert(kBase == (k32Bit ? 12 : 24));
    static_assert(sizeof(KZMBasUtlReadError) == (k32Bit ? 268 : 280));
    static_assert(sizeof(KZMBasUtlSystemError) == (k32Bit ? 272 : 288));
    static_assert(sizeof(KZMBasUtlSystemErrorException) == (k32Bit ? 20 : 32));
};
