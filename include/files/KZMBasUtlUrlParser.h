#pragma once
#include <cow/cow_String.h>

// Tells locations on the net from names of files.
class KZM_API KZMBasUtlUrlParser {
public:
    // Whether the text begins with a scheme and "://": a letter, then at least one more letter,
    // digit, "+", "-" or ".". So "http://a" and "file:///a" are URLs; "C:/a" and "c://a", drives
    // to the system, are not. Looks at the text only.
    static bool IsUrl(const cow_String& text);
};
