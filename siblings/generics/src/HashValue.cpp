#include <generics/HashValue.h>

unsigned HashValue(const char* key, unsigned buckets) {
    std::uint64_t hash = 0xCBF29CE484222325u;
    if (key)
        for (; *key; ++key) hash = (hash ^ static_cast<unsigned char>(*key)) * 0x100000001B3u;
    return HashValue(hash, buckets);
}
