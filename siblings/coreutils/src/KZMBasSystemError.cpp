#include <coreutils/KZMBasSystemError.h>

#include <cstdio>

#include "system_text.h"

KZMBasSystemError::KZMBasSystemError(int number) : m_number(number), m_text{} {
    system_text::Describe(number, m_text, sizeof m_text);
    char* end = m_text;
    for (char* p = m_text; *p; ++p) {
        if (*p == '\r' || *p == '\n') *p = ' ';
        if (*p != ' ') end = p + 1;
    }
    *end = '\0';
    if (end == m_text) std::snprintf(m_text, sizeof m_text, "Unknown error %d", number);
}

KZMBasSystemError KZMBasSystemError::Last() { return KZMBasSystemError(system_text::LastNumber()); }
