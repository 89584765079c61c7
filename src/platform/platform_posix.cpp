#include <fenv.h>
#include <platform/platform.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace platform {

const char* Environment(const char* name) { return std::getenv(name); }

bool SetEnvironment(const char* name, const char* value) {
    return (value ? setenv(name, value, 1) : unsetenv(name)) == 0;
}

bool SetFloatingPointTraps(bool on) {
    constexpr int kTraps = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
    feclearexcept(FE_ALL_EXCEPT);
    return (on ? feenableexcept(kTraps) : fedisableexcept(FE_ALL_EXCEPT)) != -1;
}

std::int32_t LastError() { return errno; }

void SetLastError(std::int32_t code) { errno = code; }

std::string CLibraryErrorText(int code) {
    char buffer[256];
    return strerror_r(code, buffer, sizeof buffer);
}

double ProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

}  // namespace platform
