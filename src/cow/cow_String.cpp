#include <cow/cow_String.h>

#include <new>
#include <ostream>

cow_String::cow_String(std::string_view s) {
    if (s.size() >= static_cast<std::size_t>(kToEnd)) throw std::bad_alloc();
    if (!s.empty()) append(s.data(), static_cast<int>(s.size()), 0, kToEnd);
}

std::ostream& operator<<(std::ostream& os, const cow_String& s) {
    return os << std::string_view(s);
}
