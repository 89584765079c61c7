#pragma once
#include <string>

struct ExeNames {
    char path[1024];
    char name[256];
};

// The path of an executable, as platform::ModuleFileName gives it, as its two names in the
// process's narrow encoding. Cut between characters where they do not fit; without a backslash the
// name is "inconnu".
void SplitExePath(const std::string& path, ExeNames& names);
