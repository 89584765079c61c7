#pragma once
#include <kzm_export.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#ifdef KZM_INLINE_HEAP  // see <alloc/mem_alloc.h>
#include <host/host_hand.h>
#endif

// The shared block of a text: this head, then the bytes and a zero byte; of those at least 8 belong
// to the block, so that a word of them may be read at once.
struct atr_StringRecord {
    std::int32_t m_count;     // strings that share the block; plain, as every count of a value
    std::int32_t m_capacity;  // bytes of text that fit, without the terminator
    std::int32_t m_length;    // bytes of text

    // The first byte behind this head.
    char* Text() { return reinterpret_cast<char*>(this + 1); }
};

// Base of every string class of the product: a zero-terminated byte text whose block is shared by
// copies and copied on the first write. Copying, reading and comparing never allocate. Use a
// derived class (cow_String, atr_String); this one is for parameters that take any of them.
//
// In all operations a null text reads as the empty text, positions outside the text are moved to
// its nearest end, and a count is cut to the bytes there are (2147483647: to the end; negative:
// none). A source may lie inside the string itself. Growth is amortised. On exhaustion
// std::bad_alloc is thrown and the string stays as it was; so where a text would grow past
// 2147483647 bytes. A single source is cut to that length.
class KZM_API atr_StringBase {
public:
    // Tells a capacity from a number: a text made with (n, PreSize) is empty and has room for n
    // bytes.
    enum PreSizeEnm { PreSize };

    // Length counts bytes, without the terminator. All O(1).
    int Length() const { return m_rep ? m_rep->m_length : 0; }
    bool Empty() const { return Length() == 0; }
    const char* CStr() const { return m_rep ? m_data : EmptyText(); }  // never null
    operator std::string_view() const {
        return {CStr(), static_cast<std::string_view::size_type>(Length())};
    }

    // Byte order, bytes unsigned, up to the first zero byte: exactly -1, 0 or +1.
    int Compare(const char* s) const { return Sign(std::strcmp(CStr(), OrEmpty(s))); }
    int Compare(const atr_StringBase& s) const {
        return m_data == s.m_data ? 0 : Sign(std::strcmp(CStr(), s.CStr()));
    }

    // Zero byte outside the text.
    char operator[](int pos) const { return pos >= 0 && pos < Length() ? m_data[pos] : '\0'; }

    // The first occurrence that starts at or after pos, -1 if there is none.
    int Find(const char* s, int pos = 0) const;

    // The one zero byte that all empty strings show.
    static const char* EmptyText();

    // Null as the empty text.
    static const char* OrEmpty(const char* s) { return s ? s : ""; }
    static int TextLength(const char* s);  // cut to 2147483647

protected:
    // As TextLength, without a call where the compiler knows the text.
    static int LengthOf(const char* s) {
        constexpr std::size_t most = 2147483647;
        const std::size_t length = s ? std::strlen(s) : 0;
        return static_cast<int>(length < most ? length : most);
    }

    // The empty text.
    atr_StringBase() : m_data(nullptr), m_rep(nullptr) {}
    // Shares the block.
    atr_StringBase(const atr_StringBase& other) noexcept
        : m_data(other.m_data), m_rep(other.m_rep) {
        if (m_rep) ++m_rep->m_count;
    }
    // Up to the terminator.
    explicit atr_StringBase(const char* s);
    atr_StringBase(const char* s, int n);  // n bytes, zero bytes among them are kept
    // The text of a number, as few characters as it takes.
    explicit atr_StringBase(int value);
    explicit atr_StringBase(float value);  // shortest text that reads back as the same value
    explicit atr_StringBase(double value);

    atr_StringBase(int n, PreSizeEnm);  // empty, room for n bytes
    ~atr_StringBase() { DropReference(); }

    // Shares, and drops the share it had.
    atr_StringBase& operator=(const atr_StringBase& other) noexcept {
        if (other.m_rep) ++other.m_rep->m_count;
        DropReference();
        m_data = other.m_data;
        m_rep = other.m_rep;
        return *this;
    }
    // Takes over the text up to its terminator; `s` may lie inside of this text.
    atr_StringBase& operator=(const char* s);

    // The byte for writing, in a private block. Reference and block end with the next change. The
    // byte at Length() may be read but must stay zero; further outside ends the process.
    char& operator[](int pos);

    // The last occurrence that starts at or before pos of the first `length` bytes of s, or -1.
    int rfind(const char* s, int length, int pos) const;

    // The number of bytes from pos on, at most n.
    int Substr(int pos, int n) const;
    // The position, moved to the nearest end of the text.
    int ClampPosition(int pos) const;

    // From s, which has `length` bytes, at most n bytes beginning at `from`.
    void append(const char* s, int length, int from, int n);
    void insert(int pos, const char* s, int length, int from, int n);

    // Changes in place, in a private block.
    void Erase(int pos, int n);
    void Replace(int pos, int n, const char* s, int m);  // by at most m bytes of s
    void LeftTrim(const char* set);                      // bytes that occur in set
    void RightTrim(const char* set);
    void ToLower();     // A to Z
    void Capitalize();  // the first byte, a to z; the rest stays

    void Delete();  // frees the block; the fields are left to the caller

private:
    friend class atr_TextStart;
    friend struct kzm_Layout;

    static int Sign(int order) { return (order > 0) - (order < 0); }
    void DropReference() {
        if (m_rep && --m_rep->m_count == 0 && !ToHand(m_rep)) Delete();
    }
#ifdef KZM_INLINE_HEAP
    static bool ToHand(void* block) { return host_heap::ToHand(block); }
#else
    static bool ToHand(void*) { return false; }
#endif
    bool Exclusive() const { return m_rep && m_rep->m_count == 1; }
    void Install(atr_StringRecord* rep);
    void Splice(int pos, int removed, const char* s, int added);

    char* m_data;
    atr_StringRecord* m_rep;  // null: the empty text
};

// As Compare. Natural order never enters here.
inline bool operator==(const atr_StringBase& a, const atr_StringBase& b) {
    return a.Compare(b) == 0;
}
inline bool operator==(const atr_StringBase& a, const char* b) { return a.Compare(b) == 0; }
inline std::weak_ordering operator<=>(const atr_StringBase& a, const atr_StringBase& b) {
    return a.Compare(b) <=> 0;
}
inline std::weak_ordering operator<=>(const atr_StringBase& a, const char* b) {
    return a.Compare(b) <=> 0;
}
