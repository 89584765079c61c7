#include <files/KZMBasUtlUrlParser.h>
#include <platform/letters.h>

#include <algorithm>
#include <string_view>

namespace {

bool IsSchemeCharacter(char c) {
    return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

}  // namespace

bool KZMBasUtlUrlParser::IsUrl(const cow_String& text) {
    const std::string_view url = text;
    if (url.empty() || !IsLetter(url[0])) return false;
    const auto end = std::find_if_not(url.begin(), url.end(), IsSchemeCharacter);
    const auto length = static_cast<std::size_t>(end - url.begin());
    return length >= 2 && url.substr(length).starts_with("://");
}
