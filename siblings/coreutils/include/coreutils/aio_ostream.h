#pragma once
#include <coreutils/atr_StringBase.h>
#include <kzm_export.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

// Text output of the product's reports, over an open file or collecting in a string. Neither is
// owned. A width set with aio_setwidth holds for the next print only, which is padded with blanks
// on its left; longer items are written whole.
class KZM_API aio_ostream {
public:
    // A null file takes nothing; such a stream is not good from the start.
    explicit aio_ostream(std::FILE* file) : m_file(file), m_collected(nullptr), m_good(file) {}
    explicit aio_ostream(std::string& collected)
        : m_file(nullptr), m_collected(&collected), m_good(true) {}
    aio_ostream(const aio_ostream&) = delete;
    aio_ostream& operator=(const aio_ostream&) = delete;

    aio_ostream& aio_setwidth(int width);  // negative is 0

    // Each writes one item in the width, and returns the stream.
    aio_ostream& print(const char* text);  // null writes as the empty text
    aio_ostream& print(const atr_StringBase& text);
    aio_ostream& print_int(int value);
    aio_ostream& print_u_int64(std::uint64_t value);
    aio_ostream& print_double(double value);  // shortest text that reads back as the same value
    aio_ostream& put(char c);                 // without regard to the width, which stays
    // Hands on what the file has buffered, and counts the call.
    aio_ostream& flush();

    bool good() const { return m_good; }  // false once anything could not be written
    unsigned flush_count() const { return m_flushCount; }  // calls of flush

private:
    void Item(std::string_view text);
    void Write(std::string_view text);

    std::FILE* m_file;
    std::string* m_collected;
    int m_width = 0;
    unsigned m_flushCount = 0;
    bool m_good;
};

// The member of the same name.
inline aio_ostream& aio_setwidth(aio_ostream& os, int width) { return os.aio_setwidth(width); }
