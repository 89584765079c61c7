#pragma once
#include <kzm_export.h>

#include <cstdint>

// The bucket of a key: a number below `buckets`, and 0 if there are none. Keys in arithmetic
// progression and aligned addresses spread well. The same key gives the same bucket on every
// system, addresses excepted.
inline unsigned HashValue(std::uint64_t key, unsigned buckets) {
    key *= 0x9E3779B97F4A7C15u;
    key ^= key >> 32;
    key *= 0xD6E8FEB86659FD93u;
    return static_cast<unsigned>(((key >> 32) * buckets) >> 32);
}
inline unsigned HashValue(std::int64_t key, unsigned buckets) {
    return HashValue(static_cast<std::uint64_t>(key), buckets);
}
inline unsigned HashValue(unsigned key, unsigned buckets) {
    return HashValue(static_cast<std::uint64_t>(key), buckets);
}
inline unsigned HashValue(int key, unsigned buckets) {
    return HashValue(static_cast<std::uint64_t>(static_cast<unsigned>(key)), buckets);
}
inline unsigned HashValue(const void* key, unsigned buckets) {
    return HashValue(static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key)), buckets);
}

// By the bytes of the text; null is the empty text.
KZM_API unsigned HashValue(const char* key, unsigned buckets);
