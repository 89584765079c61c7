#pragma once
#include <coreutils/atr_StringBase.h>

#include <bit>
#include <cstdint>
#include <cstring>

// The first 8 bytes of a text as a number, to be compared with those of many others without a call:
// of two texts the one with the lesser bytes is the lesser. Of the others only what lies within
// this text and its terminator counts.
class atr_TextStart {
public:
    atr_TextStart() : m_mask(0), m_bytes(0), m_decides(false) {}  // no bytes: all are equal
    explicit atr_TextStart(const atr_StringBase& text) {
        constexpr std::uint64_t kOnes = 0x0101010101010101u;
        const std::uint64_t word = Word(text);
        const std::uint64_t zeroBytes = (word - kOnes) & ~word & kOnes << 7;  // the first is right
        m_decides = zeroBytes != 0;
        m_mask = zeroBytes ^ (zeroBytes - 1);  // all bytes where none is zero
        m_bytes = BytesOf(text);
    }

    std::uint64_t Bytes() const { return m_bytes; }
    std::uint64_t BytesOf(const atr_StringBase& other) const {
        static_assert(std::endian::native == std::endian::little);
        return __builtin_bswap64(Word(other) & m_mask);
    }

    // Texts of equal bytes are equal; else they may differ behind.
    bool Decides() const { return m_decides; }

private:
    static std::uint64_t Word(const atr_StringBase& text) {
        std::uint64_t word = 0;
        if (text.m_rep) [[likely]]
            std::memcpy(&word, text.m_data, sizeof word);
        return word;
    }

    std::uint64_t m_mask;  // the bytes up to the terminator
    std::uint64_t m_bytes;
    bool m_decides;
};
