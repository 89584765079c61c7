#pragma once
#include <cow/cow_String.h>
#include <platform/platform.h>

#include <cstring>

// The system would read such a path only up to the zero byte, and answer for another file.
inline bool HasZeroByte(const cow_String& path) {
    return std::memchr(path.CStr(), '\0', static_cast<std::size_t>(path.Length())) != nullptr;
}

inline bool AskSystem(platform::PathQuestion question, const cow_String& path) {
    return !path.Empty() && !HasZeroByte(path) && platform::AskPath(question, path.CStr());
}
