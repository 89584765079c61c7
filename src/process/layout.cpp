// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <process/KZMBasOmniProcessInfo.h>
#include <process/omi_AlertListener.h>

#include <cstddef>
#include <type_traits>

struct kzm_Layout {
    static_assert(offsetof(omi_AlertListener, m_handlers) == 0);
    static_assert(offsetof(omi_AlertListener, m_threadId) == 6 * sizeof(void*));
    static_assert(offsetof(omi_AlertListener, m_handle) == 7 * sizeof(void*));
    static_assert(sizeof(omi_AlertListener) == 8 * sizeof(void*));
    static_assert(offsetof(omi_AlertTrigger, m_threadId) == 0);
    static_assert(sizeof(omi_AlertTrigger) == 4);
    static_assert(sizeof(omi_AlertEnm) == 4);
    static_assert(std::is_empty_v<KZMBasOmniProcessInfo>);
};
