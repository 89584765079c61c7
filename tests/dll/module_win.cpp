#include <dll/module.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

void* module::Load(const char* path) { return LoadLibraryA(path); }
void module::Unload(void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }
bool module::IsLoaded(const char* path) { return GetModuleHandleA(path) != nullptr; }

void* module::Find(void* handle, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

FILE* module::Start(const char* program) {  // beside this one, whatever the working directory
    char path[MAX_PATH];
    const std::string own(path, GetModuleFileNameA(nullptr, path, MAX_PATH));
    return _popen((own.substr(0, own.rfind('\\') + 1) + program).c_str(), "r");
}
int module::End(FILE* pipe) { return _pclose(pipe); }

void module::SetVariable(const char* name, const char* value) {
    _putenv((std::string(name) + "=" + value).c_str());
}
