#include <coreutils/atr_StringBase.h>
#include <host/KZMBasFatalError.h>
#include <host/host_take.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <functional>
#include <utility>

namespace {

constinit const char g_emptyText[1] = {'\0'};
constexpr int kShort = 1024;

[[noreturn]] void RaiseOutOfText() {
    KZMBasFatalError("AssertionFailed:pos >= 0 && pos <= Length()", "", "", "", "atr_StringBase",
                     __LINE__);
}

// Of a record for that many bytes: whole multiples of 8, and 8 for the text at least.
constexpr std::size_t BlockSize(int capacity) {
    const std::size_t text = static_cast<std::size_t>(std::max(capacity, 7)) + 1;
    return (sizeof(atr_StringRecord) + text + 7) & ~std::size_t{7};
}

// Unshared; the caller writes a text of that length and its terminator.
inline atr_StringRecord* RecordIn(void* block, std::size_t size, int length) {
    const std::size_t room = size - sizeof(atr_StringRecord) - 1;
    auto* const rep = ::new (block) atr_StringRecord;
    rep->m_count = 1;
    rep->m_capacity = static_cast<std::int32_t>(std::min<std::size_t>(room, INT_MAX));
    rep->m_length = length;
    if (length < 8) std::memset(rep->Text(), 0, 8);
    return rep;
}
atr_StringRecord* NewRecord(int capacity, int length) {
    const std::size_t size = BlockSize(capacity);
    return RecordIn(host_heap::TakePacked(size), size, length);
}

// As memmove, for n from 0 on and a source that is null if n is 0.
void Move(char* to, const char* from, int n) {
    if (n > 0) std::memmove(to, from, static_cast<std::size_t>(n));
}

// Of between `size` and twice as many bytes.
template <std::size_t size>
inline void CopyEnds(char* to, const char* from, std::size_t n) {
    std::memcpy(to, from, size);
    std::memcpy(to + n - size, from + n - size, size);
}

// To another place. Names are short, and for them a call costs more than the bytes.
constexpr int kName = 128;
inline void CopyName(char* to, const char* from, int count) {
    const auto n = static_cast<std::size_t>(count);
    if (n >= 64) return CopyEnds<64>(to, from, n);
    if (n >= 32) return CopyEnds<32>(to, from, n);
    if (n >= 16) return CopyEnds<16>(to, from, n);
    if (n >= 8) return CopyEnds<8>(to, from, n);
    if (n >= 4) return CopyEnds<4>(to, from, n);
    to[0] = from[0];
    if (n > 1) CopyEnds<2>(to, from, n);
}
void Copy(char* to, const char* from, int count) {
    if (count > kName)
        std::memcpy(to, from, static_cast<std::size_t>(count));
    else if (count > 0)
        CopyName(to, from, count);
}

// Not inlined: else the short way of a constructor would save registers for this one, and this
// compiler would warn of lengths that a number's text cannot have.
[[gnu::noinline]] atr_StringRecord* RecordOf(const char* s, int n) {
    if (!s || n <= 0) return nullptr;
    atr_StringRecord* const rep = NewRecord(n, n);
    Copy(rep->Text(), s, n);
    rep->Text()[n] = '\0';
    return rep;
}

template <class Number>
atr_StringRecord* RecordOfNumber(Number value) {
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return RecordOf(text, static_cast<int>(end.ptr - text));
}

// The capacity for a text that is changed while others share it.
int RoomToAddTo(int length, int newLength) {
    // A copy to which is added will often get more.
    const bool grows = length > 0 && newLength > length && newLength < kShort;
    return grows ? newLength + newLength / 2 : newLength;
}

// How many bytes a text has from `from` on, at most n.
int Available(int length, int from, int n) { return std::clamp(n, 0, length - from); }

std::string_view View(const char* s, int n) {
    return n > 0 ? std::string_view(s, static_cast<std::size_t>(n)) : std::string_view();
}

bool OccursIn(char c, const char* set) { return c != '\0' && std::strchr(set, c); }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

}  // namespace

const char* atr_StringBase::EmptyText() { return g_emptyText; }

int atr_StringBase::TextLength(const char* s) { return LengthOf(s); }

atr_StringBase::atr_StringBase(const char* s) : atr_StringBase(s, TextLength(s)) {}

atr_StringBase::atr_StringBase(const char* s, int n) {
    if (s && n > 0 && n <= kName) [[likely]] {
        const std::size_t size = BlockSize(n);
        if (void* const block = host_heap::PackedFromHand(size)) [[likely]] {
            m_rep = RecordIn(block, size, n);
            m_data = m_rep->Text();
            CopyName(m_data, s, n);
            m_data[n] = '\0';
            return;
        }
    }
    Install(RecordOf(s, s && n == INT_MAX ? TextLength(s) : n));
}

atr_StringBase::atr_StringBase(int value) : atr_StringBase() { Install(RecordOfNumber(value)); }
atr_StringBase::atr_StringBase(float value) : atr_StringBase() { Install(RecordOfNumber(value)); }
atr_StringBase::atr_StringBase(double value) : atr_StringBase() { Install(RecordOfNumber(value)); }

atr_StringBase::atr_StringBase(int n, PreSizeEnm) : atr_StringBase() {
    if (n > 0) Install(NewRecord(n, 0));
}

atr_StringBase& atr_StringBase::operator=(const char* s) {
    Splice(0, Length(), s, TextLength(s));
    return *this;
}

char& atr_StringBase::operator[](int pos) {
    const int length = Length();
    if (pos < 0 || pos > length) RaiseOutOfText();
    if (!Exclusive()) {
        atr_StringRecord* const rep = NewRecord(length, length);
        Copy(rep->Text(), m_data, length);
        rep->Text()[length] = '\0';
        DropReference();
        Install(rep);
    }
    return m_data[pos];
}

int atr_StringBase::Find(const char* s, int pos) const {
    const auto from = static_cast<std::size_t>(ClampPosition(pos));
    const std::size_t found = std::string_view(*this).find(OrEmpty(s), from);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

int atr_StringBase::rfind(const char* s, int length, int pos) const {
    const auto from = static_cast<std::size_t>(ClampPosition(pos));
    const std::size_t found = std::string_view(*this).rfind(View(s, s ? length : 0), from);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

int atr_StringBase::ClampPosition(int pos) const { return std::clamp(pos, 0, Length()); }

int atr_StringBase::Substr(int pos, int n) const {
    return Available(Length(), ClampPosition(pos), n);
}

void atr_StringBase::append(const char* s, int length, int from, int n) {
    if (!s || length <= 0) return;
    const int start = std::clamp(from, 0, length);
    const int added = Available(length, start, n);
    const int end = Length();
    if (added > 0 && added <= kName && Exclusive() && added <= m_rep->m_capacity - end) {
        CopyName(m_data + end, s + start, added);
        m_data[end + added] = '\0';
        m_rep->m_length = end + added;
    } else {
        Splice(end, 0, s + start, added);
    }
}

void atr_StringBase::insert(int pos, const char* s, int length, int from, int n) {
    if (!s) return;
    const int start = std::clamp(from, 0, length);
    Splice(ClampPosition(pos), 0, s + start, Available(length, start, n));
}

void atr_StringBase::Erase(int pos, int n) {
    const int from = ClampPosition(pos);
    Splice(from, Available(Length(), from, n), nullptr, 0);
}

void atr_StringBase::Replace(int pos, int n, const char* s, int m) {
    const int from = ClampPosition(pos);
    const void* const end = s && m > 0 ? std::memchr(s, '\0', static_cast<std::size_t>(m)) : s;
    const int added = end ? static_cast<int>(static_cast<const char*>(end) - s) : s ? m : 0;
    Splice(from, Available(Length(), from, n), s, added);
}

void atr_StringBase::LeftTrim(const char* set) {
    int n = 0;
    while (n < Length() && OccursIn(m_data[n], OrEmpty(set))) ++n;
    Splice(0, n, nullptr, 0);
}

void atr_StringBase::RightTrim(const char* set) {
    int kept = Length();
    while (kept > 0 && OccursIn(m_data[kept - 1], OrEmpty(set))) --kept;
    Splice(kept, Length() - kept, nullptr, 0);
}

void atr_StringBase::ToLower() {
    const int length = Length();
    int i = 0;
    while (i < length && Lower(m_data[i]) == m_data[i]) ++i;
    if (i == length) return;
    char* const text = &(*this)[0];
    for (; i < length; ++i) text[i] = Lower(text[i]);
}

void atr_StringBase::Capitalize() {
    if (Empty() || Upper(m_data[0]) == m_data[0]) return;
    char& first = (*this)[0];
    first = Upper(first);
}

void atr_StringBase::Delete() { host_heap::GiveBack(m_rep); }

void atr_StringBase::Install(atr_StringRecord* rep) {
    m_rep = rep;
    m_data = rep ? rep->Text() : nullptr;
}

// Every edit: at pos, removes some bytes that exist and puts `added` bytes of s in their place.
void atr_StringBase::Splice(int pos, int removed, const char* s, int added) {
    if (removed == 0 && added == 0) return;
    const int length = Length();
    const int tail = length - pos - removed;
    if (added > INT_MAX - (length - removed)) throw std::bad_alloc();
    const int newLength = length - removed + added;

    if (pos == length && !Exclusive()) {
        atr_StringRecord* const rep = NewRecord(RoomToAddTo(length, newLength), newLength);
        Copy(rep->Text(), m_data, length);
        Copy(rep->Text() + length, s, added);
        rep->Text()[newLength] = '\0';
        DropReference();
        Install(rep);
        return;
    }
    if (Exclusive() && newLength <= m_rep->m_capacity) {
        // With nothing behind the changed place, a source in the own text is only read, never
        // moved.
        const std::less<const char*> before;
        const bool ownSource = added > 0 && !before(s, m_data) && !before(m_data + length, s);
        if (tail == 0 || !ownSource) {
            Move(m_data + pos + added, m_data + pos + removed, tail);
            Move(m_data + pos, s, added);
            m_data[newLength] = '\0';
            m_rep->m_length = newLength;
            return;
        }
    }

    atr_StringRecord* rep = nullptr;
    if (newLength > 0) {
        int capacity = RoomToAddTo(length, newLength);
        if (Exclusive() && newLength > length) {
            const int grown = m_rep->m_capacity;
            capacity = std::max(newLength, grown > INT_MAX / 3 * 2 ? INT_MAX : grown + grown / 2);
        }
        rep = NewRecord(capacity, newLength);
        char* const text = rep->Text();
        Copy(text, m_data, pos);
        Copy(text + pos, s, added);
        Copy(text + pos + added, m_data + pos + removed, tail);
        text[newLength] = '\0';
    }
    DropReference();
    Install(rep);
}
