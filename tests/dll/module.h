#pragma once
#include <cstdio>
#include <string>

// What the loader and process tests ask of the system; module_win.cpp and module_posix.cpp.
namespace module {

void* Load(const char* path);  // null if it cannot be loaded
void Unload(void* handle);
bool IsLoaded(const char* path);
void* Find(void* handle, const char* name);

// A running program's standard output; End waits for its exit code.
FILE* Start(const char* program);
int End(FILE* pipe);

// Programs started later inherit it.
void SetVariable(const char* name, const char* value);

}  // namespace module
