// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <cow/cow_COW.h>
#include <cow/cow_String.h>

#include <cstddef>

struct kzm_Layout {
    static_assert(sizeof(cow_Counter) == 4);

    using Holder = cow_CountedHld<int>;
    static_assert(offsetof(Holder, m_counter) == 0);
    static_assert(offsetof(Holder, m_referent) == sizeof(void*));
    static_assert(sizeof(Holder) == 2 * sizeof(void*));
    static_assert(sizeof(cow_COW<int, cow_Direct<int>>) == sizeof(Holder));

    static_assert(offsetof(atr_StringRecord, m_count) == 0);
    static_assert(offsetof(atr_StringRecord, m_length) == 8);
    static_assert(offsetof(atr_StringBase, m_data) == 0);
    static_assert(offsetof(atr_StringBase, m_rep) == sizeof(void*));
    static_assert(sizeof(cow_String) == 2 * sizeof(void*));
};
