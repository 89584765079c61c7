#include <gtest/gtest.h>
#include <omi/omi_SwapperGuts.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace {

template <class T>
class ByteOrder : public testing::Test {};
using Elements =
    testing::Types<std::uint16_t, std::uint32_t, std::uint64_t, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(ByteOrder, Elements);

using Bytes = std::vector<unsigned char>;

template <class T>
std::vector<T> Values(std::size_t n) {
    std::vector<T> values(n);
    std::uint64_t state = 1;
    for (T& value : values)
        value = static_cast<T>((state = state * 6364136223846793005u + 1442695040888963407u) >> 17);
    return values;
}

// What stands around the converted bytes must stay 0xEE.
template <class T>
Bytes Externalized(const T* values, std::size_t n, std::size_t offset) {
    Bytes bytes(offset + n * sizeof(T) + 8, 0xEE);
    omi_SwapperGuts::ExternalizeArray(&bytes[offset], values, static_cast<std::ptrdiff_t>(n));
    return bytes;
}

TYPED_TEST(ByteOrder, ArraysOfAnyLengthAtAnyAddressGoOutBigEndianAndComeBack) {
    for (std::size_t n = 0; n < 70; ++n) {
        for (const std::size_t offset : {0, 1, 3, 8}) {
            SCOPED_TRACE(n);
            const std::vector<TypeParam> values = Values<TypeParam>(n);
            Bytes expected(offset, 0xEE);
            for (const TypeParam value : values)
                for (std::size_t i = sizeof value; i-- > 0;)
                    expected.push_back(static_cast<unsigned char>(value >> (8 * i)));
            expected.resize(expected.size() + 8, 0xEE);
            const Bytes bytes = Externalized(values.data(), n, offset);
            EXPECT_EQ(bytes, expected);
            std::vector<TypeParam> back(n);
            const auto count = static_cast<std::ptrdiff_t>(n);
            omi_SwapperGuts::InternalizeArray(&bytes[offset], back.data(), count);
            EXPECT_EQ(back, values);
            omi_SwapperGuts::ExternalizeArray(back.data(), back.data(), count);
            omi_SwapperGuts::InternalizeArray(back.data(), back.data(), count);
            EXPECT_EQ(back, values);
            for (std::size_t i = 0; i < n; ++i) {
                unsigned char one[1 + sizeof(TypeParam)];
                omi_SwapperGuts::SwapOut(one + 1, values[i]);
                EXPECT_TRUE(std::equal(one + 1, one + sizeof one,
                                       &expected[offset + i * sizeof(TypeParam)]));
                omi_SwapperGuts::SwapIn(one + 1, back[0]);
                EXPECT_EQ(back[0], values[i]);
            }
        }
    }
}

TYPED_TEST(ByteOrder, ArraysLargerThanTheCachesConvertAsTheirPieces) {
    constexpr std::size_t kPiece = 1009;
    const std::vector<TypeParam> values = Values<TypeParam>((17u << 20) / sizeof(TypeParam));
    for (const std::size_t offset : {0, 1, 8}) {
        const Bytes whole = Externalized(values.data(), values.size(), offset);
        for (std::size_t i = 0; i < values.size(); i += kPiece) {
            const std::size_t n = std::min(kPiece, values.size() - i);
            const Bytes piece = Externalized(&values[i], n, 0);
            ASSERT_TRUE(std::equal(
                piece.begin(), piece.end() - 8,
                whole.begin() + static_cast<std::ptrdiff_t>(offset + i * sizeof(TypeParam))));
        }
    }
}

TEST(ByteOrder, NoElementsNeedNoBuffers) {
    std::uint64_t* const none = nullptr;
    for (const std::ptrdiff_t n : {0, -1}) {
        omi_SwapperGuts::ExternalizeArray(nullptr, none, n);
        omi_SwapperGuts::InternalizeArray(nullptr, none, n);
        omi_SwapperGuts::CopyBytes(nullptr, nullptr, n);
    }
}

TEST(ByteOrder, CopyBytesMovesThemAsTheyStandAlsoWhereBuffersOverlap) {
    char text[] = "abcdef";
    omi_SwapperGuts::CopyBytes(text + 1, text, 4);
    EXPECT_STREQ(text, "aabcdf");
}

}  // namespace
