#include <windows.h>

#include "system_text.h"

namespace system_text {

void Describe(int number, char* text, std::size_t size) {
    text[0] = '\0';
    const DWORD saved = GetLastError();
    wchar_t wide[2048];
    int n = static_cast<int>(
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                       static_cast<DWORD>(number), 0, wide, 2048, nullptr));
    // A conversion that does not fit fails as a whole, so the text is shortened until it does.
    int written = 0;
    while (n > 0 &&
           (written = WideCharToMultiByte(CP_ACP, 0, wide, n, text, static_cast<int>(size) - 1,
                                          nullptr, nullptr)) == 0)
        --n;
    text[written] = '\0';
    SetLastError(saved);
}

int LastNumber() { return static_cast<int>(GetLastError()); }

}  // namespace system_text
