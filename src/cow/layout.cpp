// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <cow/cow_2DArray.h>
#include <cow/cow_COW.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
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

    using List = cow_List<int>;
    static_assert(offsetof(List, m_length) == 0);
    static_assert(offsetof(List, m_tableSlots) == 4);
    static_assert(offsetof(List, m_blockShift) == 8);
    static_assert(offsetof(List, m_offset) == 12);
    static_assert(offsetof(List, m_tableCount) == 16);
    static_assert(offsetof(List, m_table) == 16 + sizeof(void*));
    static_assert(sizeof(List) == 16 + 2 * sizeof(void*));

    using ListBlock = cow_ListBlock<int>;
    static_assert(offsetof(ListBlock, m_count) == 0);
    static_assert(offsetof(ListBlock, m_data) == sizeof(void*));
    static_assert(sizeof(ListBlock) == 2 * sizeof(void*));

    using FixedRep = cow_FixedArrayRep<int>;
    static_assert(offsetof(FixedRep, m_size) == 0);
    static_assert(offsetof(FixedRep, m_data) == sizeof(void*));
    static_assert(sizeof(cow_FixedArray<int>) == sizeof(Holder));

    using PlaneRep = cow_2DArrayRep<int>;
    static_assert(offsetof(PlaneRep, m_rows) == 0);
    static_assert(offsetof(PlaneRep, m_cols) == 4);
    static_assert(offsetof(PlaneRep, m_data) == 8);
    static_assert(sizeof(cow_2DArray<int>) == sizeof(Holder));

    static_assert(sizeof(cow_IntTableInt) == sizeof(Holder));
    static_assert(sizeof(cow_IntMultiMapInt) == sizeof(Holder));
};
