#include <host/KZMBasFatalError.h>
#include <omi/omi_BlkBitVectTrav.h>

void SetBitTraverseData(const omi_BlkBitVect* vect, omi_BlkBitVectTrav* trav) {
    if (!trav) KZMBasFatalError("AssertionFailed:trav", "", "", "", "omi_BlkBitVectTrav", 27);
    if (!vect) KZMBasFatalError("AssertionFailed:flist", "", "", "", "omi_BlkBitVectTrav", 28);
    trav->m_slotCount = vect->m_slotCount;
    trav->m_blockSize = vect->m_blockSize;
    trav->m_blockShift = vect->m_blockShift;
    trav->m_blockMask = vect->m_blockMask;
    trav->m_table = vect->m_table;
    trav->Initomi_BlkBitVect();
}

omi_BlkBitVectTrav::omi_BlkBitVectTrav()
    : m_slotCount(0), m_blockSize(0), m_blockShift(0), m_blockMask(0), m_table(nullptr) {
    Initomi_BlkBitVect();
}

omi_BlkBitVectTrav::omi_BlkBitVectTrav(const omi_BlkBitVect* vect) {
    SetBitTraverseData(vect, this);
}

omi_BlkBitVectTrav::omi_BlkBitVectTrav(const omi_BlkBitVectTrav& other) = default;
omi_BlkBitVectTrav& omi_BlkBitVectTrav::operator=(const omi_BlkBitVectTrav& other) = default;
omi_BlkBitVectTrav::~omi_BlkBitVectTrav() = default;

void omi_BlkBitVectTrav::Initomi_BlkBitVect() {
    m_bitsPerBlock = m_blockSize * 32;
    m_slot = 0;
    m_word = m_firstWord = m_endWord = nullptr;
    m_mask = 1;
    m_index = 0;
}

bool omi_BlkBitVectTrav::First(unsigned int& i) {
    m_slot = 0;
    return ScanUp(i);
}

bool omi_BlkBitVectTrav::Last(unsigned int& i) {
    m_slot = m_slotCount;
    return ScanDown(i);
}

bool omi_BlkBitVectTrav::SetCurrent(unsigned int& i, bool forward) {
    const unsigned int word = i >> 5;
    const unsigned int slot = word >> m_blockShift;
    if (slot >= m_slotCount) {
        m_word = nullptr;
        return forward ? false : Last(i);
    }
    m_slot = slot;
    if (!m_table[slot]) return forward ? ScanUp(i) : ScanDown(i);
    EnterBlock(slot, word & m_blockMask);
    m_mask = 1u << (i & 31);
    m_index = i;
    if (*m_word & m_mask) return true;
    return forward ? Next(i) : Prev(i);
}

// The first word after the current one, or of a later block, that has a bit.
bool omi_BlkBitVectTrav::NextWord(unsigned int& i) {
    if (!m_word) {
        i = 0;
        return false;
    }
    m_index &= ~31u;
    while (++m_word < m_endWord) {
        m_index += 32;
        if (*m_word) return Stand(std::countr_zero(*m_word), i);
    }
    ++m_slot;
    return ScanUp(i);
}

bool omi_BlkBitVectTrav::PrevWord(unsigned int& i) {
    if (!m_word) return false;
    m_index &= ~31u;
    while (m_word > m_firstWord) {
        --m_word;
        m_index -= 32;
        if (*m_word) return Stand(31 - std::countl_zero(*m_word), i);
    }
    return ScanDown(i);
}

void omi_BlkBitVectTrav::EnterBlock(unsigned int slot, unsigned int word) {
    m_slot = slot;
    m_firstWord = m_table[slot];
    m_endWord = m_firstWord + m_blockSize;
    m_word = m_firstWord + word;
    m_index = (slot << (m_blockShift + 5)) + word * 32;
}

// The lowest bit of the blocks from m_slot upwards.
bool omi_BlkBitVectTrav::ScanUp(unsigned int& i) {
    for (; (m_slot = omi_detail::NextPresent(m_table, m_slot, m_slotCount)) < m_slotCount;
         ++m_slot) {
        EnterBlock(m_slot, 0);
        for (; m_word < m_endWord; ++m_word, m_index += 32)
            if (*m_word) return Stand(std::countr_zero(*m_word), i);
    }
    m_word = nullptr;
    i = 0;
    return false;
}

// The highest bit of the blocks below m_slot.
bool omi_BlkBitVectTrav::ScanDown(unsigned int& i) {
    while (m_slot-- > 0) {
        if (!m_table[m_slot]) continue;
        EnterBlock(m_slot, m_blockSize - 1);
        for (;; --m_word, m_index -= 32) {
            if (*m_word) return Stand(31 - std::countl_zero(*m_word), i);
            if (m_word == m_firstWord) break;
        }
    }
    m_word = nullptr;
    return false;
}
