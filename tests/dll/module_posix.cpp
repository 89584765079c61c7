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

FILE* module::Start(const char* program) { return popen(program, "r"); }
int module::End(FILE* pipe) { return pclose(pipe); }

void module::SetVariable(const char* name, const char* value) { setenv(name, value, 1); }
