#include <gtest/gtest.h>
#include <omi/omi_SwapperGuts.h>
#include <omi/omi_Timer.h>
#include <omi/omi_complex.h>

#include <algorithm>
#include <complex>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

// Lets the system's count of processor time go on, which it does in steps of some milliseconds.
void Work(const omi_Timer& clock) {
    const double before = clock.GetTotalCpuTime();
    while (clock.GetTotalCpuTime() == before && clock.GetElapsedTime() < 10) {
    }
}

TEST(Timer, CountsOnlyWhileItRunsAndResumesWhereItStopped) {
    omi_Timer timer, other;
    other.Start();
    double before = 0;
    for (int run = 0; run < 2; ++run) {
        timer.Start();
        Work(timer);
        const double running = timer.GetElapsedStartTime();
        timer.Start();  // goes on
        timer.Stop();
        EXPECT_TRUE(0 < running && running <= timer.GetElapsedStartTime());
        EXPECT_DOUBLE_EQ(timer.GetElapsedTime(), before + timer.GetElapsedStartTime());
        before = timer.GetElapsedTime();
        const double processor = timer.GetTotalCpuTime();
        Work(other);
        timer.Stop();
        EXPECT_TRUE(timer.GetElapsedTime() == before && timer.GetTotalCpuTime() == processor);
    }
    timer.Reset();
    EXPECT_EQ(timer.GetElapsedTime() + timer.GetElapsedStartTime() + timer.GetTotalCpuTime(), 0);
}

TEST(Complex, AgreesWithTheStandardOne) {
    const double inf = std::numeric_limits<double>::infinity();
    const std::complex<double> cases[] = {{3, 4},  {-1, 0},        {-1, -0.0}, {0, 0},
                                          {0, -2}, {1e300, 1e300}, {inf, 1},   {5e-324, 0}};
    for (const auto& z : cases) {
        SCOPED_TRACE(testing::PrintToString(z));
        const omi_complex c = z;
        EXPECT_EQ(std::complex<double>(c), z);
        EXPECT_DOUBLE_EQ(c.Modulus(), std::abs(z));
        EXPECT_EQ(c.Argument(), std::arg(z));
        EXPECT_EQ(c, omi_complex(z.real(), z.imag()));
        EXPECT_FALSE(c == omi_complex(z.real(), 7) || c == omi_complex(7, z.imag()));
    }
    EXPECT_EQ(omi_complex::Polar(2, std::acos(-1.0) / 2).Imaginary(), 2);
}

template <class T>
class ByteOrder : public testing::Test {};
using Elements =
    testing::Types<std::uint16_t, std::uint32_t, std::uint64_t, unsigned long, unsigned long long>;
TYPED_TEST_SUITE(ByteOrder, Elements);

// What stands around the converted bytes must stay 0xEE.
TYPED_TEST(ByteOrder, ArraysOfAnyLengthAtAnyAddressGoOutBigEndianAndComeBack) {
    std::vector<std::size_t> lengths = {(17u << 20) / sizeof(TypeParam)};  // larger than the caches
    for (std::size_t n = 0; n < 70; ++n) lengths.push_back(n);
    for (const std::size_t n : lengths) {
        for (const std::size_t offset : {0, 1, 3, 8}) {
            if (n > 70 && offset != 1 && offset != 8) continue;
            SCOPED_TRACE(n);
            std::vector<TypeParam> values, back(n);
            std::vector<unsigned char> expected(offset, 0xEE);
            std::uint64_t state = 1;
            for (std::size_t i = 0; i < n; ++i) {
                state = state * 6364136223846793005u + 1442695040888963407u;
                values.push_back(static_cast<TypeParam>(state >> 17));
                for (std::size_t byte = sizeof(TypeParam); byte-- > 0;)
                    expected.push_back(static_cast<unsigned char>(values[i] >> (8 * byte)));
            }
            expected.resize(expected.size() + 8, 0xEE);
            std::vector<unsigned char> bytes(expected.size(), 0xEE), single = bytes;
            const auto count = static_cast<std::ptrdiff_t>(n);
            omi_SwapperGuts::ExternalizeArray(&bytes[offset], values.data(), count);
            EXPECT_TRUE(bytes == expected);
            omi_SwapperGuts::InternalizeArray(&bytes[offset], back.data(), count);
            EXPECT_TRUE(back == values);
            omi_SwapperGuts::ExternalizeArray(back.data(), back.data(), count);
            omi_SwapperGuts::InternalizeArray(back.data(), back.data(), count);
            EXPECT_TRUE(back == values);
            for (std::size_t i = 0; i < n; ++i) {
                unsigned char* const at = &single[offset + i * sizeof(TypeParam)];
                omi_SwapperGuts::SwapOut(at, values[i]);
                omi_SwapperGuts::SwapIn(at, back[n - 1 - i]);
            }
            EXPECT_TRUE(single == expected &&
                        std::equal(back.rbegin(), back.rend(), values.begin()));
        }
    }
}

TEST(ByteOrder, CopyBytesMovesThemAsTheyStandAndNoElementsNeedNoBuffers) {
    char text[] = "abcdef";
    omi_SwapperGuts::CopyBytes(text + 1, text, 4);
    EXPECT_STREQ(text, "aabcdf");
    std::uint64_t* const none = nullptr;
    for (const std::ptrdiff_t n : {0, -1}) {
        omi_SwapperGuts::ExternalizeArray(nullptr, none, n);
        omi_SwapperGuts::InternalizeArray(nullptr, none, n);
        omi_SwapperGuts::CopyBytes(nullptr, nullptr, n);
    }
}

}  // namespace
