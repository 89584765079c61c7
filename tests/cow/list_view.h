#pragma once
#include <cow/cow_List.h>

#include <string>
#include <vector>

// What a list keeps behind its interface: how large its table is and which blocks it shares.
struct kzm_ListView {
    struct Shape {
        int slots, shift, offset;
        bool operator==(const Shape&) const = default;
        friend std::ostream& operator<<(std::ostream& os, const Shape& s) {
            return os << s.slots << " slots, shift " << s.shift << ", offset " << s.offset;
        }
    };
    template <class T>
    static Shape Of(const cow_List<T>& list) {
        return {list.m_tableSlots, list.m_blockShift, list.m_offset};
    }
    // Each present block's slot and count, such as "0:1 1:2".
    template <class T>
    static std::string Blocks(const cow_List<T>& list) {
        std::string text;
        for (int slot = 0; slot < list.m_tableSlots; ++slot) {
            if (!list.m_table[slot]) continue;
            if (!text.empty()) text += ' ';
            text += std::to_string(slot) + ':' + std::to_string(list.m_table[slot]->m_count);
        }
        return text;
    }
    template <class T>
    static int TableCount(const cow_List<T>& list) {
        return *list.m_tableCount;
    }
};
