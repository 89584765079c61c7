#pragma once

// A letter as drives and schemes have it: of ASCII, whatever the locale.
inline bool IsLetter(char c) { return static_cast<unsigned int>((c | 32) - 'a') < 26; }
