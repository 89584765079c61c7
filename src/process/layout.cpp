// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <process/omi_AlertListener.h>

#include <cstddef>

struct kzm_Layout {
    static_assert(offsetof(omi_AlertListener, m_handlers) == 0);
    static_assert(offsetof(omi_AlertListener, m_threadId) == 6 * sizeof(void*));
    static_assert(offsetof(omi_AlertListener, m_handle) == 7 * sizeof(void*));
    static_assert(sizeof(omi_AlertListener) == 8 * sizeof(void*));
};
