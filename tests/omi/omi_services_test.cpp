#include <gtest/gtest.h>
#include <omi/omi_SwapperGuts.h>
#include <omi/omi_Timer.h>
#include <omi/omi_complex.h>

#include <complex>
#include <numeric>
#include <vector>

namespace {

TEST(Timer, CountsOnlyWhileItRunsAndResumesWhereItStopped) {
    omi_Timer timer;
    double before = 0;
    for (int run = 0; run < 2; ++run) {
        const double processor = timer.GetTotalCpuTime();
        timer.Start(), timer.Start();
        // It goes on; the system counts processor time in steps of some milliseconds.
        while (timer.GetTotalCpuTime() == processor && timer.GetElapsedTime() < 10) continue;
        timer.Stop(), timer.Stop();
        EXPECT_GT(timer.GetTotalCpuTime(), processor);
        EXPECT_DOUBLE_EQ(timer.GetElapsedTime(), before + timer.GetElapsedStartTime());
        before = timer.GetElapsedTime();
    }
    timer.Reset();
    EXPECT_EQ(timer.GetElapsedTime() + timer.GetElapsedStartTime() + timer.GetTotalCpuTime(), 0);
}

TEST(Complex, AgreesWithTheStandardOne) {
    const std::complex<double> z(1e300, -1e300);
    EXPECT_EQ(std::complex<double>(omi_complex(z)), z);
    EXPECT_DOUBLE_EQ(omi_complex(z).Modulus(), std::abs(z));
    EXPECT_EQ(omi_complex(z).Argument(), std::arg(z));
    EXPECT_EQ(omi_complex::Polar(2, std::acos(-1.0) / 2).Imaginary(), 2);
}

TEST(ByteOrder, ArraysLargerThanTheCachesConvertAsSingleElementsDo) {
    std::vector<std::uint32_t> values(17u << 18), back(values.size());
    std::iota(values.begin(), values.end(), 0xFEDCBA98u);
    const auto n = static_cast<std::ptrdiff_t>(values.size());
    for (const std::size_t offset : {1, 8}) {
        std::vector<unsigned char> bytes(values.size() * 4 + 16, 0xEE), single = bytes;
        omi_SwapperGuts::ExternalizeArray(&bytes[offset], values.data(), n);
        for (std::size_t i = 0; i < values.size(); ++i)
            omi_SwapperGuts::SwapOut(&single[offset + 4 * i], values[i]);
        omi_SwapperGuts::InternalizeArray(&bytes[offset], back.data(), n);
        EXPECT_TRUE(bytes == single && back == values);
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
