#pragma once
#include <string>

struct ExeNames {
    char path[1024];
    char name[256];
};

// The path of an executable, UTF-8 in host form, as its two names in the process's narrow encoding.
// Cut where they do not fit; without a backslash the name is "inconnu".
void SplitExePath(const std::string& path, ExeNames& names);
