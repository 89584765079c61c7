#pragma once
#include <kzm_export.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

// The bucket of a key: a number below `buckets`, and 0 if there are none. Keys in arithmetic
// progression and aligned addresses spread well. The same key of the same width gives the same
// bucket on every system, addresses excepted.
template <std::integral T>
unsigned HashValue(T key, unsigned buckets) {
    std::uint64_t bits = static_cast<std::make_unsigned_t<T>>(key);
    bits *= 0x9E3779B97F4A7C15u;
    bits ^= bits >> 32;
    bits *= 0xD6E8FEB86659FD93u;
    return static_cast<unsigned>(((bits >> 32) * buckets) >> 32);
}
inline unsigned HashValue(const void* key, unsigned buckets) {
    return HashValue(std::uint64_t{reinterpret_cast<std::uintptr_t>(key)}, buckets);
}

// By the bytes of the text; null is the empty text.
KZM_API unsigned HashValue(const char* key, unsigned buckets);
