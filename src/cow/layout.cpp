// Clients compiled against these classes depend on their sizes and the order of their fields.
#include <cow/cow_2DArray.h>
#include <cow/cow_Btree.h>
#include <cow/cow_COW.h>
#include <cow/cow_FixedArray.h>
#include <cow/cow_IntMultiMapInt.h>
#include <cow/cow_IntTableInt.h>
#include <cow/cow_List.h>
#include <cow/cow_Map.h>
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
    static_assert(sizeof(FixedRep) == 2 * sizeof(void*));
    static_assert(sizeof(cow_FixedArray<int>) == sizeof(Holder));

    using PlaneRep = cow_2DArrayRep<int>;
    static_assert(offsetof(PlaneRep, m_rows) == 0);
    static_assert(offsetof(PlaneRep, m_cols) == 4);
    static_assert(offsetof(PlaneRep, m_data) == 8);
    static_assert(sizeof(PlaneRep) == 8 + sizeof(void*));
    static_assert(sizeof(cow_2DArray<int>) == sizeof(Holder));

    static_assert(sizeof(cow_IntTableInt) == sizeof(Holder));
    static_assert(sizeof(cow_IntMultiMapInt) == sizeof(Holder));

    using TreeNode = cow_BtreeNode<cow_String, int>;
    static_assert(offsetof(TreeNode, key) == 0);
    static_assert(offsetof(TreeNode, value) == sizeof(cow_String));
    static_assert(offsetof(TreeNode, m_children) == 3 * sizeof(void*));
    static_assert(sizeof(TreeNode::m_children) == 2 * sizeof(void*));
    static_assert(offsetof(TreeNode, m_depth) == 5 * sizeof(void*));
    static_assert(sizeof(TreeNode) == 6 * sizeof(void*));
    using NumberNode = cow_BtreeNode<int, double>;
    static_assert(offsetof(NumberNode, m_children) == 16);
    static_assert(sizeof(cow_Btree<int, int>) == 2 * sizeof(void*));

    using MapNode = cow_MapNode<cow_String, int>;
    static_assert(offsetof(MapNode, key) == 0);
    static_assert(offsetof(MapNode, value) == sizeof(cow_String));
    static_assert(offsetof(MapNode, m_children) == 3 * sizeof(void*));
    static_assert(sizeof(MapNode::m_children) == 4 * sizeof(void*));
    static_assert(sizeof(MapNode) == 7 * sizeof(void*));
    using Map = cow_Map<int, int>;
    static_assert(offsetof(Map, m_root) == 0);
    static_assert(offsetof(Map, m_size) == 2 * sizeof(void*));
    static_assert(sizeof(Map) == 3 * sizeof(void*));
};
