#pragma once
#include <cow/cow_String.h>
#include <support/boxed.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <type_traits>
#include <vector>

namespace models {

// A test case: bytes that say what to do next and with which operands. It is the same on every
// platform, and whoever makes the bytes, a random engine or a fuzzer, reaches everything.
class Program {
public:
    explicit Program(const std::vector<unsigned char>& bytes, unsigned keys = ~0u)
        : m_at(bytes.data()), m_end(m_at + bytes.size()), m_keys(keys) {}

    bool AtEnd() const { return m_at == m_end; }

    // One byte for n up to 256, else two; zeros once the program is at its end.
    unsigned Below(unsigned n) {
        unsigned drawn = Byte();
        if (n > 256) drawn = drawn << 8 | Byte();
        return n ? drawn % n : 0;
    }
    int Int(int from, int to) { return from + static_cast<int>(Below(unsigned(to - from) + 1)); }
    bool OneIn(unsigned n) { return Below(n) == 0; }

    // Numbers as sparse data has them: in clusters around the edges of words, blocks and tables,
    // on both sides of zero. Uniform ones would never meet. The farthest ones cost a slot table of
    // two megabytes each time a value is copied: long programs keep to the bits of m_keys.
    unsigned Key() {
        static constexpr unsigned kEdges[] = {0,        32,       8192,       1u << 20,   3u << 20,
                                              1u << 21, 1u << 24, 0x7fffff00, 0x80000000, 0};
        const unsigned edge = kEdges[Below(10)] + Below(48) - 16;
        return (OneIn(2) ? 0u - edge : edge) & m_keys;
    }

private:
    unsigned Byte() { return m_at == m_end ? 0 : *m_at++; }

    const unsigned char* m_at;
    const unsigned char* m_end;
    unsigned m_keys;
};

inline std::vector<unsigned char> RandomBytes(unsigned seed, std::size_t size) {
    std::minstd_rand engine(seed);
    std::vector<unsigned char> bytes(size);
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(engine() >> 8);
    return bytes;
}

// Elements, keys and values stand in the twins as small numbers; this is what they stand for in the
// library's values, in the same order.
template <class T>
T As(int code) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(std::uintptr_t{static_cast<unsigned>(code)} * 16);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(std::sqrt(code + 0.1) / 3.0f);
    } else if constexpr (std::is_same_v<T, cow_String>) {
        char text[32] = "";
        if (code) std::snprintf(text, sizeof text, "text no. %011d", code);
        return cow_String(text);
    } else {
        return T(code);
    }
}

}  // namespace models
