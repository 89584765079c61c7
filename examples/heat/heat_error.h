#pragma once
#include <cow/cow_String.h>

#include <stdexcept>

namespace heat {

// What stops the job: one line that tells the user what is wrong with the input or the outputs.
class HeatError : public std::runtime_error {
public:
    explicit HeatError(const cow_String& text) : std::runtime_error(text.CStr()) {}
};

// The pieces one after the other, for messages.
template <class... Pieces>
cow_String Text(const char* first, const Pieces&... pieces) {
    cow_String text(first);
    (text.Append(cow_String(pieces)), ...);
    return text;
}

}  // namespace heat
