#include <omi/omi_SwapperGuts.h>

#include <array>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace {

template <class T>
void ReverseElements(unsigned char* out, const unsigned char* in, std::size_t size) {
    for (std::size_t i = 0; i < size; i += sizeof(T)) {
        T value;
        omi_SwapperGuts::SwapIn(in + i, value);
        std::memcpy(out + i, &value, sizeof value);
    }
}

#if defined(__x86_64__) || defined(__i386__)

// Arrays past this size fit no cache; what is written then goes around the caches.
constexpr std::size_t kStreamedBytes = std::size_t{16} << 20;

template <bool kStreaming>
[[gnu::always_inline, gnu::target("avx2")]] inline void ReverseVector(unsigned char* out,
                                                                      const unsigned char* in,
                                                                      __m256i order) {
    const __m256i loaded = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    const __m256i reversed = _mm256_shuffle_epi8(loaded, order);
    if constexpr (kStreaming)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(out), reversed);
    else
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), reversed);
}

// Converts the whole vectors of the array and returns their size in bytes. Each vector is loaded
// before it is stored, so that the buffers may be one. Streaming needs `out` aligned to a vector.
template <std::size_t kWidth, bool kStreaming>
[[gnu::target("avx2")]] std::size_t ReverseVectors(unsigned char* out, const unsigned char* in,
                                                   std::size_t size) {
    alignas(32) static constexpr auto kOrder = [] {
        std::array<unsigned char, 32> order{};
        for (std::size_t i = 0; i < 32; ++i)
            order[i] = static_cast<unsigned char>((i % 16) ^ (kWidth - 1));
        return order;
    }();
    const __m256i order = _mm256_load_si256(reinterpret_cast<const __m256i*>(kOrder.data()));
    std::size_t done = 0;
    for (; size - done >= 128; done += 128) {
#pragma GCC unroll 4
        for (std::size_t i = done; i < done + 128; i += 32)
            ReverseVector<kStreaming>(out + i, in + i, order);
    }
    for (; size - done >= 32; done += 32) ReverseVector<kStreaming>(out + done, in + done, order);
    if constexpr (kStreaming) _mm_sfence();
    return done;
}

// Where whole elements lead to a place aligned to a vector, no store crosses cache lines.
template <class T>
std::size_t ReverseHead(unsigned char* out, const unsigned char* in, std::size_t size) {
    if (size < 64 || !__builtin_cpu_supports("avx2")) return 0;
    const std::size_t toAligned = (0u - reinterpret_cast<std::uintptr_t>(out)) % 32;
    if (toAligned % sizeof(T) != 0) return ReverseVectors<sizeof(T), false>(out, in, size);
    ReverseElements<T>(out, in, toAligned);
    const bool streaming = size >= kStreamedBytes && out != in;
    const auto reverse =
        streaming ? ReverseVectors<sizeof(T), true> : ReverseVectors<sizeof(T), false>;
    return toAligned + reverse(out + toAligned, in + toAligned, size - toAligned);
}

#else

template <class T>
std::size_t ReverseHead(unsigned char*, const unsigned char*, std::size_t) {
    return 0;
}

#endif

}  // namespace

template <class T>
void omi_SwapperGuts::Convert(void* out, const void* in, std::ptrdiff_t n) {
    if (n <= 0) return;
    const std::size_t size = static_cast<std::size_t>(n) * sizeof(T);
    if constexpr (std::endian::native == std::endian::big) {
        std::memmove(out, in, size);
    } else {
        auto* const to = static_cast<unsigned char*>(out);
        auto* const from = static_cast<const unsigned char*>(in);
        const std::size_t done = ReverseHead<T>(to, from, size);
        ReverseElements<T>(to + done, from + done, size - done);
    }
}

#define KZM_BOTH_WAYS(T)                                                               \
    void omi_SwapperGuts::ExternalizeArray(void* out, const T* in, std::ptrdiff_t n) { \
        Convert<T>(out, in, n);                                                        \
    }                                                                                  \
    void omi_SwapperGuts::InternalizeArray(const void* in, T* out, std::ptrdiff_t n) { \
        Convert<T>(out, in, n);                                                        \
    }
KZM_BOTH_WAYS(unsigned short)
KZM_BOTH_WAYS(unsigned int)
KZM_BOTH_WAYS(unsigned long)
KZM_BOTH_WAYS(unsigned long long)

void omi_SwapperGuts::CopyBytes(void* destination, const void* source, std::ptrdiff_t n) {
    if (n > 0) std::memmove(destination, source, static_cast<std::size_t>(n));
}
