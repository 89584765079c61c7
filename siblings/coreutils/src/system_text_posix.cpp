#include <cerrno>
#include <cstring>

#include "system_text.h"

namespace system_text {

void Describe(int number, char* text, std::size_t size) {
    text[0] = '\0';
    const int saved = errno;
    const char* const message = strerror_r(number, text, size);
    errno = saved;
    if (message == text) return;
    std::size_t n = std::strlen(message);
    if (n >= size) {
        n = size - 1;
        while (n > 0 && (static_cast<unsigned char>(message[n]) & 0xC0) == 0x80) --n;
    }
    std::memcpy(text, message, n);
    text[n] = '\0';
}

int LastNumber() { return errno; }

}  // namespace system_text
