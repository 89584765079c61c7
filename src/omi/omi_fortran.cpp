#include <alloc/mem_alloc.h>
#include <omi/omi_fortran.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

constexpr int kShortTextSize = 80;

std::size_t Trimmed(const char* text, int length) {
    std::size_t n = text && length > 0 ? static_cast<std::size_t>(length) : 0;
    while (n > 0 && text[n - 1] == ' ') --n;
    return n;
}

void* AllocateOrNull(std::size_t size) noexcept {
    try {
        return mem_OperatorNewThrow(size);
    } catch (...) {
        return nullptr;
    }
}

// The blocks hold bufferSize bytes each, of which the text and its terminator may take textSize.
char** ConvertList(int n, const char* texts, int length, std::size_t bufferSize, int textSize) {
    const std::size_t count = n > 0 ? static_cast<std::size_t>(n) : 0;
    if (count > SIZE_MAX / sizeof(char*)) return nullptr;
    auto** const list = static_cast<char**>(AllocateOrNull(count * sizeof(char*)));
    if (!list) return nullptr;
    const std::size_t step = length > 0 ? static_cast<std::size_t>(length) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        list[i] = static_cast<char*>(AllocateOrNull(bufferSize));
        if (!list[i]) {
            mem_Free(list);
            return nullptr;
        }
        omi_fortranFileNameConvert(list[i], textSize, texts ? texts + i * step : nullptr, length);
    }
    return list;
}

}  // namespace

void omi_fortranStringConvert(char* out, const char* text, int length) {
    omi_fortranFileNameConvert(out, kShortTextSize, text, length);
}

void omi_fortranFileNameConvert(char* out, int size, const char* text, int length) {
    if (!out || size <= 0) return;
    const std::size_t n = std::min(Trimmed(text, length), static_cast<std::size_t>(size) - 1);
    if (n > 0) std::memmove(out, text, n);
    out[n] = '\0';
}

void omi_fortranStringEnblank(char* out, int length, const char* text) {
    if (!out || length <= 0) return;
    const std::size_t room = static_cast<std::size_t>(length);
    const std::size_t n = text ? strnlen(text, room) : 0;
    if (n > 0) std::memmove(out, text, n);
    std::memset(out + n, ' ', room - n);
}

char** omi_fortranStringListConvert(int n, const char* texts, int length) {
    const std::size_t room = static_cast<std::size_t>(std::max(length, 0)) + 1;
    return ConvertList(n, texts, length, room, kShortTextSize);
}

char** omi_fortranStringVarListConvert(int n, int size, const char* texts, int length) {
    const int room = std::max(size, 1);
    return ConvertList(n, texts, length, static_cast<std::size_t>(room), room);
}

void omi_fortranStringListFree(int n, char** list) {
    if (!list) return;
    for (int i = 0; i < n; ++i) mem_Free(list[i]);
    mem_Free(list);
}
