#pragma once
#include <coreutils/atr_StringBase.h>

// The core utilities' own string, used for report texts. Shares its block with every other string
// class of the product, so converting between them copies nothing. To edit text use cow_String.
class KZM_API atr_String : public atr_StringBase {
public:
    // The empty text.
    atr_String() = default;
    atr_String(const atr_String& other) = default;
    // Shares the block.
    atr_String(const atr_StringBase& other) : atr_StringBase(other) {}
    // Up to the terminator, of n bytes, or empty with room for n bytes.
    atr_String(const char* s) : atr_StringBase(s) {}
    atr_String(const char* s, int n) : atr_StringBase(s, n) {}
    atr_String(int n, PreSizeEnm size) : atr_StringBase(n, size) {}
    ~atr_String() = default;

    atr_String& operator=(const atr_String& other) = default;
    // Takes over the text up to its terminator.
    atr_String& operator=(const char* s) {
        atr_StringBase::operator=(s);
        return *this;
    }

    // Add at the end; the source may lie in this text. O(1) a byte on average.
    atr_String& Append(const atr_StringBase& s) {
        append(s.CStr(), s.Length(), 0, INT32_MAX);
        return *this;
    }
    atr_String& Append(const char* s) {
        append(s, TextLength(s), 0, INT32_MAX);
        return *this;
    }
    atr_String& Append(const char* s, int n) {  // n bytes of s
        append(s, s ? n : 0, 0, INT32_MAX);
        return *this;
    }
    atr_String& operator+=(const atr_StringBase& s) { return Append(s); }
    atr_String& operator+=(const char* s) { return Append(s); }
};
