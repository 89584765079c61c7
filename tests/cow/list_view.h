#pragma once
#include <cow/cow_List.h>

#include <string>

// What a list keeps behind its interface: how large its table is and which blocks it shares.
struct kzm_ListView {
    // Such as "16 slots, shift 4, offset 255: 15 16*2", the last a block that two tables share.
    template <class T>
    static std::string Of(const cow_List<T>& list) {
        std::string text = std::to_string(list.m_tableSlots) + " slots, shift " +
                           std::to_string(list.m_blockShift) + ", offset " +
                           std::to_string(list.m_offset) + ":";
        for (int slot = 0; slot < list.m_tableSlots; ++slot) {
            if (!list.m_table[slot]) continue;
            text += ' ' + std::to_string(slot);
            const int count = list.m_table[slot]->m_count;
            if (count > 1) text += '*' + std::to_string(count);
        }
        return text;
    }
};
