#pragma once
#include <kzm_export.h>

// An error number of the operating system (GetLastError on Windows, errno elsewhere) with its
// message. The text is held by value, so a copy stays valid by itself; making one never fails.
class KZM_API KZMBasSystemError {
public:
    // Looks the message up at once.
    explicit KZMBasSystemError(int number);

    // The calling thread's last error; call it right after what failed.
    static KZMBasSystemError Last();

    // One line in the current code page on Windows and the encoding of the locale elsewhere,
    // without a line end; never null and never empty.
    const char* AsString() const { return m_text; }

    int Number() const { return m_number; }  // as the system gave it

private:
    int m_number;
    char m_text[252];
};
