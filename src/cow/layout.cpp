// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <cow/cow_COW.h>

#include <cstddef>

struct kzm_Layout {
    static_assert(sizeof(cow_Counter) == 4);

    using Holder = cow_CountedHld<int>;
    static_assert(offsetof(Holder, m_counter) == 0);
    static_assert(offsetof(Holder, m_referent) == sizeof(void*));
    static_assert(sizeof(Holder) == 2 * sizeof(void*));
    static_assert(sizeof(cow_COW<int, cow_Direct<int>>) == sizeof(Holder));
};
