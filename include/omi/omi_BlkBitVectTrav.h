#pragma once
#include <omi/omi_BlkBitVect.h>

#include <bit>

class omi_BlkBitVectTrav;

// Gives `trav` the shape and the table of `vect`; neither may be null. The traversal stands nowhere
// until First, Last or SetCurrent; its constructor calls this.
KZM_API void SetBitTraverseData(const omi_BlkBitVect* vect, omi_BlkBitVectTrav* trav);

// Walks the set bits of one bit vector upwards and downwards. It works on the vector's own table:
// it must not be used any more after the table has grown or a block has been freed, which also a
// query of a vector with a stale count does. Setting and clearing bits of present blocks is fine.
//
//     omi_BlkBitVectTrav trav(&vector);
//     unsigned i;
//     for (bool more = trav.First(i); more; more = trav.Next(i)) Use(i);
class KZM_API omi_BlkBitVectTrav {
public:
    omi_BlkBitVectTrav();  // over no bits, until SetBitTraverseData
    // Over that vector, standing nowhere.
    explicit omi_BlkBitVectTrav(const omi_BlkBitVect* vect);
    // Over the same vector, at the same place.
    omi_BlkBitVectTrav(const omi_BlkBitVectTrav& other);
    omi_BlkBitVectTrav& operator=(const omi_BlkBitVectTrav& other);
    virtual ~omi_BlkBitVectTrav();

    // Each moves to the bit it names and puts its number into i, or returns false: then the
    // traversal stands nowhere, First and Next have put 0 into i, Last and Prev have left it. From
    // nowhere, Next and Prev return false.
    bool First(unsigned int& i);
    bool Last(unsigned int& i);

    // To the neighbouring set bit; false beyond the ends, as said above.
    bool Next(unsigned int& i) {
        if (m_word) {
            const unsigned int above = *m_word & (0u - (m_mask << 1));
            if (above) {
                m_mask = above & (0u - above);
                i = m_index = (m_index & ~31u) + static_cast<unsigned int>(std::countr_zero(above));
                return true;
            }
        }
        return NextWord(i);
    }

    // Downwards in the same way.
    bool Prev(unsigned int& i) {
        if (m_word) {
            const unsigned int below = *m_word & (m_mask - 1);
            if (below) return Stand(31 - std::countl_zero(below), i);
        }
        return PrevWord(i);
    }

    // Moves to bit i if it is set, else to the nearest set bit above it (forward) or below it, and
    // puts that bit's number into i. False if there is none; i is of no use then.
    bool SetCurrent(unsigned int& i, bool forward);

protected:
    // Works out the bits of a block anew and makes the traversal stand nowhere.
    void Initomi_BlkBitVect();

private:
    friend struct kzm_Layout;
    friend KZM_API void SetBitTraverseData(const omi_BlkBitVect* vect, omi_BlkBitVectTrav* trav);

    // The present word's bit `bit` becomes the current one.
    bool Stand(int bit, unsigned int& i) {
        m_mask = 1u << bit;
        i = m_index = (m_index & ~31u) + static_cast<unsigned int>(bit);
        return true;
    }

    bool NextWord(unsigned int& i);
    bool PrevWord(unsigned int& i);
    void EnterBlock(unsigned int slot, unsigned int word);
    bool ScanUp(unsigned int& i);
    bool ScanDown(unsigned int& i);

    unsigned int m_slotCount;
    unsigned int m_blockSize;  // words
    unsigned int m_blockShift;
    unsigned int m_blockMask;
    unsigned int** m_table;  // the vector's own
    unsigned int m_bitsPerBlock;
    unsigned int m_slot;
    unsigned int* m_word;  // null while the traversal stands nowhere
    unsigned int* m_firstWord;
    unsigned int* m_endWord;
    unsigned int m_mask;   // the current bit of the word
    unsigned int m_index;  // the current bit's number
};
