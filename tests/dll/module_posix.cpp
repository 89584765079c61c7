#include <dlfcn.h>
#include <dll/module.h>

#include <cstdio>
#include <cstdlib>

void* module::Load(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
void module::Unload(void* handle) { dlclose(handle); }
void* module::Find(void* handle, const char* name) { return dlsym(handle, name); }

bool module::IsLoaded(const char* path) {
    void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

std::string module::Output(const char* program) {
    std::string text;
    FILE* const pipe = popen(program, "r");
    if (!pipe) return "cannot start";
    for (int c; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    const int status = pclose(pipe);
    return status == 0 ? text : "failed: " + text;
}

void module::SetVariable(const char* name, const char* value) {
    value ? setenv(name, value, 1) : unsetenv(name);
}
