#include <coreutils/aio_ostream.h>

#include <algorithm>
#include <charconv>

namespace {

struct NumberText {
    template <class Number>
    explicit NumberText(Number value)
        : m_end(std::to_chars(m_text, m_text + sizeof m_text, value).ptr) {}
    std::string_view View() const { return {m_text, static_cast<std::size_t>(m_end - m_text)}; }
    char m_text[32];
    const char* m_end;
};

}  // namespace

aio_ostream& aio_ostream::aio_setwidth(int width) {
    m_width = std::max(width, 0);
    return *this;
}

aio_ostream& aio_ostream::print(const char* text) {
    Item(atr_StringBase::OrEmpty(text));
    return *this;
}

aio_ostream& aio_ostream::print(const atr_StringBase& text) {
    Item(text);
    return *this;
}

aio_ostream& aio_ostream::print_int(int value) {
    Item(NumberText(value).View());
    return *this;
}

aio_ostream& aio_ostream::print_u_int64(std::uint64_t value) {
    Item(NumberText(value).View());
    return *this;
}

aio_ostream& aio_ostream::print_double(double value) {
    Item(NumberText(value).View());
    return *this;
}

aio_ostream& aio_ostream::put(char c) {
    Write(std::string_view(&c, 1));
    return *this;
}

aio_ostream& aio_ostream::flush() {
    if (m_file && std::fflush(m_file) != 0) m_good = false;
    ++m_flushCount;
    return *this;
}

void aio_ostream::Item(std::string_view text) {
    constexpr std::string_view kBlanks = "                ";
    const auto width = static_cast<std::size_t>(m_width);
    m_width = 0;
    for (std::size_t missing = width > text.size() ? width - text.size() : 0; missing > 0;) {
        const std::size_t n = std::min(missing, kBlanks.size());
        Write(kBlanks.substr(0, n));
        missing -= n;
    }
    Write(text);
}

void aio_ostream::Write(std::string_view text) {
    if (m_collected) m_collected->append(text);
    if (m_file && std::fwrite(text.data(), 1, text.size(), m_file) != text.size()) m_good = false;
}
