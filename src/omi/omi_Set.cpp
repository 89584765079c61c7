#include <omi/omi_Set.h>

#include <cstdio>

omi_Set::omi_Set(const KZMBasVector<int>& values) { Insert(values); }

omi_Set::omi_Set(const int* values, int n) { Insert(values, n); }

omi_Set& omi_Set::operator=(const omi_Set& other) {
    omi_Set copy(other);
    m_members.Swap(copy.m_members);
    m_negative.Swap(copy.m_negative);
    return *this;
}

void omi_Set::Members(int* out) const {
    omi_SetIT it(*this);
    for (it.First(); !it.IsDone(); it.Next()) *out++ = it.CurrentItem();
}

void omi_Set::Members(KZMBasVector<int>& out) const {
    out.Resize(Size());
    Members(out.Data());
}

bool omi_Set::operator==(const omi_Set& other) const {
    return Size() == other.Size() && m_members.Contains(other.m_members) &&
           m_negative.Contains(other.m_negative);
}

void omi_Set::Print(const char* title) const {
    std::printf("%s\n", title ? title : "");
    int column = 0;
    for (const int member : *this) {
        std::printf(column == 7 ? "%8d\n" : "%8d", member);
        column = (column + 1) & 7;
    }
    if (column > 0) std::fputs("\n", stdout);
}

// All blocks first, so that a failure leaves no part of the values.
void omi_Set::Insert(const int* values, int n) {
    for (int i = 0; i < n; ++i) {
        const unsigned int bit = Bit(values[i]);
        omi_BlkBitVect& part = values[i] < 0 ? m_negative : m_members;
        if (!part.Word(bit)) part.MakeWordBlocks(bit >> 5, bit >> 5);
    }
    for (int i = 0; i < n; ++i) Insert(values[i]);
}

void omi_Set::Clear() {
    m_members.Clear();
    m_negative.Clear();
}

omi_Set& omi_Set::operator+=(const omi_Set& other) {
    m_negative.MakeBlocksOf(other.m_negative);
    m_members |= other.m_members;
    m_negative |= other.m_negative;
    return *this;
}

omi_Set& omi_Set::operator-=(const omi_Set& other) {
    m_members -= other.m_members;
    m_negative -= other.m_negative;
    return *this;
}

omi_Set& omi_Set::operator&=(const omi_Set& other) {
    m_members &= other.m_members;
    m_negative &= other.m_negative;
    return *this;
}

omi_Set& omi_Set::operator^=(const omi_Set& other) {
    m_negative.MakeBlocksOf(other.m_negative);
    m_members ^= other.m_members;
    m_negative ^= other.m_negative;
    return *this;
}

// The counts are made exact now, because a later recount would free blocks under the walk.
void omi_SetIT::First() {
    m_part = Part::None;
    if (!m_set || m_set->IsEmpty()) return;
    m_part = Part::Negative;
    m_set->m_negative.Size();
    SetBitTraverseData(&m_set->m_negative, &m_walk);
    if (!m_walk.First(m_bit)) NextPart();
}

void omi_SetIT::NextPart() {
    if (m_part == Part::Negative) {
        SetBitTraverseData(&m_set->m_members, &m_walk);
        m_part = Part::Members;
        if (m_walk.First(m_bit)) return;
    }
    m_part = Part::None;
}
