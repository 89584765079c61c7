#pragma once
#include <coreutils/aio_ostream.h>
#include <coreutils/atr_String.h>
#include <cow/cow_String.h>

#include <istream>
#include <streambuf>
#include <string>
#include <string_view>
#if __has_include(<format>)
#include <format>
#endif

// Texts from the streams of the standard library, which cow_String itself is written to, and those
// streams over the product's own.

// A word, as for std::string: leading blanks are passed over, the stream's width limits it. If
// nothing could be read, failbit is set and the text is empty.
inline std::istream& operator>>(std::istream& in, cow_String& text) {
    std::string word;
    in >> word;
    text = cow_String(std::string_view(word));
    return in;
}

// The bytes up to the delimiter, which is taken and left out.
inline std::istream& cow_GetLine(std::istream& in, cow_String& line, char delimiter = '\n') {
    std::string bytes;
    std::getline(in, bytes, delimiter);
    line = cow_String(std::string_view(bytes));
    return in;
}

// Buffer of a std::ostream that writes to an aio_ostream, for code that knows only the former:
//
//     aio_streambuf buffer(report);
//     std::ostream out(&buffer);
//     out << std::setw(8) << value << std::endl;
//
// Collects up to 255 bytes; std::flush and the destructor hand them on, and std::flush flushes the
// aio_ostream as well. Once that is not good, the std::ostream fails. The two must not be written
// by turns without a flush between them. A width set with aio_setwidth applies to what comes first.
class aio_streambuf final : public std::streambuf {
public:
    // The target is not owned.
    explicit aio_streambuf(aio_ostream& target) : m_target(&target) { Empty(); }
    aio_streambuf(const aio_streambuf&) = delete;
    aio_streambuf& operator=(const aio_streambuf&) = delete;
    ~aio_streambuf() override {
        try {
            HandOn();
        } catch (...) {  // memory for a collecting stream; what is left is lost
        }
    }

protected:
    // What std::ostream calls when the buffer is full and when it is flushed.
    int_type overflow(int_type c) override {
        if (!HandOn()) return traits_type::eof();
        if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }
    int sync() override {
        if (!HandOn()) return -1;
        return m_target->flush().good() ? 0 : -1;
    }

private:
    void Empty() { setp(m_bytes, m_bytes + sizeof m_bytes - 1); }
    bool HandOn() {
        *pptr() = '\0';
        for (const char* at = pbase(); at < pptr();
             ++at) {  // texts and the zero bytes between them
            if (*at != '\0') {
                m_target->print(at);
                at += std::char_traits<char>::length(at);
            }
            if (at < pptr()) m_target->put('\0');
        }
        Empty();
        return m_target->good();
    }

    aio_ostream* m_target;
    char m_bytes[256];  // the last for a terminator
};

#ifdef __cpp_lib_format
// As std::string_view is formatted. Lists and arrays are ranges, which C++23 formats by itself.
template <>
struct std::formatter<cow_String> : std::formatter<std::string_view> {
    auto format(const cow_String& text, auto& context) const {
        return std::formatter<std::string_view>::format(text, context);
    }
};
template <>
struct std::formatter<atr_String> : std::formatter<std::string_view> {
    auto format(const atr_String& text, auto& context) const {
        return std::formatter<std::string_view>::format(text, context);
    }
};
#endif
