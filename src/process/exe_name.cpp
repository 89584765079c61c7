#include <platform/platform.h>
#include <process/exe_name.h>

#include <cstring>

namespace {

template <std::size_t N>
void Store(char (&to)[N], const std::string& text) {
    const std::string narrow = platform::Multibyte(text, N - 1);
    std::memset(to, 0, N);
    std::memcpy(to, narrow.data(), narrow.size());
}

}  // namespace

void SplitExePath(const std::string& path, ExeNames& names) {
    const std::size_t last = path.rfind('\\');
    const std::string name = last == std::string::npos ? "inconnu" : path.substr(last + 1);
    Store(names.path, path);
    Store(names.name, name);
    if (char* const extension = std::strstr(names.name, ".exe")) *extension = '\0';
}
