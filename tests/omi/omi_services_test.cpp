#include <gtest/gtest.h>
#include <omi/omi_Timer.h>
#include <omi/omi_complex.h>

#include <complex>
#include <limits>

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
    EXPECT_EQ(timer.GetElapsedTime() + timer.GetElapsedStartTime(), 0);
    timer.Start();
    Work(timer);
    const double running = timer.GetElapsedTime();
    timer.Stop();
    const double stopped = timer.GetElapsedTime();
    const double processor = timer.GetTotalCpuTime();
    EXPECT_TRUE(0 < running && running <= stopped && 0 < processor);
    EXPECT_EQ(timer.GetElapsedStartTime(), stopped);  // one run so far
    Work(other);
    timer.Stop();
    EXPECT_EQ(timer.GetElapsedTime(), stopped);
    EXPECT_EQ(timer.GetTotalCpuTime(), processor);
    timer.Start();
    Work(other);
    const double run = timer.GetElapsedStartTime();
    timer.Start();
    timer.Stop();
    EXPECT_TRUE(0 < run && run <= timer.GetElapsedStartTime());
    EXPECT_DOUBLE_EQ(timer.GetElapsedTime(), stopped + timer.GetElapsedStartTime());
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

}  // namespace
