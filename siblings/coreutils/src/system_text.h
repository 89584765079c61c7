#pragma once
#include <cstddef>

// The operating system's error texts; one file a system defines both.
namespace system_text {
// In the process's narrow encoding, terminated, cut between characters where it does not fit; ""
// for an unknown number.
void Describe(int number, char* text, std::size_t size);
int LastNumber();
}  // namespace system_text
