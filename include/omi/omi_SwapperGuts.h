#pragma once
#include <kzm_export.h>

#include <bit>
#include <cstddef>
#include <cstring>

// Arrays of unsigned integers to and from the external byte order, which is big-endian: the most
// significant byte first, whatever the machine. Signed and floating values pass as the unsigned
// integer of the same width (std::bit_cast).
//
// Byte buffers need no alignment. A conversion may run in place, with both arguments the same
// address; otherwise the two must not overlap. Arrays are converted in one pass at the speed of
// memory. A count of 0 or less does nothing, and the addresses are then not looked at.
//
// `unsigned long` is converted with the width that it has on the platform: use fixed-width types
// for data that travels.
class KZM_API omi_SwapperGuts {
public:
    // From the machine's order: n elements into 2, 4 or 8 bytes each.
    static void ExternalizeArray(void* out, const unsigned short* in, std::ptrdiff_t n);
    static void ExternalizeArray(void* out, const unsigned int* in, std::ptrdiff_t n);
    static void ExternalizeArray(void* out, const unsigned long* in, std::ptrdiff_t n);
    static void ExternalizeArray(void* out, const unsigned long long* in, std::ptrdiff_t n);

    // Back into the machine's order.
    static void InternalizeArray(const void* in, unsigned short* out, std::ptrdiff_t n);
    static void InternalizeArray(const void* in, unsigned int* out, std::ptrdiff_t n);
    static void InternalizeArray(const void* in, unsigned long* out, std::ptrdiff_t n);
    static void InternalizeArray(const void* in, unsigned long long* out, std::ptrdiff_t n);

    // One element.
    static void SwapOut(void* out, unsigned short value) { Store(out, value); }
    static void SwapOut(void* out, unsigned int value) { Store(out, value); }
    static void SwapOut(void* out, unsigned long value) { Store(out, value); }
    static void SwapOut(void* out, unsigned long long value) { Store(out, value); }

    // One element back. The address needs no alignment.
    static void SwapIn(const void* in, unsigned short& value) { Load(in, value); }
    static void SwapIn(const void* in, unsigned int& value) { Load(in, value); }
    static void SwapIn(const void* in, unsigned long& value) { Load(in, value); }
    static void SwapIn(const void* in, unsigned long long& value) { Load(in, value); }

    // As they stand. The two may overlap.
    static void CopyBytes(void* destination, const void* source, std::ptrdiff_t n);

private:
    template <class T>
    static T BigEndian(T value) {
        if constexpr (std::endian::native == std::endian::big) return value;
        if constexpr (sizeof(T) == 2) return __builtin_bswap16(value);
        if constexpr (sizeof(T) == 4) return static_cast<T>(__builtin_bswap32(value));
        if constexpr (sizeof(T) == 8) return static_cast<T>(__builtin_bswap64(value));
    }
    template <class T>
    static void Store(void* out, T value) {
        value = BigEndian(value);
        std::memcpy(out, &value, sizeof value);
    }
    template <class T>
    static void Load(const void* in, T& value) {
        T loaded;
        std::memcpy(&loaded, in, sizeof loaded);
        value = BigEndian(loaded);
    }
    template <class T>
    static void Convert(void* out, const void* in, std::ptrdiff_t n);
};
