#include <platform/platform.h>
#include <process/exe_name.h>

#include <algorithm>
#include <cstring>

namespace {

template <std::size_t N>
void Store(char (&to)[N], const std::string& text) {
    std::memset(to, 0, N);
    std::memcpy(to, text.data(), std::min(text.size(), N - 1));
}

}  // namespace

void SplitExePath(const std::string& path, ExeNames& names) {
    const std::size_t last = path.rfind('\\');
    const std::string name = last == std::string::npos ? "inconnu" : path.substr(last + 1);
    const std::string narrowPath = platform::Multibyte(path);
    const std::string narrowName = platform::Multibyte(name);
    Store(names.path, narrowPath);
    Store(names.name, narrowName);
    if (char* const extension = std::strstr(names.name, ".exe")) *extension = '\0';
}
