#pragma once
#include <coreutils/atr_StringBase.h>
#include <coreutils/atr_naturalOrder.h>

#include <concepts>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>

// The text type of the interface: a zero-terminated byte text that is shared between copies and
// copied on the first write. Copying is two pointer copies and an increment; copying, reading and
// comparing never allocate, and an empty string needs no memory at all. A moved-from string keeps
// its text.
//
// Edges, for every operation: a null text is the empty text; a position outside the text is moved
// to its nearest end; a count is cut to the bytes the text has from there, so 2147483647 means to
// the end and a negative count none. Sources may point into the string itself. On exhaustion
// std::bad_alloc is thrown and the string is as before. One thread at a time for a string and all
// its copies.
class KZM_API cow_String : public atr_StringBase {
public:
    // The empty text.
    cow_String() = default;
    cow_String(const cow_String& other) = default;
    cow_String(const atr_StringBase& other) : atr_StringBase(other) {}  // shares
    // Up to the terminator.
    cow_String(const char* s) : atr_StringBase(s, LengthOf(s)) {}
    // n bytes, zero bytes included: s must have them. 2147483647 reads up to the terminator.
    cow_String(const char* s, int n) : atr_StringBase(s, n) {}
    explicit cow_String(std::string_view s);            // as (s.data(), s.size())
    cow_String(int value) : atr_StringBase(value) {}    // "0" for a literal 0, not null
    cow_String(char) = delete;                          // the character or its number? Say which
    cow_String(float value) : atr_StringBase(value) {}  // shortest text that reads back
    cow_String(double value) : atr_StringBase(value) {}
    cow_String(int n, PreSizeEnm size) : atr_StringBase(n, size) {}  // empty, room for n bytes
    ~cow_String() = default;

    cow_String& operator=(const cow_String& other) = default;
    // Takes over the text up to its terminator; `s` may lie inside of this string.
    cow_String& operator=(const char* s) {
        atr_StringBase::operator=(s);
        return *this;
    }

    // Length, Empty, CStr, Compare, Find and the reading operator[] are the base's. Length counts
    // bytes, Compare stops at the first zero byte.

    // The byte for writing: makes the text private even if it is then only read. The reference
    // ends with the next change or copy of the string. Outside 0..Length() the process ends.
    using atr_StringBase::operator[];

    // The last occurrence that starts at or before pos, -1 if there is none.
    int RFind(const char* s, int pos) const { return rfind(s, TextLength(s), pos); }

    // A copy of n bytes from pos on; it shares nothing with this text.
    cow_String Substr(int pos, int n) const {
        const int from = ClampPosition(pos);
        return cow_String(CStr() + from, atr_StringBase::Substr(from, n));
    }

    // Add at the end, zero bytes inside a cow_String included. O(1) a byte on average.
    cow_String& Append(const cow_String& s) {
        append(s.CStr(), s.Length(), 0, kToEnd);
        return *this;
    }
    cow_String& Append(const char* s) {
        append(s, LengthOf(s), 0, kToEnd);
        return *this;
    }
    cow_String& operator+=(const cow_String& s) { return Append(s); }
    cow_String& operator+=(const char* s) { return Append(s); }

    // Puts the first n bytes of s before the byte at pos.
    cow_String& Insert(int pos, const char* s, int n) {
        insert(pos, s, TextLength(s), 0, n);
        return *this;
    }

    // Removes n bytes from pos on, or the whole text.
    cow_String& Erase(int pos, int n) {
        atr_StringBase::Erase(pos, n);
        return *this;
    }
    cow_String& Erase() { return Erase(0, kToEnd); }

    // Puts at most the first m bytes of s in place of n bytes from pos on.
    cow_String& Replace(int pos, int n, const char* s, int m) {
        atr_StringBase::Replace(pos, n, s, m);
        return *this;
    }

    // Remove leading (trailing) bytes that occur in set.
    cow_String& LeftTrim(const char* set) {
        atr_StringBase::LeftTrim(set);
        return *this;
    }
    cow_String& RightTrim(const char* set) {
        atr_StringBase::RightTrim(set);
        return *this;
    }

    // Change ASCII letters only, whatever the locale: all of them, or the first byte to upper case.
    cow_String& ToLower() {
        atr_StringBase::ToLower();
        return *this;
    }
    cow_String& Capitalize() {
        atr_StringBase::Capitalize();
        return *this;
    }

private:
    static constexpr int kToEnd = 2147483647;
};

// Key order of the trees, b compared with a: positive when a sorts before b, the opposite of
// Compare. Bytewise -1, 0 or +1, or as strnatcmp says while natural order is switched on.
template <std::derived_from<atr_StringBase> A, std::derived_from<atr_StringBase> B>
int BtreeCompare(const A& a, const B& b) {
    return atr_getNaturalOrder() != 0 ? strnatcmp(b.CStr(), a.CStr()) : b.Compare(a);
}
inline int BtreeCompare(const cow_String& a, const cow_String& b) {
    return BtreeCompare<cow_String, cow_String>(a, b);
}

// Bit i (from 0 on) of a key in the bitwise search trees: the lowest bit of a byte, taken by turns
// from the front and from the back. False beyond bit Length(). A cheap discriminator, not a code
// of the whole key.
template <std::derived_from<atr_StringBase> Key>
bool cow_MapBit(const Key& key, int i) {
    const int length = key.Length();
    if (i > length) return false;
    const int pos = i % 2 == 0 ? i / 2 : length - 1 - i / 2;
    return (key.CStr()[pos] & 1) != 0;
}
inline bool cow_MapBit(const cow_String& key, int i) { return cow_MapBit<cow_String>(key, i); }

// Writes all bytes, in the width and fill of the stream.
KZM_API std::ostream& operator<<(std::ostream& os, const cow_String& s);

// Agrees with ==, which ends at the first zero byte.
template <>
struct std::hash<cow_String> {
    std::size_t operator()(const cow_String& s) const noexcept {
        return std::hash<std::string_view>()(s.CStr());
    }
};
