#include <float.h>
#include <platform/platform.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

namespace platform {

const char* Environment(const char* name) { return getenv(name); }

bool SetEnvironment(const char* name, const char* value) {
    const std::string setting = std::string(name) + "=" + (value ? value : "");
    return _putenv(setting.c_str()) == 0;
}

bool SetFloatingPointTraps(bool on) {
    constexpr unsigned kTraps = _EM_INVALID | _EM_ZERODIVIDE | _EM_OVERFLOW;
    _clearfp();
    _controlfp(on ? _MCW_EM & ~kTraps : _MCW_EM, _MCW_EM);
    return true;
}

std::int32_t LastError() { return static_cast<std::int32_t>(::GetLastError()); }

void SetLastError(std::int32_t code) { ::SetLastError(static_cast<DWORD>(code)); }

std::string CLibraryErrorText(int code) {
    char buffer[256] = "";
    strerror_s(buffer, sizeof buffer, code);
    return buffer;
}

double ProcessorSeconds() {
    FILETIME created, exited, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user)) return 0;
    const auto seconds = [](const FILETIME& time) {
        ULARGE_INTEGER ticks;
        ticks.LowPart = time.dwLowDateTime;
        ticks.HighPart = time.dwHighDateTime;
        return static_cast<double>(ticks.QuadPart) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
}

}  // namespace platform
