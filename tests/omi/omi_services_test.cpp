#include <gtest/gtest.h>
#include <omi/omi_Timer.h>
#include <omi/omi_complex.h>

#include <chrono>
#include <complex>
#include <limits>
#include <thread>

namespace {

// Processor time that the optimiser cannot take away.
void Work() {
    volatile unsigned sum = 0;
    for (unsigned i = 0; i < 5'000'000; ++i) sum = sum + i;
}

TEST(Timer, CountsOnlyWhileItRunsAndResumesWhereItStopped) {
    omi_Timer timer;
    EXPECT_EQ(timer.GetElapsedTime() + timer.GetElapsedStartTime(), 0);
    timer.Start();
    do {  // the system counts processor time in steps of some milliseconds
        Work();
    } while (timer.GetTotalCpuTime() == 0 && timer.GetElapsedTime() < 10);
    const double whileRunning = timer.GetElapsedTime();
    EXPECT_GT(whileRunning, 0);
    EXPECT_GE(timer.GetElapsedTime(), whileRunning);
    timer.Stop();
    const double stopped = timer.GetElapsedTime();
    const double processor = timer.GetTotalCpuTime();
    EXPECT_GE(stopped, whileRunning);
    EXPECT_EQ(timer.GetElapsedStartTime(), stopped);  // one run so far
    EXPECT_GT(processor, 0);

    Work();
    timer.Stop();
    EXPECT_EQ(timer.GetElapsedTime(), stopped);
    EXPECT_EQ(timer.GetTotalCpuTime(), processor);

    timer.Start();
    timer.Start();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    timer.Stop();
    EXPECT_GE(timer.GetElapsedStartTime(), 0.002);
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
        EXPECT_EQ(std::complex<double>(c.Real(), c.Imaginary()), z);
        EXPECT_EQ(std::complex<double>(c), z);
        EXPECT_DOUBLE_EQ(c.Modulus(), std::abs(z));
        EXPECT_EQ(c.Argument(), std::arg(z));
        EXPECT_EQ(c, omi_complex(z.real(), z.imag()));
        EXPECT_FALSE(c == omi_complex(z.real(), 7) || c == omi_complex(7, z.imag()));
    }
    EXPECT_EQ(omi_complex::Polar(2, std::acos(-1.0) / 2).Imaginary(), 2);
}

}  // namespace
