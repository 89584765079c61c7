#include <gtest/gtest.h>
#include <omi/omi_SwapperGuts.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

template <class T>
class ByteOrder : public testing::Test {};
using Elements =
    testing::Types<std::uint16_t, std::uint32_t, std::uint64_t, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(ByteOrder, Elements);

template <class T>
std::vector<T> Values(std::size_t n) {
    std::vector<T> values(n);
    std::uint64_t state = 1;
    for (T& value : values) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        value = static_cast<T>(state >> 17);
    }
    return values;
}

// The external form, written down independently: most significant byte first.
template <class T>
std::vector<unsigned char> External(const std::vector<T>& values) {
    std::vector<unsigned char> bytes;
    for (T value : values)
        for (std::size_t i = sizeof(T); i-- > 0;)
            bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return bytes;
}

TYPED_TEST(ByteOrder, ArraysOfAnyLengthAtAnyAddressKeepEveryByteInItsPlace) {
    constexpr unsigned char kUntouched = 0xEE;
    for (std::size_t n = 1; n < 70; ++n) {
        for (std::size_t offset : {0, 1, 3, 8}) {
            SCOPED_TRACE(n);
            const std::vector<TypeParam> values = Values<TypeParam>(n);
            const std::vector<unsigned char> expected = External(values);
            std::vector<unsigned char> bytes(offset + expected.size() + 8, kUntouched);
            const auto count = static_cast<std::ptrdiff_t>(n);
            omi_SwapperGuts::ExternalizeArray(bytes.data() + offset, values.data(), count);
            EXPECT_EQ(std::memcmp(bytes.data() + offset, expected.data(), expected.size()), 0);
            EXPECT_EQ(bytes[offset + expected.size()], kUntouched);

            std::vector<TypeParam> back(n);
            omi_SwapperGuts::InternalizeArray(bytes.data() + offset, back.data(), count);
            EXPECT_EQ(back, values);
            omi_SwapperGuts::ExternalizeArray(back.data(), back.data(), count);  // in place
            EXPECT_EQ(std::memcmp(back.data(), expected.data(), expected.size()), 0);
        }
    }
}

TYPED_TEST(ByteOrder, ArraysLargerThanTheCachesConvertAsSmallOnes) {
    constexpr std::size_t kPiece = 1009;
    const std::vector<TypeParam> values = Values<TypeParam>((17u << 20) / sizeof(TypeParam) + 3);
    const std::size_t size = values.size() * sizeof(TypeParam);
    std::vector<unsigned char> whole(size + 8), pieces(size);
    for (std::size_t i = 0; i < values.size(); i += kPiece) {
        const std::size_t n = std::min(kPiece, values.size() - i);
        omi_SwapperGuts::ExternalizeArray(pieces.data() + i * sizeof(TypeParam), &values[i],
                                          static_cast<std::ptrdiff_t>(n));
    }
    for (std::size_t offset : {0, 1, 8}) {
        omi_SwapperGuts::ExternalizeArray(whole.data() + offset, values.data(),
                                          static_cast<std::ptrdiff_t>(values.size()));
        EXPECT_EQ(std::memcmp(whole.data() + offset, pieces.data(), size), 0);
    }
}

TYPED_TEST(ByteOrder, OneElementIsAnArrayOfOne) {
    unsigned char bytes[1 + sizeof(TypeParam)];
    const std::vector<TypeParam> value = Values<TypeParam>(1);
    omi_SwapperGuts::SwapOut(bytes + 1, value[0]);
    EXPECT_EQ(std::memcmp(bytes + 1, External(value).data(), sizeof(TypeParam)), 0);
    TypeParam back = 0;
    omi_SwapperGuts::SwapIn(bytes + 1, back);
    EXPECT_EQ(back, value[0]);
}

TYPED_TEST(ByteOrder, NoElementsNeedNoBuffers) {
    TypeParam* const none = nullptr;
    for (std::ptrdiff_t n : {0, -1}) {
        omi_SwapperGuts::ExternalizeArray(nullptr, none, n);
        omi_SwapperGuts::InternalizeArray(nullptr, none, n);
        omi_SwapperGuts::CopyBytes(nullptr, nullptr, n);
    }
}

TEST(ByteOrder, FloatingValuesTravelAsTheirBits) {
    unsigned char bytes[8];
    omi_SwapperGuts::SwapOut(bytes, std::bit_cast<std::uint64_t>(-2.0));
    EXPECT_EQ(std::vector<int>(bytes, bytes + 8), (std::vector<int>{0xC0, 0, 0, 0, 0, 0, 0, 0}));
    std::uint64_t bits = 0;
    omi_SwapperGuts::SwapIn(bytes, bits);
    EXPECT_EQ(std::bit_cast<double>(bits), -2.0);
}

TEST(ByteOrder, CopyBytesMovesThemAsTheyStandAlsoWhereBuffersOverlap) {
    char text[] = "abcdef";
    omi_SwapperGuts::CopyBytes(text + 1, text, 4);
    EXPECT_STREQ(text, "aabcdf");
}

}  // namespace
